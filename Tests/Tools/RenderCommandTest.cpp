// velmora render and velmora thumbnail, as a user and a file manager call them.
#include "ProgramRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <sys/stat.h>

static const std::string kOval = SOURCE_FOLDER "/Samples/oval.velmora";
static const std::string kTerminus = SOURCE_FOLDER "/Samples/terminus.velmora";

/// A number of four bytes, the highest first.
static unsigned NumberAt(const std::string& bytes, size_t offset)
{
    unsigned number = 0;
    for (size_t i = 0; i < 4; ++i) {
        number = number << 8 | static_cast<unsigned char>(bytes.at(offset + i));
    }
    return number;
}

struct tSize {
    unsigned width;
    unsigned height;
};

/// From the header chunk of a PNG.
static tSize SizeOf(const std::string& png)
{
    EXPECT_EQ(png.substr(0, 4), "\x89PNG");
    return png.size() < 24 ? tSize{0, 0} : tSize{NumberAt(png, 16), NumberAt(png, 20)};
}

TEST(Render, FitsThePictureIntoItsSize)
{
    const tSize wide = SizeOf(RunVelmora({"render", "--format", "png", "--size", "500x2000", kOval}).out);
    EXPECT_EQ(wide.width, 500u);
    EXPECT_LT(wide.height, 400u);
    EXPECT_EQ(SizeOf(RunVelmora({"render", "--format", "png", "--size", "5000x100", kOval}).out).height, 100u);
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
    EXPECT_EQ(SizeOf(drawn).width, 1600u) << "the format is told by the name";

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

    const std::pair<int, std::vector<std::string>> refusals[] = {{1, {"-o", folder + "/no/such/folder.svg", kOval}},
                                                                 {2, {"-o", folder + "/plan", kOval}}, // of no format
                                                                 {2, {kOval, kOval}},
                                                                 {1, {folder}},
                                                                 {1, {folder + "/missing.velmora"}},
                                                                 {2, {"--style", "baroque", kOval}}};
    for (auto [refusal, arguments] : refusals) {
        arguments.insert(arguments.begin(), "render");
        EXPECT_EQ(RunVelmora(arguments).status, refusal) << arguments.back();
    }
    EXPECT_TRUE(RunVelmora({"render", "--format", "png", "-"}, ReadFile(kOval)).out == drawn);
}

TEST(Render, DrawsTheLayersNamed)
{
    const auto draw = [](std::vector<std::string> options) {
        options.insert(options.begin(), "render");
        options.push_back(kTerminus);
        return RunVelmora(options);
    };
    const tProgramResult all = draw({});
    const tProgramResult import = RunVelmora({"import", "--format", "json", kTerminus});
    std::vector<std::string> pictures = {all.out};
    const auto record = nlohmann::json::parse(import.out, nullptr, false);
    for (const auto& name : record["attributes"]["kMDItemLayerNames"]) {
        const tProgramResult one = draw({"--layer", name.get<std::string>()});
        EXPECT_EQ(one.status, 0) << one.err;
        EXPECT_EQ(std::count(pictures.begin(), pictures.end(), one.out), 0) << name;
        pictures.push_back(one.out);
    }
    EXPECT_GT(pictures.size(), 3u);
    const tProgramResult missing = draw({"--layer", "no such layer"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_NE(missing.err.find("no such layer"), std::string::npos);
    EXPECT_TRUE(missing.out.empty());
    EXPECT_NE(draw({"--style", "plan"}).out, all.out);
}

TEST(Thumbnail, IsASquareForAFileThatIsThere)
{
    const std::string file = MakeFolder("thumbnail") + "/out.png";
    WriteFile(file, ""); // as file managers make it
    const tProgramResult result = RunVelmora({"thumbnail", "--size", "128", kTerminus, file});
    EXPECT_EQ(result.status, 0) << result.err;
    const tSize size = SizeOf(ReadFile(file));
    EXPECT_EQ(size.width, 128u);
    EXPECT_EQ(size.height, 128u);
    EXPECT_EQ(ReadFile(file)[25], 6) << "red, green, blue and alpha";
    EXPECT_EQ(RunVelmora({"thumbnail", "--size", "4000", kOval, file}).status, 2);
    EXPECT_EQ(RunVelmora({"thumbnail", kOval}).status, 2);
    EXPECT_EQ(RunVelmora({"thumbnail", file, file}).status, 1) << "a picture is no layout";
}
