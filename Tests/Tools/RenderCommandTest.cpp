// velmora render and velmora thumbnail, as a user and a file manager call them.
#include "ProgramRun.h"

#include "pool/PictureForm.h"

#include <set>
#include <sys/stat.h>

static const std::string kOval = SOURCE_FOLDER "/Samples/oval.velmora";
static const std::string kTerminus = SOURCE_FOLDER "/Samples/terminus.velmora";

/// Width and height from the header chunk of a PNG, which are no more than two bytes each here.
static std::pair<unsigned, unsigned> SizeOf(const std::string& png)
{
    EXPECT_EQ(png.substr(0, 4), "\x89PNG");
    const auto numberAt = [&png](size_t offset) {
        return static_cast<unsigned char>(png.at(offset)) * 256U + static_cast<unsigned char>(png.at(offset + 1));
    };
    return {numberAt(18), numberAt(22)};
}

TEST(Render, FitsThePictureIntoItsSize)
{
    const auto [width, height] = SizeOf(RunVelmora({"render", "--format", "png", "--size", "500x2000", kOval}).out);
    EXPECT_EQ(width, 500u);
    EXPECT_LT(height, 400u);
    EXPECT_EQ(SizeOf(RunVelmora({"render", "--format", "png", "--size", "5000x100", kOval}).out).second, 100u);
    EXPECT_NE(RunVelmora({"render", "--format", "pdf", kOval}).out.find("/MediaBox [ 0 0 842 595 ]"),
              std::string::npos);
    for (const char* size : {"", "10", "0x10", "10x-1", "10x10x10", "16385x1", "9000x9000", "99999999999x1"}) {
        EXPECT_EQ(RunVelmora({"render", "--size", size, kOval}).status, *size == '\0' ? 0 : 2) << size;
    }
}

TEST(Render, ReplacesFilesOnlyAsAWholeAndWhenTold)
{
    const std::string folder = MakeFolder("render");
    const std::string file = folder + "/plan.PNG";
    EXPECT_EQ(RunVelmora({"render", "-o", file, kOval}).status, 0);
    const std::string drawn = ReadFile(file);
    EXPECT_EQ(SizeOf(drawn).first, 1600u) << "the format is told by the name";

    WriteFile(file, "precious");
    chmod(file.c_str(), 0600);
    const tProgramResult refused = RunVelmora({"render", "-o", file, kOval});
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.err.find("--force"), std::string::npos) << refused.err;
    EXPECT_EQ(ReadFile(file), "precious");
    const std::string damaged = folder + "/damaged.velmora";
    WriteFile(damaged, ReadFile(kOval).substr(0, 20000));
    EXPECT_EQ(RunVelmora({"render", "--force", "-o", file, damaged}).status, 1);
    EXPECT_EQ(ReadFile(file), "precious") << "a layout that fails costs nothing";
    std::filesystem::create_symlink("plan.PNG", folder + "/link.png");
    EXPECT_EQ(RunVelmora({"render", "--force", "-o", folder + "/link.png", kOval}).status, 0);
    EXPECT_TRUE(ReadFile(file) == drawn);
    EXPECT_TRUE(std::filesystem::is_symlink(folder + "/link.png"));
    struct stat status = {};
    ASSERT_EQ(stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 3) << "nothing is left beside the files";

    for (const std::string& place : {std::string("/no/such/folder.svg"), folder + "/no-format"}) {
        EXPECT_NE(RunVelmora({"render", "-o", place, kOval}).status, 0) << place;
    }
    EXPECT_EQ(RunVelmora({"render", kOval, kOval}).status, 2);
    EXPECT_EQ(RunVelmora({"render", "--style", "baroque", kOval}).status, 2);
    EXPECT_TRUE(RunVelmora({"render", "--format", "png", "-"}, ReadFile(kOval)).out == drawn);
}

TEST(Render, GivesEachLayoutOfManyAPictureOfItsOwn)
{
    const std::string folder = MakeFolder("many") + "/";
    for (const char* name : {"in/plan.velmora", "in/sub/plan.VELMORA", "in/sub/WkSt", "other/plan.velmora"}) {
        WriteFile(folder + name, ReadFile(kOval));
    }
    WriteFile(folder + "in/bad.velmora", "WkSt");
    WriteFile(folder + "out/plan-2.svg", "precious");
    const std::string out = folder + "out";
    const std::string other = folder + "other/plan.velmora";
    const tProgramResult result =
        RunVelmora({"render", "--json", "--output-dir", out, "-j2", folder + "in", other, folder + "other"});
    std::string drawn;
    for (const auto& record : ParseLines(result.out)) {
        const std::string file = record.value("output", "");
        EXPECT_TRUE(file.empty() || ReadFile(file).find("<svg") != std::string::npos) << file;
        drawn += file.empty() ? record["error"]["code"].dump() + " " : file.substr(out.size()) + " ";
    }
    EXPECT_EQ(drawn, "2 /plan.svg /sub/WkSt.svg /sub/plan.svg \"output\" /plan-3.svg ") << result.err;
    EXPECT_EQ(ReadFile(out + "/plan-2.svg"), "precious");
    EXPECT_EQ(RunVelmora({"thumbnail", "--output-dir", out, kOval, other, "--files-from", "-"}, other).status, 0);
    EXPECT_EQ(SizeOf(ReadFile(out + "/oval.png")), SizeOf(ReadFile(out + "/plan-2.png")));
    EXPECT_EQ(RunVelmora({"render", "--json", kOval}).status, 2);
    EXPECT_EQ(RunVelmora({"render", "--files-from", "-", kOval}).status, 2);
    EXPECT_EQ(RunVelmora({"thumbnail", "--output-dir", out, "-"}).status, 2);
}

