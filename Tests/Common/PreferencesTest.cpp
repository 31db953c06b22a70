#include "KVUPrefsValue/KVUPrefsValue.h"
#include "KVUStr/KVUStr.h"
#include "Platform/Released.h"
#include "Preferences/CVLPreferences.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>

namespace {
using tHolder = Platform::tReleased<CFTypeRef>;
using tStored = std::map<std::string, std::string>;

// Every key with its default as other releases of the application find it:
// true or false, a number, or a text in quotes.
const char kDefaults[] =
    "VLDefaultRSName '' VLStockFileName 'Stock.xml' VLSoundsOn true VLAutoColorize true VLFlexCanAppend false "
    "VLSkipEmptyForRSSync true VLDefaultWSShowGrid true VLDefaultWSShowElmNames false VLDefaultWSOutlineNames true "
    "VLDefaultWSShowPrefix true VL3DTerrain false VL3DGridOpt false VL3DOnlyTracks false VL3DShowAllLayers false "
    "VLWinShowRSPalette true VLWinShowInfo true VLWinShowColorPalette true VLWinShowLayerPalette false "
    "VLAutoOpenLastWS false VLConnectTrackUsePlain true VLRSPaletteShowAvailability false "
    "VLRSPaletteShowStockCount false VLRSPalSortMode 0 VLWSDefaultZoom 50 VLWSDefaultTextZoomIdx 2 "
    "VLWSDefaultColorScheme 1 VLWSDefaultTrackStyle 105 VLElmPosDisplayMode 1 VLSnapLimit 135 VLUnits 2 "
    "VLWSDefaultGridSpacing 10 VLSnapAreaFactor 100 VLMaxConnectTrackItems 4 VLMinConnectDistance 2 "
    "VLDefaultWSWidth 4000 VLDefaultWSHeight 2500 VLPrefsFileFormat 3";

tStored Defaults()
{
    tStored result;
    std::istringstream words(kDefaults);
    for (std::string key, value; words >> key >> value;) {
        result[key] = value;
    }
    return result;
}

tHolder MakeString(const std::string& utf8)
{
    return tHolder(CFStringCreateWithCString(kCFAllocatorDefault, utf8.c_str(), kCFStringEncodingUTF8));
}

/// Stores a value written as above; an empty one removes the key.
void Store(const std::string& key, const std::string& value)
{
    tHolder object;
    if (value == "true" || value == "false") {
        object.reset(CFRetain(value == "true" ? kCFBooleanTrue : kCFBooleanFalse));
    } else if (!value.empty() && value[0] == '\'') {
        object = MakeString(value.substr(1, value.size() - 2));
    } else if (!value.empty()) {
        const int64_t number = std::stoll(value);
        object.reset(CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt64Type, &number));
    }
    CFPreferencesSetAppValue(static_cast<CFStringRef>(MakeString(key).get()), object.get(),
                             CVLPreferences::GetIdentifier());
}

/// What the store holds under a key, written as above.
std::string Stored(const std::string& key)
{
    const tHolder value(
        CFPreferencesCopyAppValue(static_cast<CFStringRef>(MakeString(key).get()), CVLPreferences::GetIdentifier()));
    if (value && CFGetTypeID(value.get()) == CFBooleanGetTypeID()) {
        return value.get() == kCFBooleanTrue ? "true" : "false";
    }
    std::string text;
    if (value && CFGetTypeID(value.get()) == CFStringGetTypeID()) {
        KVUStr::GetText(static_cast<CFStringRef>(value.get()), kCFStringEncodingUTF8, text);
        return "'" + text + "'";
    }
    int number = -1;
    return value && CFNumberGetValue(static_cast<CFNumberRef>(value.get()), kCFNumberSInt32Type, &number)
               ? std::to_string(number)
               : "";
}

void EmptyStore()
{
    for (const auto& [key, value] : Defaults()) {
        Store(key, "");
    }
}
} // namespace

TEST(CVLPreferences, EveryValueIsSavedAndComesBackUnderItsKey)
{
    EmptyStore();
    const CVLPreferences defaults;
    EXPECT_EQ(Stored("VLUnits"), "") << "reading writes nothing";
    defaults.Save();
    tStored changed = Defaults();
    for (auto& [key, value] : changed) {
        EXPECT_EQ(Stored(key), value) << key;
        if (value == "true" || value == "false") {
            value = value == "true" ? "false" : "true";
        } else {
            value = value[0] == '\'' ? "'\xC3\xA4" + key + "'" : std::to_string(std::stoi(value) - 1000);
        }
        Store(key, value);
    }
    EXPECT_TRUE(std::filesystem::exists(std::string(getenv("XDG_CONFIG_HOME")) + "/velmora/com.velmora.Velmora.plist"));
    CVLPreferences preferences;
    EXPECT_STREQ(preferences.mDefaultLibraryName, "\x8AVLDefaultRSName");
    EXPECT_EQ(preferences.mUnits, -998) << "ranges are the business of those who use a value";
    EmptyStore();
    preferences.Load(); // now without a single key: every field stays
    preferences.Save();
    changed["VLPrefsFileFormat"] = "3"; // never read
    for (const auto& [key, value] : changed) {
        EXPECT_EQ(Stored(key), value) << key;
    }
}

TEST(CVLPreferences, LongTextsAreCutAndWrongTypesLeaveTheField)
{
    EmptyStore();
    Store("VLStockFileName", "'" + std::string(5000, 'x') + "'");
    Store("VLUnits", "'4'");
    Store("VLSnapLimit", "4294967300"); // its low 32 bits are 4
    CVLPreferences preferences;
    EXPECT_EQ(preferences.mStockFileName, std::string(255, 'x'));
    EXPECT_EQ(preferences.mUnits, 2);
    EXPECT_EQ(preferences.mSnapLimit, 135);
    Store("VLStockFileName", "5");
    Store("VLDefaultRSName", "'\xE4\xB8\xAD'"); // no Mac OS Roman form
    preferences.Load();
    EXPECT_EQ(preferences.mStockFileName, std::string(255, 'x'));
    EXPECT_STREQ(preferences.mDefaultLibraryName, "");
}

TEST(KVUPrefsValue, RawBytesAreCutToTheirBuffer)
{
    const CFStringRef key = CFSTR("Value");
    const CFStringRef application = CFSTR("com.velmora.test");
    char character = '#';
    KVUPrefsValue::WriteValue(key, application, 0x142);
    EXPECT_TRUE(KVUPrefsValue::ReadValue(key, application, character));
    EXPECT_EQ(character, 'B') << "the low byte";

    const std::string bytes("\0\1\xFF\0\7", 5);
    std::string read(6, '#');
    void* const target = read.data(); // as characters it would be a text
    EXPECT_FALSE(KVUPrefsValue::ReadValue(key, application, target, 6)) << "a number is no data";
    KVUPrefsValue::WriteValue(key, application, bytes.data(), bytes.size());
    EXPECT_TRUE(KVUPrefsValue::ReadValue(key, application, target, 3));
    EXPECT_EQ(read, bytes.substr(0, 3) + "###");
    EXPECT_FALSE(KVUPrefsValue::ReadValue(key, application, read.data(), read.size())) << "data is no text";
}
