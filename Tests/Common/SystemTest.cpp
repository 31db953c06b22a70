#include "CBundle/CBundle.h"
#include "KVUDate/KVUDate.h"
#include "KVUPath/KVUPath.h"
#include "UFiles/UFiles.h"
#include "support/Files.h"

#include <cstring>

namespace fs = std::filesystem;

TEST(CBundle, AProgramThatIsNoBundleIsVelmora)
{
    const CBundle& bundle = *CBundle::Instance();
    EXPECT_STREQ(bundle.GetBundleName(), "Velmora");
    EXPECT_STREQ(bundle.GetIdentifier(), "com.velmora.Velmora");

    const fs::path program = fs::read_symlink("/proc/self/exe");
    FSRef file;
    ASSERT_TRUE(bundle.GetFSRefForFileNextToApp(program.filename().c_str(), file));
    EXPECT_EQ(fs::canonical(file.path), fs::canonical(program));
    EXPECT_FALSE(bundle.GetFSRefForFileNextToApp("no such file", file));
}

TEST(KVUDate, IsWhatTheCLocaleWrites)
{
    tm time = {};
    time.tm_year = 126;
    time.tm_min = 3;
    time.tm_sec = 59;
    char expected[32];
    char text[32];
    for (time.tm_mon = 0; time.tm_mon < 12; ++time.tm_mon) {
        time.tm_mday = 1 + 2 * time.tm_mon;
        time.tm_hour = 23 - time.tm_mon;
        strftime(expected, sizeof expected, "%b %e. %Y, %T", &time); // tests never set LC_TIME
        KVUDate::Format(text, sizeof text, time);
        EXPECT_STREQ(text, expected);
        tm parsed = {};
        EXPECT_TRUE(KVUDate::Parse(text, parsed) && timegm(&parsed) == timegm(&time)) << text;
    }
    for (const char* wrong : {"", "-", "Foo  1. 2020, 01:02:03", "Jan  1. 1969, 01:02:03", "Jan 32. 2020, 01:02:03",
                              "Jan  1. 2020, 24:02:03", "Jan  1. 2020, 01:02:03 "}) {
        EXPECT_FALSE(KVUDate::Parse(wrong, time)) << wrong;
    }
    time.tm_mon = 12;
    time.tm_mday = 23;
    time.tm_year = 126;
    KVUDate::Format(text, 8, time);
    EXPECT_STREQ(text, "? 23. 2");
}

TEST(KVUPath, SuffixesAndTildeKeepWithinTheirBuffers)
{
    char path[300];
    for (const auto& [before, after] : {std::pair("plan.txt", "plan.txt"),
                                        std::pair("plan.txt.bak", "plan.txt.bak.txt"), std::pair("txt", "txt.txt")}) {
        strcpy(path, before);
        EXPECT_EQ(KVUPath::CheckAppendFileSuffix(path, "txt", true, sizeof path), strcmp(before, after) != 0);
        EXPECT_STREQ(path, before) << "checked only";
        KVUPath::CheckAppendFileSuffix(path, "txt", false, sizeof path);
        EXPECT_STREQ(path, after);
    }
    EXPECT_FALSE(KVUPath::CheckAppendFileSuffix(path, "bak", false, strlen(path) + 4)) << "no room";

    const CTestFolder home;
    const std::string file = home.Write("file", "");
    setenv("HOME", home.Path().c_str(), 1);
    strcpy(path, "~/file");
    KVUPath::CreatePathByExpandingTildePath(path, static_cast<int>(file.size()) + 1);
    EXPECT_STREQ(path, "~/file") << "fits only with a byte to spare";
    KVUPath::CreatePathByExpandingTildePath(path, static_cast<int>(file.size()) + 2);
    EXPECT_EQ(path, file);
}

TEST(UFiles, NamesAndPaths)
{
    const CTestFolder folder;
    FSRef file;
    ASSERT_EQ(Platform::MakeReference(folder.Write("Pl\xC3\xA4ne", "content"), file), noErr);
    char name[16];
    UFiles::GetFileName(name, sizeof name, file);
    EXPECT_STREQ(name, "Pl\x8Ane");
    UFiles::GetFileName(name, 4, file);
    EXPECT_STREQ(name, "Pl\x8A");
    UFiles::GetFileName(name, sizeof name, FSRef{"/tmp/\xE4\xB8\xAD"});
    EXPECT_STREQ(name, "\xE4\xB8\xAD") << "no Mac OS Roman form";

    char full[4096];
    std::string message;
    EXPECT_EQ(UFiles::GetFullPathToFile(full, 5, file, message), bdNamErr);
    EXPECT_EQ(UFiles::GetFullPathToFile(full, sizeof full, FSRef(), message), rfNumErr);
}

TEST(UFiles, FoldersAreFoundOrMade)
{
    const CTestFolder parent;
    const char kName[] = "Gr\xC3\xBC\xC3\x9F";
    FSRef folder;
    ASSERT_TRUE(UFiles::GetCreateFolder(parent.Path().c_str(), kName, &folder));
    EXPECT_EQ(folder.path, parent.PathOf(kName));
    WriteFile(folder.path + "/kept", "");
    FSRef again;
    ASSERT_TRUE(UFiles::GetCreateFolder(parent.Path().c_str(), kName, &again));
    EXPECT_FALSE(UFiles::GetCreateFolder(&folder, "kept", &again)) << "a file of that name";
    EXPECT_EQ(again.path, folder.path);
    ASSERT_TRUE(UFiles::GetUserApplicationSupportFolder(folder));
    EXPECT_EQ(folder.path, std::string(getenv("XDG_DATA_HOME")) + "/Velmora");
}
