#include "CBundle/CBundle.h"
#include "CMutexLock/CMutexLock.h"
#include "KVUDate/KVUDate.h"
#include "KVUPath/KVUPath.h"
#include "Reports.h"
#include "UFiles/UFiles.h"
#include "support/Fatal.h"
#include "support/Files.h"

#include <cstring>
#include <thread>

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::Pair;

TEST(CBundle, AProgramThatIsNoBundleIsVelmora)
{
    const CBundle& bundle = *CBundle::Instance();
    EXPECT_EQ(CBundle::Instance(), &bundle);
    EXPECT_STREQ(bundle.GetBundleName(), "Velmora");
    EXPECT_STREQ(bundle.GetIdentifier(), "com.velmora.Velmora");

    const fs::path program = fs::read_symlink("/proc/self/exe");
    FSRef file;
    ASSERT_TRUE(bundle.GetFSRefForFileNextToApp(program.filename().c_str(), file));
    EXPECT_EQ(fs::canonical(file.path), fs::canonical(program));
    EXPECT_FALSE(bundle.GetFSRefForFileNextToApp("no such file", file));
    EXPECT_FALSE(bundle.GetFSRefForFileNextToApp(std::string(255, 'x').c_str(), file));
    ExpectFatal({{"CStr2UniChar", [&] { bundle.GetFSRefForFileNextToApp("\xE4", file); }}});
    EXPECT_FALSE(bundle.GetFSRefForResource("no such", "txt", file));
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
    }
    KVUDate::Format(text, 8, time);
    EXPECT_STREQ(text, "? 23. 2");
}

TEST(KVUPath, SuffixesAndComponents)
{
    const struct {
        const char* path;
        bool checkOnly;
        const char* result;
        bool missing;
    } cases[] = {{"plan.txt", false, "plan.txt", false},
                 {"plan", false, "plan.txt", true},
                 {"plan", true, "plan", true},
                 {"txt", false, "txt.txt", true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        char path[32];
        strcpy(path, c.path);
        EXPECT_EQ(KVUPath::CheckAppendFileSuffix(path, "txt", c.checkOnly, sizeof path), c.missing);
        EXPECT_STREQ(path, c.result);
    }
    char full[9] = "plan";
    EXPECT_FALSE(KVUPath::CheckAppendFileSuffix(full, "txt", false, 8));
    EXPECT_EQ(KVUPath::GetLastPathComponent("a/b/c"), "c");
    EXPECT_EQ(KVUPath::GetLastPathComponent("c"), "c");
    EXPECT_TRUE(KVUPath::IsAbsolutePath("/a"));
    EXPECT_FALSE(KVUPath::IsAbsolutePath("") || KVUPath::IsAbsolutePath(nullptr));
    char path[8] = "a";
    KVUPath::SetPathEndToSeparator(path);
    KVUPath::SetPathEndToSeparator(path);
    EXPECT_STREQ(path, "a/");
}

TEST(KVUPath, Tilde)
{
    const CTestFolder home;
    home.Write("file", "");
    setenv("HOME", home.Path().c_str(), 1);
    std::vector<char> path(home.Path().size() + 7); // "/file", its zero and one more
    strcpy(path.data(), "~/file");
    KVUPath::CreatePathByExpandingTildePath(path.data(), static_cast<int>(path.size()) - 1);
    EXPECT_STREQ(path.data(), "~/file") << "fits only with a byte to spare";
    KVUPath::CreatePathByExpandingTildePath(path.data(), static_cast<int>(path.size()));
    EXPECT_EQ(path.data(), home.PathOf("file"));
    ExpectFatal({{"static void KVUPath::CreatePathByExpandingTildePath\\(char \\*, int\\)\n.*No path specified",
                  [] { KVUPath::CreatePathByExpandingTildePath(nullptr, 9); }}});
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
    std::string message = "as it was";
    {
        const std::string warning =
            "static OSStatus UFiles::GetFullPathToFile(char *, int, FSRef &, string &): Failed to create path to file.";
        const CReports reports;
        EXPECT_EQ(UFiles::GetFullPathToFile(full, 5, file, message), bdNamErr);
        EXPECT_EQ(UFiles::GetFullPathToFile(full, sizeof full, FSRef(), message), rfNumErr);
        EXPECT_THAT(reports.mMessages,
                    ElementsAre(Pair(Platform::eReportLevel::kWarning, warning + "\n(Bad filename or volume name.)"),
                                Pair(Platform::eReportLevel::kWarning, warning + "\n(Invalid reference number.)")));
    }
    EXPECT_EQ(message, "as it was");
    FILE* const stream = UFiles::OpenFSRefAsFileHandle(&file, "rb");
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(getc(stream), 'c');
    fclose(stream);
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
    EXPECT_TRUE(fs::exists(again.path + "/kept"));
    EXPECT_FALSE(UFiles::GetCreateFolder(&folder, "kept", &again)) << "a file of that name";
    EXPECT_EQ(again.path, folder.path);
    ASSERT_TRUE(UFiles::GetUserApplicationSupportFolder(folder));
    EXPECT_EQ(folder.path, std::string(getenv("XDG_DATA_HOME")) + "/Velmora");
}

TEST(CMutexLock, ExcludesOthers)
{
    CMutexLock mutex("a name");
    EXPECT_EQ(mutex.Lock(), 0);
    std::thread([&] { EXPECT_FALSE(mutex.TryLock()); }).join();
    EXPECT_EQ(mutex.Unlock(), 0);
    EXPECT_TRUE(mutex.TryLock());
    mutex.Unlock();
}
