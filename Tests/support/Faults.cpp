#include "support/Faults.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {
/// What tells which file a call is about.
enum class eFile { kDescriptor, kPath, kPathInFolder };

struct tCall {
    int number;
    eFile file;
    tFault::eCalls kind;
};

constexpr tCall kCalls[] = {
    {SYS_read, eFile::kDescriptor, tFault::eCalls::kRead},
    {SYS_pread64, eFile::kDescriptor, tFault::eCalls::kRead},
    {SYS_readv, eFile::kDescriptor, tFault::eCalls::kRead},
    {SYS_write, eFile::kDescriptor, tFault::eCalls::kWrite},
    {SYS_pwrite64, eFile::kDescriptor, tFault::eCalls::kWrite},
    {SYS_writev, eFile::kDescriptor, tFault::eCalls::kWrite},
    {SYS_fsync, eFile::kDescriptor, tFault::eCalls::kWrite},
    {SYS_fdatasync, eFile::kDescriptor, tFault::eCalls::kWrite},
    {SYS_ftruncate, eFile::kDescriptor, tFault::eCalls::kWrite},
    {SYS_fallocate, eFile::kDescriptor, tFault::eCalls::kWrite},
    {SYS_close, eFile::kDescriptor, tFault::eCalls::kWrite},
    {SYS_openat, eFile::kPathInFolder, tFault::eCalls::kWrite}, // those that may make a file
    {SYS_mkdirat, eFile::kPathInFolder, tFault::eCalls::kWrite},
    {SYS_renameat2, eFile::kPathInFolder, tFault::eCalls::kWrite},
    {SYS_linkat, eFile::kPathInFolder, tFault::eCalls::kWrite},
#if defined(SYS_open)
    {SYS_renameat, eFile::kPathInFolder, tFault::eCalls::kWrite},
    {SYS_mkdir, eFile::kPath, tFault::eCalls::kWrite},
    {SYS_rename, eFile::kPath, tFault::eCalls::kWrite},
    {SYS_link, eFile::kPath, tFault::eCalls::kWrite},
#endif
};

/// Makes this process and those it starts ask before each of the calls. @return where they ask; -1 with errno
int AskBeforeCalls(tFault::eCalls kind)
{
    std::vector<sock_filter> program = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};
    for (const tCall& call : kCalls) {
        if (call.kind != kind) {
            continue;
        }
        if (call.number == SYS_openat) { // of these, whose number is in the accumulator, only those with O_CREAT
            program.insert(program.end(), {BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_openat, 0, 4),
                                           BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args[2])),
                                           BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, O_CREAT, 0, 1),
                                           BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_USER_NOTIF),
                                           BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)});
        } else {
            program.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(call.number), 0, 1));
            program.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_USER_NOTIF));
        }
    }
    program.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    const sock_fprog filter = {static_cast<unsigned short>(program.size()), program.data()};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) {
        return -1;
    }
    return static_cast<int>(syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_NEW_LISTENER, &filter));
}

/// Sends or, with a descriptor of -1, takes one.
int PassDescriptor(int socket, int descriptor)
{
    char byte = 0;
    iovec part = {&byte, 1};
    alignas(cmsghdr) char space[CMSG_SPACE(sizeof(int))] = {};
    msghdr message = {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = space;
    message.msg_controllen = sizeof space;
    if (descriptor < 0) {
        if (recvmsg(socket, &message, MSG_CMSG_CLOEXEC) == 1 && CMSG_FIRSTHDR(&message) != nullptr) {
            memcpy(&descriptor, CMSG_DATA(CMSG_FIRSTHDR(&message)), sizeof descriptor);
        }
        return descriptor;
    }
    cmsghdr* const header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof(int));
    memcpy(CMSG_DATA(header), &descriptor, sizeof descriptor);
    return sendmsg(socket, &message, 0) == 1 ? descriptor : -1;
}

/// Says what becomes of the calls of a process and of those that it starts.
class CSupervisor {
public:
    CSupervisor(const std::string& folder, const tFault& fault) : mFolder(folder + "/"), mFault(fault) {}

