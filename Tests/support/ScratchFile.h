// A file for loaders that take a path.
#pragma once

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>

/// A file without a name that is gone with the object. On Linux it lies in memory.
class CScratchFile {
public:
    CScratchFile()
    {
#if defined(__linux__)
        mDescriptor = memfd_create("velmora-test", 0);
#else
        std::string name = std::string(getenv("TEST_FOLDER")) + "/scratch-XXXXXX";
        mDescriptor = mkstemp(name.data());
        unlink(name.c_str());
#endif
        if (mDescriptor < 0) {
            throw std::runtime_error("no scratch file");
        }
    }
    explicit CScratchFile(std::string_view bytes) : CScratchFile()
    {
        Set(bytes);
    }
    ~CScratchFile()
    {
        close(mDescriptor);
    }
    CScratchFile(const CScratchFile&) = delete;
    CScratchFile& operator=(const CScratchFile&) = delete;

    void Set(std::string_view bytes)
    {
        CutTo(0);
        if (pwrite(mDescriptor, bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
            throw std::runtime_error("scratch file not written");
        }
    }
    void SetByte(size_t offset, char byte)
    {
        if (pwrite(mDescriptor, &byte, 1, static_cast<off_t>(offset)) != 1) {
            throw std::runtime_error("scratch file not written");
        }
    }
    void CutTo(size_t size)
    {
        if (ftruncate(mDescriptor, static_cast<off_t>(size)) != 0) {
            throw std::runtime_error("scratch file not cut");
        }
    }
    std::string Get() const
    {
        std::string bytes(static_cast<size_t>(lseek(mDescriptor, 0, SEEK_END)), '\0');
        if (pread(mDescriptor, bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
            throw std::runtime_error("scratch file not read");
        }
        return bytes;
    }
    std::string Path() const
    {
        return "/proc/self/fd/" + std::to_string(mDescriptor);
    }

private:
    int mDescriptor = -1;
};
