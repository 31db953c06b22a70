// Runs a program as in a container that refuses system calls a sandbox is made of.
//
//   refuse-calls CALL[,CALL...] PROGRAM ARGUMENT...    calls: landlock (not there), seccomp and prctl (not permitted;
//                                                      prctl only as another way to seccomp)
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

static constexpr unsigned kCreateRuleset = 444; ///< Landlock's first call

int main(int argc, char** argv)
{
    if (argc < 3) {
        return 2;
    }
    std::vector<sock_filter> program = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};
    const auto refuse = [&program](unsigned call, unsigned error) {
        program.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 1));
        program.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | error));
    };
    if (strstr(argv[1], "landlock") != nullptr) {
        refuse(kCreateRuleset, ENOSYS);
    }
    if (strstr(argv[1], "seccomp") != nullptr) {
        refuse(SYS_seccomp, EPERM);
    }
    if (strstr(argv[1], "prctl") != nullptr) {
        program.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_prctl, 0, 3));
        program.push_back(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args)));
        program.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, PR_SET_SECCOMP, 0, 1));
        program.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM));
    }
    program.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    const sock_fprog filter = {static_cast<unsigned short>(program.size()), program.data()};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 || prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) != 0) {
        perror("refuse-calls");
        return 126;
    }
    execv(argv[2], argv + 2);
    perror(argv[2]);
    return 127;
}