    /// @param listener  where they ask @param process  the first of them, until whose end it works
    int Run(int listener, pid_t process)
    {
        const int end = static_cast<int>(syscall(SYS_pidfd_open, process, 0));
        pollfd waits[2] = {{listener, POLLIN, 0}, {end, POLLIN, 0}};
        while (poll(waits, 2, -1) >= 0 && ((waits[0].revents & POLLIN) != 0 || waits[1].revents == 0)) {
            seccomp_notif request = {};
            if (ioctl(listener, SECCOMP_IOCTL_NOTIF_RECV, &request) == 0) {
                seccomp_notif_resp response = Answer(request);
                ioctl(listener, SECCOMP_IOCTL_NOTIF_SEND, &response);
            }
        }
        close(end);
        return mCalls;
    }

private:
    seccomp_notif_resp Answer(const seccomp_notif& request)
    {
        seccomp_notif_resp response = {request.id, 0, 0, SECCOMP_USER_NOTIF_FLAG_CONTINUE};
        const std::string path = PathOf(request);
        if (!path.starts_with(mFolder) || ++mCalls < mFault.at || mFault.how == tFault::eHow::kNone ||
            (mCalls > mFault.at && (mFault.how == tFault::eHow::kOnce || mFault.how == tFault::eHow::kCut))) {
            return response;
        }
        const bool isRead = mFault.calls == tFault::eCalls::kRead;
        if (mFault.how == tFault::eHow::kCut) {
            struct stat status = {};
            if (stat(path.c_str(), &status) == 0) {
                (void)!truncate(path.c_str(), status.st_size / 2);
            }
        } else if (mFault.how == tFault::eHow::kShort && (isRead || mCalls == mFault.at)) {
            if (const ssize_t done = DoHalf(request); done > 0) {
                response.val = done;
                response.flags = 0;
            } else if (!isRead) {
                Refuse(response);
            }
        } else {
            Refuse(response);
        }
        return response;
    }

    void Refuse(seccomp_notif_resp& response) const
    {
        response.error = -mFault.error;
        response.flags = 0;
    }

    /// The file that a call is about; what is no file has no absolute path.
    static std::string PathOf(const seccomp_notif& request)
    {
        const std::string place = "/proc/" + std::to_string(request.pid);
        const tCall* call = std::find_if(std::begin(kCalls), std::end(kCalls),
                                         [&](const tCall& one) { return one.number == request.data.nr; });
        if (call->file == eFile::kDescriptor) {
            char path[4096];
            const ssize_t length =
                readlink((place + "/fd/" + std::to_string(request.data.args[0])).c_str(), path, sizeof path);
            return {path, static_cast<size_t>(std::max<ssize_t>(length, 0))};
        }
        std::string path;
        std::ifstream memory(place + "/mem", std::ios::binary);
        memory.seekg(static_cast<std::streamoff>(request.data.args[call->file == eFile::kPath ? 0 : 1]));
        std::getline(memory, path, '\0');
        return path;
    }

    /// Reads or writes half of what a call should, in its process's stead. @return the bytes; 0 for a call without any
    static ssize_t DoHalf(const seccomp_notif& request)
    {
        const auto& arguments = request.data.args;
        const int number = request.data.nr;
        const bool isRead = number == SYS_read || number == SYS_pread64;
        if (!isRead && number != SYS_write && number != SYS_pwrite64) {
            return 0;
        }
        std::vector<char> bytes((arguments[2] + (isRead ? 1 : 0)) / 2); // nothing at all would be the file's end
        iovec here = {bytes.data(), bytes.size()};
        const auto process = static_cast<pid_t>(request.pid);
        const int handle = static_cast<int>(syscall(SYS_pidfd_open, process, 0));
        const int file = static_cast<int>(syscall(SYS_pidfd_getfd, handle, arguments[0], 0)); // with its position
        const auto offset = static_cast<off_t>(arguments[3]);
        const iovec there = {reinterpret_cast<void*>(arguments[1]), bytes.size()};
        ssize_t done = 0;
        if (isRead) {
            done = number == SYS_read ? read(file, bytes.data(), bytes.size())
                                      : pread(file, bytes.data(), bytes.size(), offset);
            here.iov_len = static_cast<size_t>(std::max<ssize_t>(done, 0));
            done = done > 0 ? process_vm_writev(process, &here, 1, &there, 1, 0) : 0;
        } else if (process_vm_readv(process, &here, 1, &there, 1, 0) >= 0) {
            done = number == SYS_write ? write(file, bytes.data(), bytes.size())
                                       : pwrite(file, bytes.data(), bytes.size(), offset);
        }
        close(file);
        close(handle);
        return done;
    }

    const std::string mFolder;
    const tFault mFault;
    int mCalls = 0;
};
} // namespace

tFaultyRun RunWithFault(const std::string& folder, const tFault& fault, const std::function<int()>& action)
{
    tFaultyRun run;
    int sockets[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0) {
        return run;
    }
    fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        const int listener = AskBeforeCalls(fault.calls);
        if (listener < 0 || PassDescriptor(sockets[1], listener) < 0) {
            _exit(1);
        }
        close(listener);
        _exit(action());
    }
    close(sockets[1]);
    const int listener = PassDescriptor(sockets[0], -1);
    close(sockets[0]);
    const int calls = listener < 0 ? 0 : CSupervisor(folder, fault).Run(listener, child);
    int status = 0;
    if (waitpid(child, &status, 0) == child && listener >= 0) {
        run = {WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status), calls};
        close(listener);
    }
    return run;
}
