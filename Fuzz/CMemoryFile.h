// A file without a disk, for inputs that are read by path.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// One file in memory that holds one input after the other. Ends the process when there is no memory for it.
class CMemoryFile {
public:
    explicit CMemoryFile(const char* name);
    ~CMemoryFile();
    CMemoryFile(const CMemoryFile&) = delete;
    CMemoryFile& operator=(const CMemoryFile&) = delete;

    void Set(const uint8_t* bytes, size_t size);
    const std::string& GetPath() const { return mPath; }

private:
    int mDescriptor;
    std::string mPath;
};
