#include "output/CReplacedFile.h"

#include "protocol/CDescriptor.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
std::string Reason()
{
    return std::string("cannot be written: ") + strerror(errno);
}

bool WriteAll(int file, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = write(file, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) {
            return false;
        }
        bytes.remove_prefix(static_cast<size_t>(written > 0 ? written : 0));
    }
    return true;
}

/// Where the bytes finally go: behind symbolic links.
std::string FindTarget(const std::string& path)
{
    char* const real = realpath(path.c_str(), nullptr);
    std::string target = real != nullptr ? real : path;
    free(real); // made by malloc
    return target;
}

/// The rights a new file gets.
mode_t NewFileMode()
{
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}
} // namespace

bool CReplacedFile::IsRegular(const std::string& path)
{
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

std::string CReplacedFile::Write(const std::string& path, std::string_view bytes, bool mayReplace)
{
    const std::string target = FindTarget(path);
    struct stat status = {};
    const bool exists = stat(target.c_str(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode)) {
        const CDescriptor file(open(target.c_str(), O_WRONLY | O_CLOEXEC));
        return file.IsOpen() && WriteAll(file.Get(), bytes) ? std::string() : Reason();
    }
    if (exists && !mayReplace) {
        return "exists already; --force replaces it";
    }
    std::string temporary = target + ".XXXXXX";
    CDescriptor file(mkostemp(temporary.data(), O_CLOEXEC));
    if (!file.IsOpen()) {
        return Reason();
    }
    const bool written = WriteAll(file.Get(), bytes) &&
                         fchmod(file.Get(), exists ? status.st_mode & 07777 : NewFileMode()) == 0 &&
                         fsync(file.Get()) == 0;
    // Without leave to replace, a file that has appeared meanwhile stays.
    const bool placed = written && (mayReplace ? rename(temporary.c_str(), target.c_str()) == 0
                                               : link(temporary.c_str(), target.c_str()) == 0);
    const std::string reason = placed ? std::string() : Reason();
    if (!placed || !mayReplace) {
        unlink(temporary.c_str());
    }
    return reason;
}
