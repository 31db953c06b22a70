// Files and folders that tests fill. All of them lie in the test program's own folder, which goes with it.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

/// Path of a file in the tests' own folder; it need not exist.
inline std::string TestPath(const std::string& name)
{
    return std::string(getenv("TEST_FOLDER")) + "/" + name;
}

/// An empty folder in the tests' own folder; what it held before goes. @return its path
inline std::string MakeFolder(const std::string& name)
{
    const std::string folder = TestPath(name);
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    return folder;
}

/// Makes or replaces a file, and the folders above it.
inline void WriteFile(const std::string& path, std::string_view bytes)
{
    const std::filesystem::path parent = std::filesystem::path(path).parent_path();
    if (!parent.empty()) {
        std::filesystem::create_directories(parent);
    }
    std::filesystem::remove(path); // some file systems write an emptied file to the disk at once, which takes long
    std::ofstream file(path, std::ios::binary);
    file << bytes;
    file.close();
    EXPECT_TRUE(file) << path;
}

/// Replaces a file in the tests' own folder. @return its path
inline std::string WriteTestFile(const std::string& name, std::string_view bytes)
{
    const std::string path = TestPath(name);
    WriteFile(path, bytes);
    return path;
}

/// A whole file; one that is not there fails the test and has no bytes.
inline std::string ReadFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << path;
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

/// An empty folder with a name of its own, gone with the object.
class CTestFolder {
public:
    CTestFolder() : mPath(TestPath("folder-XXXXXX"))
    {
        if (mkdtemp(mPath.data()) == nullptr) {
            std::abort();
        }
    }
    ~CTestFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(mPath, ignored);
    }
    CTestFolder(const CTestFolder&) = delete;
    CTestFolder& operator=(const CTestFolder&) = delete;

    const std::string& Path() const { return mPath; }
    std::string PathOf(const std::string& name) const { return mPath + "/" + name; }
    /// @return the file's path
    std::string Write(const std::string& name, std::string_view bytes) const
    {
        WriteFile(PathOf(name), bytes);
        return PathOf(name);
    }
    std::string Read(const std::string& name) const { return ReadFile(PathOf(name)); }

private:
    std::string mPath;
};
