// Main program of all tests. A test never sees or touches the user's own folders.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <unistd.h>

void WarmUpFoundation();

/// This process while its tests run.
static pid_t self = 0;

/// A fatal report ends its process with status 0. Within a test that is a failure, but for the child of a death test.
static void FailWhenUnfinished()
{
    if (getpid() == self) {
        fprintf(stderr, "the program under test ended the test program\n");
        _exit(1);
    }
}

int main(int argc, char** argv)
{
    // The child of a death test may be a new run of this program; it is meant to end early.
    const bool isDeathTestChild = std::any_of(argv + 1, argv + argc, [](const char* argument) {
        return std::strstr(argument, "gtest_internal_run_death_test") != nullptr;
    });
    testing::InitGoogleTest(&argc, argv);
    if (isDeathTestChild) {
        WarmUpFoundation(); // the environment is the parent's
        return RUN_ALL_TESTS();
    }
    std::string folder = (std::filesystem::temp_directory_path() / "velmora-test-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) {
        perror("mkdtemp");
        return 1;
    }
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME", "TEST_FOLDER"}) {
        const std::string path = folder + "/" + name;
        std::filesystem::create_directory(path);
        setenv(name, path.c_str(), 1);
    }
    WarmUpFoundation();
    self = getpid();
    atexit(&FailWhenUnfinished);
    const int result = RUN_ALL_TESTS();
    if (getpid() == self) { // not in the child of a death test
        self = 0;
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    return result;
}
