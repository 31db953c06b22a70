// Each test runs in a child with a set of fonts of its own: the font library reads its configuration once.
#include "Platform/Fonts.h"

#include "support/Child.h"
#include "support/Files.h"

#include <fcntl.h>
#include <limits>

using namespace Platform;
namespace fs = std::filesystem;

namespace {
constexpr char kFonts[] = "/usr/share/fonts/truetype/dejavu/";

class Fonts : public testing::Test {
protected:
    void SetUp() override
    {
        if (!fs::exists(std::string(kFonts) + "DejaVuSans.ttf")) {
            GTEST_SKIP() << "the fonts of fonts-dejavu-core are not in " << kFonts;
        }
    }

    /// Makes the given font files all that this process finds; to be called before the first question.
    static void UseFonts(const std::vector<std::string>& files)
    {
        const std::string folder = MakeFolder("fonts");
        fs::create_directory(folder + "/files");
        for (const std::string& file : files) {
            fs::copy_file(kFonts + file, folder + "/files/" + file);
        }
        WriteFile(folder + "/fonts.conf",
                  "<?xml version=\"1.0\"?><!DOCTYPE fontconfig SYSTEM \"urn:fontconfig:fonts.dtd\"><fontconfig><dir>" +
                      folder + "/files</dir><cachedir>" + folder + "/cache</cachedir></fontconfig>");
        setenv("FONTCONFIG_FILE", (folder + "/fonts.conf").c_str(), 1);
    }

    /// Whether a library whose name holds `name` is loaded.
    static bool IsLoaded(const std::string& name)
    {
        const std::string maps = ReadFile("/proc/self/maps");
        EXPECT_NE(maps.find("libvelmora-platform"), std::string::npos);
        return maps.find(name) != std::string::npos;
    }

    struct tSize {
        double width = -1;
        double height = -1;
    };
    static tSize Measure(const std::string& text, double size = 12, const std::string& font = "DejaVu Sans")
    {
        tSize result;
        EXPECT_TRUE(MeasureText(font, size, text, result.width, result.height));
        return result;
    }
};
} // namespace

TEST_F(Fonts, AreInstalledUnderTheirOwnNamesOnly)
{
    RunInChild([] {
        UseFonts({"DejaVuSans.ttf", "DejaVuSans-Bold.ttf"});
        for (const char* name : {"DejaVu Sans", "DejaVuSans", "DejaVuSans-Bold", "DejaVu Sans Bold", "dejavu SANS"}) {
            EXPECT_TRUE(IsFontInstalled(name)) << name;
        }
        for (const char* name :
             {"", "Sans", "DejaVu", "DejaVu Sans Mono", "DejaVu Sans ", "*", "DejaVu Sans:bold", "\xFF\xFE"}) {
            EXPECT_FALSE(IsFontInstalled(name)) << name;
        }
        EXPECT_FALSE(IsFontInstalled(std::string("DejaVu Sans\0x", 13)));
        EXPECT_FALSE(IsLoaded("libpango"));
        EXPECT_FALSE(IsLoaded("libvelmora-text"));
    });
}

TEST_F(Fonts, NoneAtAllIsNoFault)
{
    RunInChild([] {
        UseFonts({});
        EXPECT_FALSE(IsFontInstalled("DejaVu Sans"));
        double width = 7;
        double height = 7;
        EXPECT_FALSE(MeasureText("DejaVu Sans", 12, "text", width, height));
        EXPECT_EQ(width + height, 0);
        EXPECT_FALSE(IsLoaded("libpango"));
    });
}

TEST_F(Fonts, SizesGrowWithTextAndSize)
{
    RunInChild([] {
        UseFonts({"DejaVuSans.ttf", "DejaVuSans-Bold.ttf", "DejaVuSansMono.ttf"});
        const tSize one = Measure("n");
        EXPECT_NEAR(one.width, 8, 5);
        EXPECT_NEAR(one.height, 17, 7);
        EXPECT_NEAR(Measure("nn").width, 2 * one.width, 0.05);
        EXPECT_NEAR(Measure("n", 24).width, 2 * one.width, 1e-9);
        EXPECT_DOUBLE_EQ(Measure("").height, one.height);
        for (const char* lines : {"nnn\nn", "n\rnnn", "n\r\nnnn", "nnn\xE2\x80\xA8", "\nnnn"}) {
            SCOPED_TRACE(testing::PrintToString(lines));
            EXPECT_DOUBLE_EQ(Measure(lines).height, 2 * one.height);
            EXPECT_DOUBLE_EQ(Measure(lines).width, Measure("nnn").width);
        }
        EXPECT_DOUBLE_EQ(Measure("n", std::numeric_limits<double>::quiet_NaN()).width, one.width);
        EXPECT_DOUBLE_EQ(Measure("n", std::numeric_limits<double>::infinity()).height,
                         Measure("n", 2147483647.0).height);

        const double regular = Measure("mmm", 12, "DejaVu Sans").width;
        EXPECT_GT(Measure("mmm", 12, "DejaVu Sans Bold").width, regular * 1.02);
        EXPECT_DOUBLE_EQ(Measure("mmm", 12, "DejaVuSansMono").width, Measure("iii", 12, "DejaVu Sans Mono").width);
        // What is not installed is set in one and the same font, whatever its name asks for.
        for (const char* name : {"", "Vermutung Bold 40", "DejaVu Sans Bold 12", "Mono", "\xFF"}) {
            EXPECT_DOUBLE_EQ(Measure("mmm", 12, name).width, Measure("mmm", 12, "Sans").width) << name;
        }
    });
}

TEST_F(Fonts, UnusualTextsAreMeasuredQuietly)
{
    RunInChild([] {
        UseFonts({"DejaVuSans.ttf"});
        const std::string log = TestPath("stderr");
        const int file = open(log.c_str(), O_RDWR | O_CREAT | O_TRUNC, 0600);
        const int old = dup(2);
        dup2(file, 2);
        const double letter = Measure("n").width;
        const double space = Measure("n n").width - 2 * letter;
        for (const std::string& text : {std::string("n\tn"), std::string("n\0n", 3), std::string("n\xC2\x9Bn")}) {
            EXPECT_NEAR(Measure(text).width, 2 * letter + space, 0.05) << text;
        }
        EXPECT_DOUBLE_EQ(Measure("n\xFF\xC3").width, Measure("n??").width);
        EXPECT_GT(Measure("\u05D0\u05D1 \u202E\u200B\U0001F682").width, 0);
        // Far beyond what the text library can hold in one line.
        EXPECT_NEAR(Measure(std::string(70001, 'n'), 1000).width, letter * 70001 * 1000 / 12, letter * 1000);
        fflush(stderr);
        dup2(old, 2);
        EXPECT_EQ(ReadFile(log), "");
    });
}