TEST(Render, DrawsTheLayersNamed)
{
    const auto record = ParseLines(RunVelmora({"import", "--format", "json", kTerminus}).out).at(0);
    std::set<std::string> pictures = {RunVelmora({"render", kTerminus}).out};
    EXPECT_TRUE(pictures.insert(RunVelmora({"render", "--style", "plan", kTerminus}).out).second);
    for (const std::string name : record["attributes"]["kMDItemLayerNames"]) {
        EXPECT_TRUE(pictures.insert(RunVelmora({"render", "--layer", name, kTerminus}).out).second) << name;
    }
    EXPECT_GT(pictures.size(), 4u);
    const tProgramResult missing = RunVelmora({"render", "--layer", "no such layer", kTerminus});
    EXPECT_EQ(missing.status, 1);
    EXPECT_NE(missing.err.find("no such layer"), std::string::npos);
    EXPECT_EQ(missing.out, "");
}

TEST(Thumbnail, IsASquareForAFileThatIsThere)
{
    const std::string file = MakeFolder("thumbnail") + "/out.png";
    WriteFile(file, ""); // as file managers make it
    const tProgramResult result = RunVelmora({"thumbnail", "--size", "128", kTerminus, file});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(SizeOf(ReadFile(file)), std::pair(128u, 128u));
    EXPECT_EQ(ReadFile(file)[25], 6) << "red, green, blue and alpha";
    EXPECT_EQ(RunVelmora({"thumbnail", "--size", "4000", kOval, file}).status, 2);
    EXPECT_EQ(RunVelmora({"thumbnail", kOval}).status, 2);
    EXPECT_EQ(RunVelmora({"thumbnail", file, file}).status, 1) << "a picture is no layout";
}

TEST(Picture, IsTakenInTheFormAskedForAlone)
{
    tPictureWish wish;
    const auto isSound = [&wish](ePictureKind kind, const std::string& bytes) {
        wish.kind = kind;
        return PictureForm::IsSound(wish, bytes);
    };
    const std::string png = RunVelmora({"render", "--format", "png", "--size", "300x200", kOval}).out;
    const std::string svg = RunVelmora({"render", "--labels", "--grid", kOval}).out;
    const std::string pdf = RunVelmora({"render", "--format", "pdf", kOval}).out;
    EXPECT_TRUE(isSound(ePictureKind::kPNG, png));
    EXPECT_TRUE(isSound(ePictureKind::kSVG, svg));
    EXPECT_TRUE(isSound(ePictureKind::kPDF, pdf));
    EXPECT_FALSE(isSound(ePictureKind::kPNG, svg) || isSound(ePictureKind::kSVG, pdf) ||
                 isSound(ePictureKind::kPDF, png));
    for (size_t size = 0; size < png.size(); size += 1 + size / 8) {
        EXPECT_FALSE(isSound(ePictureKind::kPNG, png.substr(0, size))) << size;
    }
    std::string text = png;
    text.insert(33, std::string("\0\0\0\1tEXtX0000", 13)); // behind the header chunk
    EXPECT_FALSE(isSound(ePictureKind::kPNG, text) || isSound(ePictureKind::kPNG, png + "PK"));
    wish.width = 299;
    EXPECT_FALSE(isSound(ePictureKind::kPNG, png)) << "larger than was asked for";
    for (const char* planted :
         {"<script>alert(1)</script>", "<g onload=\"alert(1)\"/>", "<use xlink:href=\"http://a/#b\"/>",
          "<g style=\"fill:url(file:///x)\"/>", "<!ENTITY a \"b\">", "<style>", "words", "<foreignObject/>",
          "<g id=\"a", "<path style=\"fill:u&#114;l(x)\"/>"}) {
        std::string changed = svg;
        changed.insert(svg.find("<g"), planted);
        EXPECT_FALSE(isSound(ePictureKind::kSVG, changed)) << planted;
    }
}
