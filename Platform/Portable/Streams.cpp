#include "Platform/Streams.h"

#include "Platform/MacRoman.h"
#include "Utf8.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Platform {
static constexpr size_t kBufferSize = size_t{64} * 1024;
static constexpr int kFirstFreeDescriptor = 3; // a duplicate never becomes standard input, output or error

static bool HasHighBytes(const std::string& text)
{
    return std::any_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
}

// A name's bytes name nothing: missing, or refused by a file system that takes valid UTF-8 only.
static bool NamesNothing(int error)
{
    return error == ENOENT || error == EILSEQ || error == EINVAL;
}

// The number N of a path "/proc/self/fd/N" written as the system writes it; -1 for any other path.
static int DescriptorOfPath(const std::string& path)
{
    static constexpr std::string_view kFolder = "/proc/self/fd/";
    if (!path.starts_with(kFolder)) {
        return -1;
    }
    const std::string_view digits = std::string_view(path).substr(kFolder.size());
    int number = -1;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error != std::errc() || end != digits.data() + digits.size() || std::to_string(number) != digits) {
        return -1;
    }
    return number;
}

static int OpenForReading(const std::string& path)
{
    // Without waiting: the opening of a fifo would otherwise last until somebody writes to it.
    return open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
}

// The buffer of the stream that was closed last. To give so large a block back and ask for it again at the next
// document would make the allocator tidy up all its small blocks each time.
static std::atomic<char*> sSpareBuffer;

// Turns a descriptor into a stream with a buffer of ours; closes the descriptor where that fails.
static FILE* MakeStream(int descriptor, const char* mode, std::unique_ptr<char[]>& buffer)
{
    if (descriptor < 0) {
        return nullptr;
    }
    FILE* stream = fdopen(descriptor, mode);
    if (stream == nullptr) {
        close(descriptor);
        return nullptr;
    }
    buffer.reset(sSpareBuffer.exchange(nullptr));
    if (!buffer) {
        buffer.reset(new char[kBufferSize]); // not cleared: small files never touch most of it
    }
    setvbuf(stream, buffer.get(), _IOFBF, kBufferSize);
    return stream;
}

CInputFile::CInputFile(const std::string& path) : mStream(nullptr)
{
    if (path.find('\0') != std::string::npos) {
        return; // its first part could name another file
    }
    int descriptor = DescriptorOfPath(path);
    if (descriptor >= 0) {
        descriptor = fcntl(descriptor, F_DUPFD_CLOEXEC, kFirstFreeDescriptor);
        if (descriptor >= 0) {
            lseek(descriptor, 0, SEEK_SET); // a pipe has no beginning to return to and is read from where it stands
        }
    } else {
        descriptor = OpenForReading(path);
        if (descriptor < 0 && NamesNothing(errno) && HasHighBytes(path)) {
            descriptor = OpenForReading(MacRomanToUtf8(path));
        }
    }
    mStream = MakeStream(descriptor, "rb", mBuffer);
}

CInputFile::~CInputFile()
{
    if (mStream != nullptr) {
        fclose(mStream);
        delete[] sSpareBuffer.exchange(mBuffer.release());
    }
}

bool CInputFile::HasFailed() const
{
    struct stat status = {};
    return mStream != nullptr && ferror(mStream) != 0 &&
           !(fstat(fileno(mStream), &status) == 0 && S_ISDIR(status.st_mode));
}

// Follows a link whose end does not exist yet, by hand, since realpath wants the end to exist.
static std::string FollowDanglingLink(std::string path)
{
    for (int links = 0; links < 40; ++links) { // the number after which Linux gives up as well
        char target[PATH_MAX];
        const ssize_t length = readlink(path.c_str(), target, sizeof target);
        if (length <= 0 || length == static_cast<ssize_t>(sizeof target)) {
            break;
        }
        const size_t slash = path.rfind('/');
        if (target[0] == '/' || slash == std::string::npos) {
            path.clear();
        } else {
            path.resize(slash + 1);
        }
        path.append(target, static_cast<size_t>(length));
    }
    return path;
}

static std::string ResolveExisting(const std::string& path, const struct stat& wanted)
{
    const std::unique_ptr<char, decltype(&free)> resolved(realpath(path.c_str(), nullptr), &free);
    struct stat found = {};
    if (!resolved || stat(resolved.get(), &found) != 0 || found.st_dev != wanted.st_dev ||
        found.st_ino != wanted.st_ino) {
        return {}; // a file without a name, such as a deleted one reached through its descriptor
    }
    return resolved.get();
}

