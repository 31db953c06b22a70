// Bundles and the alert.
#include "Reference.h"
#include "support/Files.h"

namespace fs = std::filesystem;

static const char kInfo[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict>
<key>CFBundleIdentifier</key><string>com.example.probe</string>
<key>CFBundleVersion</key><string>7.1</string>
<key>CFBundleExecutable</key><string>../escape</string>
</dict></plist>)";

TEST(CFBundle, ReadsItsPropertyListAndResources)
{
    const fs::path path = TestPath("Probe.ext");
    WriteFile(path / "Contents/Info.plist", kInfo);
    WriteFile(path / "Contents/Resources/table.txt", "x");
    const tOwned<CFBundleRef> bundle(CFBundleCreate(nullptr, Url(path.string() + "/").get()));
    ASSERT_TRUE(bundle);
    EXPECT_EQ(Utf8(CFBundleGetIdentifier(bundle.get())), "com.example.probe");
    EXPECT_EQ(Utf8(CFBundleGetValueForInfoDictionaryKey(bundle.get(), kCFBundleVersionKey)), "7.1");
    EXPECT_EQ(Path(tOwned<CFURLRef>(CFBundleCopyBundleURL(bundle.get())).get()), path);

    const tOwned<CFURLRef> table(CFBundleCopyResourceURL(bundle.get(), CFSTR("table"), CFSTR("txt"), nullptr));
    ASSERT_TRUE(table);
    EXPECT_EQ(Path(table.get()), path / "Contents/Resources/table.txt");
    EXPECT_EQ(CFBundleCopyResourceURL(bundle.get(), CFSTR("none"), CFSTR("txt"), nullptr), nullptr);

    // Code is loaded from the bundle's own folder only.
    testing::internal::CaptureStderr();
    EXPECT_FALSE(CFBundleLoadExecutable(bundle.get()));
    EXPECT_EQ(CFBundleGetFunctionPointerForName(bundle.get(), CFSTR("main")), nullptr);
    EXPECT_NE(testing::internal::GetCapturedStderr(), "");

    EXPECT_EQ(CFBundleCreate(nullptr, Url(TestPath("None.ext")).get()), nullptr);
    WriteFile(path / "Contents/Info.plist", std::string(kInfo).substr(0, 150));
    EXPECT_EQ(CFBundleCreate(nullptr, Url(path).get()), nullptr);
}

// Runs itself a second time as the executable of a bundle.
TEST(CFBundle, MainBundleIsTheFixedOneOrTheFolderAroundTheProgram)
{
    const CFBundleRef main = CFBundleGetMainBundle();
    const std::string url = Path(tOwned<CFURLRef>(CFBundleCopyBundleURL(main)).get());
    const fs::path program = fs::read_symlink("/proc/self/exe");
    if (getenv("RUNS_AS_BUNDLE") != nullptr) {
        EXPECT_EQ(Utf8(CFBundleGetIdentifier(main)), "com.example.probe");
        EXPECT_EQ(url, program.parent_path().parent_path().parent_path());
        return;
    }
    EXPECT_EQ(Utf8(CFBundleGetIdentifier(main)), "com.velmora.Velmora");
    EXPECT_EQ(url, program.parent_path() / "Velmora");

    const fs::path copy = TestPath("Main.app/Contents/Linux/probe");
    WriteFile(copy.parent_path().parent_path() / "Info.plist", kInfo);
    fs::create_directories(copy.parent_path());
    fs::copy_file(program, copy);
    const std::string command = "RUNS_AS_BUNDLE=1 '" + copy.string() + "' --gtest_filter='CFBundle.MainBundle*'";
    EXPECT_EQ(system((command + " >/dev/null").c_str()), 0);
}

TEST(CFUserNotification, NeverWaitsAndShowsOneLine)
{
    const tOwned<CFStringRef> hostile = Text("\n Code  :  5\r\n\nDetail\x1B[31m \xC2\x9B"
                                             "2J \xC3\xA4\n\n");
    testing::internal::CaptureStderr();
    CFOptionFlags response = 99;
    EXPECT_EQ(CFUserNotificationDisplayAlert(0, kCFUserNotificationCautionAlertLevel, nullptr, nullptr, nullptr,
                                             CFSTR("An error"), hostile.get(), nullptr, nullptr, nullptr, &response),
              0);
    EXPECT_EQ(response, CFOptionFlags{kCFUserNotificationDefaultResponse});
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "An error: Code : 5 Detail [31m 2J \xC3\xA4\n");
}

// Runs all other tests a second time and looks at what they leave on standard error.
TEST(CFPool, NothingWarnsAboutAMissingPool)
{
    const std::string program = fs::read_symlink("/proc/self/exe");
    const std::string log = TestPath("stderr.txt");
    const std::string command = "'" + program + "' --gtest_filter=-CFPool.* >/dev/null 2>'" + log + "'";
    EXPECT_EQ(system(command.c_str()), 0);
    EXPECT_EQ(ReadFile(log), "");
}
