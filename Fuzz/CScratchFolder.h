// A folder for what must be a file with others beside it.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>
#include <unistd.h>

/// An empty folder, in memory where the system has a place for that; gone with the object.
class CScratchFolder {
public:
    CScratchFolder() : mPath((access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp") + std::string("/velmora-XXXXXX"))
    {
        if (mkdtemp(mPath.data()) == nullptr) {
            std::abort();
        }
    }
    ~CScratchFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(mPath, ignored);
    }
    CScratchFolder(const CScratchFolder&) = delete;
    CScratchFolder& operator=(const CScratchFolder&) = delete;

    std::string PathOf(const std::string& name) const { return mPath + "/" + name; }

private:
    std::string mPath;
};