// Folder of an absolute or relative path of a file, with the separator at its end.
static std::string FolderOf(const std::string& path)
{
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? "./" : path.substr(0, slash + 1);
}

// Makes a new file in the folder of `target` and sets its path. @return the descriptor, or -1 with errno
static int MakeTemporary(const std::string& target, mode_t mode, std::string& path)
{
    static std::atomic<unsigned> sNumber = 0;
    for (int attempt = 0; attempt < 1000; ++attempt) {
        // Not made from the target's name: that may already be as long as a name can be.
        path = FolderOf(target) + ".velmora-" + std::to_string(getpid()) + "-" + std::to_string(sNumber++);
        const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode);
        if (descriptor >= 0 || errno != EEXIST) {
            return descriptor;
        }
    }
    return -1;
}

static int OpenInPlace(const std::string& path)
{
    const int descriptor = open(path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor >= 0) { // only the opening must not wait
        fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) & ~O_NONBLOCK);
    }
    return descriptor;
}

// Gives the new file what the old one had. Where the owner cannot be kept, neither are the bits that act in his name.
static void KeepOwnerAndMode(int descriptor, const struct stat& old)
{
    const bool owned = fchown(descriptor, old.st_uid, old.st_gid) == 0;
    const mode_t kept = owned ? 07777 : 0777;
    (void)fchmod(descriptor, old.st_mode & kept);
}

COutputFile::COutputFile(const std::string& path)
{
    if (path.find('\0') != std::string::npos) {
        return;
    }
    mTarget = path;
    struct stat old = {};
    if (lstat(path.c_str(), &old) != 0) {
        if (!NamesNothing(errno)) {
            return;
        }
        const std::string converted = MacRomanToUtf8(path);
        if (lstat(converted.c_str(), &old) == 0 || !IsUtf8(path)) {
            mTarget = converted;
        }
    }

    int descriptor = -1;
    const bool exists = stat(mTarget.c_str(), &old) == 0;
    if (!exists) {
        if (errno != ENOENT) {
            return;
        }
        mTarget = FollowDanglingLink(mTarget);
        if (mTarget.empty() || mTarget.back() == '/') {
            return;
        }
        descriptor = MakeTemporary(mTarget, 0666, mTemporary);
        if (descriptor < 0) {
            mTemporary.clear();
        }
    } else if (S_ISDIR(old.st_mode)) {
        return;
    } else {
        const std::string resolved = S_ISREG(old.st_mode) ? ResolveExisting(mTarget, old) : std::string();
        bool inPlace = resolved.empty();
        if (!inPlace) {
            mTarget = resolved;
            if (faccessat(AT_FDCWD, mTarget.c_str(), W_OK, AT_EACCESS) != 0) {
                return; // write-protected: replacing it would get around that
            }
            descriptor = MakeTemporary(mTarget, 0600, mTemporary);
            if (descriptor >= 0) {
                KeepOwnerAndMode(descriptor, old);
            } else {
                mTemporary.clear();
                // Not for a full disk: there the old file would be lost for nothing.
                inPlace = errno == EACCES || errno == EPERM || errno == EROFS;
            }
        }
        if (inPlace) {
            descriptor = OpenInPlace(mTarget);
        }
    }
    mStream = MakeStream(descriptor, "wb", mBuffer);
}

COutputFile::~COutputFile()
{
    if (mStream != nullptr) {
        fclose(mStream);
    }
    if (!mTemporary.empty()) {
        unlink(mTemporary.c_str());
    }
}

// Brings the bytes to the disk. What cannot be synced, such as a device, counts as done.
static bool Sync(int descriptor)
{
    return fsync(descriptor) == 0 || errno == EINVAL || errno == ENOTSUP;
}

bool COutputFile::Commit()
{
    if (mStream == nullptr) {
        return false;
    }
    bool done = fflush(mStream) == 0 && ferror(mStream) == 0 && Sync(fileno(mStream));
    done = fclose(mStream) == 0 && done;
    mStream = nullptr;
    if (mTemporary.empty()) {
        return done;
    }
    done = done && rename(mTemporary.c_str(), mTarget.c_str()) == 0;
    if (!done) {
        unlink(mTemporary.c_str());
        mTemporary.clear();
        return false;
    }
    mTemporary.clear();
    // So that the new name outlives a power failure, where the folder may be read and can be synced. The file is
    // complete and in its place either way.
    const int folder = open(FolderOf(mTarget).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder >= 0) {
        fsync(folder);
        close(folder);
    }
    return true;
}
} // namespace Platform
