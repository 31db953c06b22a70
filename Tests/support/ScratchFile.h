// A file for loaders that take a path.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>

/// A file in memory, without a name, that is gone with the object.
class CScratchFile {
public:
    CScratchFile() { Check(mDescriptor >= 0); }
    explicit CScratchFile(std::string_view bytes) : CScratchFile() { Set(bytes); }
    ~CScratchFile() { close(mDescriptor); }
    CScratchFile(const CScratchFile&) = delete;
    CScratchFile& operator=(const CScratchFile&) = delete;

    void Set(std::string_view bytes)
    {
        Check(ftruncate(mDescriptor, 0) == 0 && pwrite(mDescriptor, bytes.data(), bytes.size(), 0) == Signed(bytes));
    }
    std::string Get() const
    {
        std::string bytes(static_cast<size_t>(lseek(mDescriptor, 0, SEEK_END)), '\0');
        Check(pread(mDescriptor, bytes.data(), bytes.size(), 0) == Signed(bytes));
        return bytes;
    }
    std::string Path() const { return "/proc/self/fd/" + std::to_string(mDescriptor); }

private:
    static ssize_t Signed(std::string_view bytes) { return static_cast<ssize_t>(bytes.size()); }
    static void Check(bool done)
    {
        if (!done) {
            throw std::runtime_error("no scratch file");
        }
    }

    const int mDescriptor = memfd_create("velmora-test", 0);
};
