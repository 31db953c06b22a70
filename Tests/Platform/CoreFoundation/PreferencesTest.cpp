// Preferences: what comes back from the file, and what happens to a file that is damaged or cannot be written.
#include "Reference.h"
#include "support/Damage.h"
#include "support/Files.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace fs = std::filesystem;

static std::string FileOf(const std::string& application)
{
    return std::string(getenv("XDG_CONFIG_HOME")) + "/velmora/" + application + ".plist";
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

/// The value as a whole number, or as a switch, and whether it is one.
static std::string Number(const std::string& application, const char* key)
{
    Boolean valid = 2;
    const CFIndex value = CFPreferencesGetAppIntegerValue(Text(key).get(), Text(application).get(), &valid);
    return std::to_string(value) + (valid == 1 ? "" : " invalid");
}
static std::string Switch(const std::string& application, const char* key)
{
    Boolean valid = 2;
    const bool value = CFPreferencesGetAppBooleanValue(Text(key).get(), Text(application).get(), &valid);
    return std::to_string(value) + (valid == 1 ? "" : " invalid");
}

constexpr char kText[] = "Gr\u00FC\u00DFe <&> \"x\" \uF8FF";

static void SetSamples(const std::string& application)
{
    const int number = -4000;
    const double fraction = 1.5;
    Set(application, "yes", kCFBooleanTrue);
    Set(application, "no", kCFBooleanFalse);
    Set(application, "number", tOwned<CFNumberRef>(CFNumberCreate(nullptr, kCFNumberIntType, &number)).get());
    Set(application, "fraction", tOwned<CFNumberRef>(CFNumberCreate(nullptr, kCFNumberDoubleType, &fraction)).get());
    Set(application, "text", Text(kText).get());
    Set(application, "digits", CFSTR("12"));
}

static void ExpectSamples(const std::string& application)
{
    EXPECT_EQ(Switch(application, "yes"), "1");
    EXPECT_EQ(Switch(application, "no"), "0");
    EXPECT_EQ(Switch(application, "number"), "1");
    EXPECT_EQ(Number(application, "number"), "-4000");
    for (const char* key : {"fraction", "yes", "digits", "missing"}) {
        EXPECT_EQ(Number(application, key), "0 invalid") << key;
    }
    EXPECT_EQ(Switch(application, "digits"), "0 invalid");
    EXPECT_EQ(Get(application, "text"), kText);
}

TEST(CFPreferences, EverythingComesBackFromTheFile)
{
    const std::string application = "com.example.round";
    SetSamples(application);
    EXPECT_FALSE(fs::exists(FileOf(application))); // until it is synchronised
    ExpectSamples(application);
    ASSERT_TRUE(Synchronize(application));
    const fs::path folder = fs::path(FileOf(application)).parent_path();
    EXPECT_EQ(fs::status(folder).permissions(), fs::perms::owner_all);

    // A store is read once: another name for the same file shows what was really written.
    fs::copy_file(FileOf(application), FileOf("com.example.again"));
    ExpectSamples("com.example.again");

    Set(application, "yes", nullptr);
    ASSERT_TRUE(Synchronize(application));
    fs::copy_file(FileOf(application), FileOf("com.example.removed"));
    EXPECT_EQ(Switch("com.example.removed", "yes"), "0 invalid");
    for (const auto& entry : fs::directory_iterator(folder)) {
        EXPECT_EQ(entry.path().extension(), ".plist") << "left over";
    }
}

TEST(CFPreferences, ADamagedFileGivesDefaultsAndIsKept)
{
    const std::string good = "com.example.good";
    SetSamples(good);
    ASSERT_TRUE(Synchronize(good));
    int number = 0;
    const auto expectKept = [&number](std::string_view damaged) {
        const std::string application = "com.example.damaged" + std::to_string(++number);
        WriteFile(FileOf(application), damaged);
        EXPECT_EQ(Get(application, "text"), "(missing)");
        EXPECT_TRUE(Synchronize(application)); // nothing to write: nothing is touched
        EXPECT_EQ(ReadFile(FileOf(application)), damaged);
        WriteFile(FileOf(application) + ".damaged-1", "older"); // stays where it is
        Set(application, "text", CFSTR("new"));
        EXPECT_TRUE(Synchronize(application));
        EXPECT_EQ(ReadFile(FileOf(application) + ".damaged-1"), "older");
        EXPECT_EQ(ReadFile(FileOf(application) + ".damaged-2"), damaged);
        EXPECT_NE(ReadFile(FileOf(application)).find("<string>new</string>"), std::string::npos);
    };
    for (const char* damaged : {"bplist00 and nothing else", "{ a = b; }", "<plist><array/></plist>", "<<<<>>>&&&",
                                "<?xml version=\"1.0\"?>"}) {
        expectKept(damaged);
    }
    const std::string whole = ReadFile(FileOf(good));
    ForEachCut(std::string_view(whole).substr(0, whole.size() - 10), expectKept, 7); // up to the closing tag
}

TEST(CFPreferences, WithoutAPlaceToWriteValuesLiveInMemory)
{
    const std::string folder = getenv("XDG_CONFIG_HOME");
    const std::string home = getenv("HOME") != nullptr ? getenv("HOME") : "";
    const std::string blocked = folder + "/blocked";
    WriteFile(blocked, "a file where the folder should be");
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
    EXPECT_EQ(ReadFile(blocked), "a file where the folder should be");
    EXPECT_FALSE(fs::exists(FileOf("com/example")));
}
