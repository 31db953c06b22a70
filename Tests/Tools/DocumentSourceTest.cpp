#include "input/CDocumentSource.h"

#include "ProgramRun.h"
#include "input/CDocumentCounter.h"
#include "output/CRecordWriter.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>

/// The inputs as "path" or "path!code", without the folder's path in front.
static std::vector<std::string> Collect(CDocumentSource& source, const std::string& folder)
{
    std::vector<std::string> result;
    tInput input;
    while (source.Next(input)) {
        EXPECT_NE(input.document.IsOpen(), input.failure.has_value()) << input.path;
        std::string text = input.path;
        if (text.rfind(folder, 0) == 0) {
            text.erase(0, folder.size() + 1);
        }
        if (input.failure) {
            text += "!" + FailureCode(*input.failure);
        }
        result.push_back(text);
    }
    return result;
}

using tNames = std::vector<std::string>;

TEST(DocumentSource, WalksFoldersInOrderOfBytes)
{
    const std::string folder = MakeFolder("walk");
    for (const char* name :
         {"b.velmora", "B.VELMORA", "\xFF.velmora", "\u00E4.velmora", "line\nbreak.velmora", "text.txt", ".velmora",
          "a/z.velmora", "a/magic", "c.velmora/deep.velmora", "a.b/x.velmora"}) {
        WriteFile(folder + "/" + name, "?");
    }
    WriteFile(folder + "/a/magic", "WkSt");
    std::filesystem::create_directory(folder + "/empty");
    std::filesystem::create_directory_symlink(folder, folder + "/loop.velmora");
    std::filesystem::create_symlink("b.velmora", folder + "/link.velmora");
    std::filesystem::create_symlink("a/magic", folder + "/link");
    std::filesystem::create_symlink("nowhere", folder + "/broken.velmora");
    std::filesystem::create_symlink("nowhere", folder + "/broken");
    ASSERT_EQ(mkfifo((folder + "/fifo.velmora").c_str(), 0600), 0);
    ASSERT_EQ(mkfifo((folder + "/fifo").c_str(), 0600), 0);

    CDocumentSource source({folder});
    EXPECT_EQ(Collect(source, folder),
              (tNames{"B.VELMORA", "a/magic", "a/z.velmora", "a.b/x.velmora", "b.velmora", "broken.velmora!1",
                      "c.velmora/deep.velmora", "fifo.velmora!path", "line\nbreak.velmora", "link", "link.velmora",
                      "\u00E4.velmora", "\xFF.velmora"}));
    // By names alone: without what begins like a document, with links to folders.
    CDocumentCounter counter({folder, folder + "/link"}, {"*\xFF*", "*/c.velmora"});
    while (!counter.GetTotal()) {
        std::this_thread::yield();
    }
    EXPECT_EQ(*counter.GetTotal(), 11U);
    CDocumentSource again({folder + "/a/", folder + "/empty", folder + "/loop.velmora/a"});
    EXPECT_EQ(Collect(again, folder),
              (tNames{"a/magic", "a/z.velmora", "loop.velmora/a/magic", "loop.velmora/a/z.velmora"}));
}

TEST(DocumentSource, WalksDeeperThanDescriptorsReach)
{
    const std::string folder = MakeFolder("deep");
    std::filesystem::current_path(folder);
    constexpr int kDepth = 300;
    for (int i = 0; i < kDepth; ++i) {
        std::filesystem::create_directory("d");
        WriteFile("z.velmora", "?"); // behind the folder, so that the walk comes back to it
        std::filesystem::current_path("d");
    }
    std::filesystem::current_path(folder);
    rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit few = {100, limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
    CDocumentSource source({"."});
    const tNames found = Collect(source, folder);
    setrlimit(RLIMIT_NOFILE, &limit);
    ASSERT_EQ(found.size(), size_t{kDepth}) << found.back();
    EXPECT_EQ(found.back(), "./z.velmora");
    EXPECT_EQ(found.front().size(), 2 * kDepth - 2 + found.back().size());
}

TEST(DocumentSource, TakesWhatIsNamed)
{
    const std::string folder = MakeFolder("named");
    WriteFile(folder + "/any.txt", "?");
    ASSERT_EQ(mkfifo((folder + "/fifo").c_str(), 0600), 0);
    std::string longPath = folder;
    while (longPath.size() < 1500) {
        longPath += "/" + std::string(200, 'd');
    }
    longPath += "/" + std::string(247, 'f') + ".velmora";
    WriteFile(longPath, "?");
    const std::string tooLong = folder + "/" + std::string(5000, 'x');

    CDocumentSource source({folder + "/any.txt", folder + "/missing", folder + "/fifo", "/dev/null", "", longPath,
                            tooLong, folder + "/any.txt/below"});
    EXPECT_EQ(Collect(source, folder),
              (tNames{"any.txt", "missing!1", "fifo!path", "/dev/null!path", "!1", longPath.substr(folder.size() + 1),
                      tooLong.substr(folder.size() + 1) + "!1", "any.txt/below!1"}));
}

TEST(DocumentSource, ReadsLists)
{
    const std::string folder = MakeFolder("lists");
    for (const char* name : {"a", "b\nc", "-"}) {
        WriteFile(folder + "/" + name, "?");
    }
    std::filesystem::current_path(folder);
    WriteFile("lines", "\na\n-\n" + folder + "\nmissing");
    CDocumentSource lines({"a"}, CDocumentSource::OpenList("lines"), '\n');
    EXPECT_EQ(Collect(lines, folder + "/x"), (tNames{"a", "a", "-", folder + "!path", "missing!1"}));
    for (const bool closed : {false, true}) {
        WriteFile("zeros", std::string("a\0b\nc", 5) + (closed ? std::string(1, '\0') : ""));
        CDocumentSource zeros({}, CDocumentSource::OpenList("zeros"), '\0');
        EXPECT_EQ(Collect(zeros, folder), (tNames{"a", "b\nc"}));
        CDocumentSource wrong({}, CDocumentSource::OpenList("zeros"), '\n');
        EXPECT_EQ(Collect(wrong, folder).front(), std::string("a\0b!path", 8));
    }
    EXPECT_FALSE(CDocumentSource::OpenList("absent").IsOpen());
}
