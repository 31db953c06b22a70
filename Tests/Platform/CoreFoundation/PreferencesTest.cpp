// Preferences: what comes back from the file, and what happens to a file that is damaged or cannot be written.
#include "Reference.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

namespace fs = std::filesystem;

static fs::path FileOf(const std::string& application)
{
    return fs::path(getenv("XDG_CONFIG_HOME")) / "velmora" / (application + ".plist");
}

static std::string ReadAll(const fs::path& path)
{
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

static void WriteAll(const fs::path& path, const std::string& text)
{
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

static void Set(const std::string& application, const char* key, CFTypeRef value)
{
    CFPreferencesSetAppValue(Text(key).get(), value, Text(application).get());
}

static std::string Get(const std::string& application, const char* key)
{
    const tOwned<CFTypeRef> value(CFPreferencesCopyAppValue(Text(key).get(), Text(application).get()));
    return value ? Utf8(value.get()) : "(missing)";
}

static bool Synchronize(const std::string& application)
{
    return CFPreferencesAppSynchronize(Text(application).get());
}

static void ExpectInteger(const std::string& application, const char* key, bool isValid, CFIndex value)
{
    SCOPED_TRACE(key);
    Boolean valid = 2;
    EXPECT_EQ(CFPreferencesGetAppIntegerValue(Text(key).get(), Text(application).get(), &valid), value);
    EXPECT_EQ(valid, isValid);
}

static void ExpectBoolean(const std::string& application, const char* key, bool isValid, bool value)
{
    SCOPED_TRACE(key);
    Boolean valid = 2;
    EXPECT_EQ(CFPreferencesGetAppBooleanValue(Text(key).get(), Text(application).get(), &valid), value);
    EXPECT_EQ(valid, isValid);
}

static void SetSamples(const std::string& application)
{
    const int number = -4000;
    const double fraction = 1.5;
    const UInt8 bytes[] = {0, 255, 10};
    Set(application, "yes", kCFBooleanTrue);
    Set(application, "no", kCFBooleanFalse);
    Set(application, "number", tOwned<CFNumberRef>(CFNumberCreate(nullptr, kCFNumberIntType, &number)).get());
    Set(application, "fraction", tOwned<CFNumberRef>(CFNumberCreate(nullptr, kCFNumberDoubleType, &fraction)).get());
    Set(application, "data", tOwned<CFDataRef>(CFDataCreate(nullptr, bytes, sizeof bytes)).get());
    Set(application, "text",
        Text("Gr\xC3\xBC\xC3\x9F"
             "e <&> \"x\" \xEF\xA3\xBF")
            .get());
    Set(application, "empty", CFSTR(""));
    Set(application, "digits", CFSTR("12"));
}

static void ExpectSamples(const std::string& application)
{
    ExpectBoolean(application, "yes", true, true);
    ExpectBoolean(application, "no", true, false);
    ExpectBoolean(application, "number", true, true);
    ExpectBoolean(application, "digits", false, false);
    ExpectBoolean(application, "missing", false, false);
    ExpectInteger(application, "number", true, -4000);
    ExpectInteger(application, "fraction", false, 0);
    ExpectInteger(application, "yes", false, 0);
    ExpectInteger(application, "digits", false, 0);
    ExpectInteger(application, "missing", false, 0);
    EXPECT_EQ(Get(application, "text"), "Gr\xC3\xBC\xC3\x9F"
                                        "e <&> \"x\" \xEF\xA3\xBF");
    EXPECT_EQ(Get(application, "empty"), "");
    const tOwned<CFTypeRef> data(CFPreferencesCopyAppValue(CFSTR("data"), Text(application).get()));
    ASSERT_TRUE(data);
    ASSERT_EQ(CFGetTypeID(data.get()), CFDataGetTypeID());
    const auto bytes = static_cast<CFDataRef>(data.get());
    EXPECT_EQ(std::string(CFDataGetBytePtr(bytes), CFDataGetBytePtr(bytes) + CFDataGetLength(bytes)),
              std::string("\0\xFF\n", 3));
}

TEST(CFPreferences, EverythingComesBackFromTheFile)
{
    const std::string application = "com.example.round";
    SetSamples(application);
    EXPECT_FALSE(fs::exists(FileOf(application))); // until it is synchronised
    ExpectSamples(application);
    ASSERT_TRUE(Synchronize(application));
    EXPECT_EQ(fs::status(FileOf(application).parent_path()).permissions(), fs::perms::owner_all);

    // A store is read once: another name for the same file shows what was really written.
    fs::copy_file(FileOf(application), FileOf("com.example.again"));
    ExpectSamples("com.example.again");

    Set(application, "yes", nullptr);
    ASSERT_TRUE(Synchronize(application));
    fs::copy_file(FileOf(application), FileOf("com.example.removed"));
    ExpectBoolean("com.example.removed", "yes", false, false);
    ExpectBoolean("com.example.removed", "no", true, false);
    for (const auto& entry : fs::directory_iterator(FileOf(application).parent_path())) {
        EXPECT_EQ(entry.path().extension(), ".plist") << "left over";
    }
}

TEST(CFPreferences, ADamagedFileGivesDefaultsAndIsKept)
{
    const std::string good = "com.example.good";
    SetSamples(good);
    ASSERT_TRUE(Synchronize(good));
    const std::string whole = ReadAll(FileOf(good));
    std::vector<std::string> damaged = {
        "",           "bplist00 and nothing else", "{ a = b; }", "<plist><array/></plist>", std::string(100, '\0'),
        "<<<<>>>&&&", "<?xml version=\"1.0\"?>"};
    for (size_t length = 1; length < whole.size() - 10; length += 7) { // the closing tag and a line end
        damaged.push_back(whole.substr(0, length));
    }
    for (size_t i = 0; i < damaged.size(); ++i) {
        SCOPED_TRACE(damaged[i]);
        const std::string application = "com.example.damaged" + std::to_string(i);
        WriteAll(FileOf(application), damaged[i]);
        EXPECT_EQ(Get(application, "text"), "(missing)");
        EXPECT_TRUE(Synchronize(application)); // nothing to write: nothing is touched
        EXPECT_EQ(ReadAll(FileOf(application)), damaged[i]);
        Set(application, "text", CFSTR("new"));
        EXPECT_TRUE(Synchronize(application));
        EXPECT_EQ(ReadAll(FileOf(application).string() + ".damaged-1"), damaged[i]);
        EXPECT_NE(ReadAll(FileOf(application)).find("<string>new</string>"), std::string::npos);
    }

    // A second time a file is damaged, the first one stays where it was put.
    const std::string twice = "com.example.twice";
    WriteAll(FileOf(twice).string() + ".damaged-1", "older");
    WriteAll(FileOf(twice), "newer");
    Set(twice, "a", kCFBooleanTrue);
    EXPECT_TRUE(Synchronize(twice));
    EXPECT_EQ(ReadAll(FileOf(twice).string() + ".damaged-1"), "older");
    EXPECT_EQ(ReadAll(FileOf(twice).string() + ".damaged-2"), "newer");
}

TEST(CFPreferences, WithoutAPlaceToWriteValuesLiveInMemory)
{
    const std::string folder = getenv("XDG_CONFIG_HOME");
    const std::string home = getenv("HOME") != nullptr ? getenv("HOME") : "";
    const std::string blocked = folder + "/blocked";
    WriteAll(blocked, "a file where the folder should be");
    const struct {
        const char *application, *configuration, *home;
        bool stored;
    } cases[] = {
        {"com.example.memory", "relative", "", false},
        {"com.example.blocked", blocked.c_str(), "/", false},
        {"com/example", folder.c_str(), "/", false},
        {"com.example.home", "", folder.c_str(), true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.application);
        setenv("XDG_CONFIG_HOME", c.configuration, 1);
        setenv("HOME", c.home, 1);
        Set(c.application, "key", CFSTR("value"));
        EXPECT_EQ(Synchronize(c.application), c.stored);
        EXPECT_EQ(Get(c.application, "key"), "value");
    }
    setenv("XDG_CONFIG_HOME", folder.c_str(), 1);
    setenv("HOME", home.c_str(), 1);
    EXPECT_TRUE(fs::exists(folder + "/.config/velmora/com.example.home.plist"));
    EXPECT_EQ(ReadAll(blocked), "a file where the folder should be");
    EXPECT_FALSE(fs::exists(FileOf("com/example")));
}
