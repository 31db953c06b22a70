// Files for tests that read and write by path.
#pragma once

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

/// Replaces a file in the tests' own folder. @return its path
inline std::string WriteTestFile(const std::string& name, std::string_view bytes)
{
    const std::string path = TestPath(name);
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::filesystem::remove(path); // some file systems write an emptied file to the disk at once, which takes long
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
}

inline std::string BytesOfFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::stringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}
