#include "Platform/System.h"
#include "Platform/FileReference.h"
#include "support/Files.h"

using namespace Platform;
namespace fs = std::filesystem;

TEST(System, FindsAndMakesTheUsersFolders)
{
    const std::string base = TestPath("folders");
    const struct {
        eFolder folder;
        const char* variable;
        const char* inVariable;
        const char* inHome;
    } cases[] = {
        {eFolder::kLogs, "XDG_STATE_HOME", "/velmora", "/.local/state/velmora"},
        {eFolder::kApplicationSupport, "XDG_DATA_HOME", "", "/.local/share"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.variable);
        const std::string old = getenv(c.variable);
        const std::string home = getenv("HOME") != nullptr ? getenv("HOME") : "";

        fs::remove_all(base);
        setenv(c.variable, (base + "/own//").c_str(), 1);
        setenv("HOME", (base + "/home").c_str(), 1);
        EXPECT_EQ(FolderPath(c.folder, false), "");
        EXPECT_FALSE(fs::exists(base));
        const std::string made = FolderPath(c.folder, true);
        EXPECT_EQ(fs::path(made).lexically_normal(), base + "/own" + c.inVariable);
        EXPECT_NE(made.back(), '/');
        EXPECT_EQ(fs::status(made).permissions(), fs::perms(0700));
        EXPECT_EQ(FolderPath(c.folder, false), made);

        for (const char* relative : {"", "own", "./x"}) {
            setenv(c.variable, relative, 1);
            EXPECT_EQ(FolderPath(c.folder, true), base + "/home" + c.inHome);
        }
        unsetenv(c.variable);
        EXPECT_EQ(FolderPath(c.folder, false), base + "/home" + c.inHome);
        setenv("HOME", "relative", 1);
        EXPECT_EQ(FolderPath(c.folder, true), "");
        WriteFile(base + "/file", "x");
        setenv(c.variable, (base + "/file").c_str(), 1);
        EXPECT_EQ(FolderPath(c.folder, true), "");

        setenv(c.variable, old.c_str(), 1);
        if (!home.empty()) {
            setenv("HOME", home.c_str(), 1);
        }
    }
}

TEST(FileReference, RefersOnlyToWhatExists)
{
    const std::string base = MakeFolder("references");
    fs::create_directory(base + "/inner");
    WriteFile(base + "/f\u00FCr mich", "x");

    FSRef ref;
    const std::pair<std::string, OSStatus> wrong[] = {{"", bdNamErr},
                                                      {base + "/missing", fnfErr},
                                                      {base + "/f\u00FCr mich/inside", fnfErr},
                                                      {base + std::string(1, '\0') + "x", bdNamErr},
                                                      {base + "/" + std::string(300, 'n'), bdNamErr}};
    for (const auto& [path, status] : wrong) {
        EXPECT_EQ(MakeReference(path, ref), status) << path;
        EXPECT_EQ(ref.path, "");
    }
    FSRef folder;
    EXPECT_EQ(MakeReference(base + "//", folder), noErr);
    EXPECT_EQ(folder.path, base);
    EXPECT_EQ(MakeReference("/", ref), noErr);
    EXPECT_EQ(MakeReferenceInFolder(ref, "proc", ref), noErr); // in and out may be the same
    EXPECT_EQ(ref.path, "/proc");
    for (const char* name : {"", ".", "..", "inner/x", "/inner"}) {
        EXPECT_EQ(MakeReferenceInFolder(folder, name, ref), bdNamErr) << name;
        EXPECT_EQ(CreateFolder(folder, name, ref), bdNamErr) << name;
    }
    EXPECT_EQ(CreateFolder(folder, "inner", ref), ioErr);
    std::string path(base.size() + 1, '?');
    EXPECT_EQ(MakePath(folder, path.data(), static_cast<int>(path.size())), noErr);
    EXPECT_STREQ(path.c_str(), base.c_str());
    EXPECT_EQ(MakePath(folder, path.data(), static_cast<int>(path.size() - 1)), bdNamErr);
}
