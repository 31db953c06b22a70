#include "Platform/Streams.h"

#include "support/Child.h"
#include "support/Files.h"

#include <cstring>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <iterator>
#include <sys/stat.h>

using namespace Platform;
using testing::ElementsAre;
using testing::UnorderedElementsAre;
namespace fs = std::filesystem;

namespace {
class Streams : public testing::Test {
protected:
    std::string In(const std::string& name) const { return mFolder.PathOf(name); }
    std::string Write(const std::string& name, const std::string& text) const { return mFolder.Write(name, text); }

    static std::string ReadAll(const CInputFile& file)
    {
        std::string text(1000, '\0');
        text.resize(fread(text.data(), 1, text.size(), file.Get()));
        return text;
    }

    std::vector<std::string> Names() const
    {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(mFolder.Path())) {
            names.push_back(entry.path().filename().string());
        }
        return names;
    }

    /// Writes a file as a document is written. @return what Commit answered, false also without a stream
    static bool Save(const std::string& path, const std::string& text)
    {
        COutputFile file(path);
        if (file.Get() == nullptr) {
            return false;
        }
        fwrite(text.data(), 1, text.size(), file.Get());
        return file.Commit();
    }

    static mode_t Mode(const std::string& path)
    {
        struct stat information = {};
        EXPECT_EQ(stat(path.c_str(), &information), 0) << path;
        return information.st_mode & 07777;
    }

    CTestFolder mFolder;
};
} // namespace

TEST_F(Streams, ADescriptorIsReadFromItsBeginningEachTime)
{
    const int descriptor = open(Write("document", "first to last").c_str(), O_RDONLY);
    ASSERT_GE(descriptor, 0);
    fs::remove(In("document")); // opening it again would not find it
    const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(ReadAll(CInputFile(path)), "first to last");
    }
    EXPECT_EQ(fcntl(descriptor, F_GETFD), 0); // still open
    EXPECT_EQ(CInputFile("/proc/self/fd/0" + std::to_string(descriptor)).Get(), nullptr);
    close(descriptor);
    EXPECT_EQ(CInputFile(path).Get(), nullptr);
}

TEST_F(Streams, OpensWhatIsNoFileWithoutWaiting)
{
    ASSERT_EQ(mkfifo(In("fifo").c_str(), 0600), 0);
    const CInputFile fifo(In("fifo"));
    ASSERT_NE(fifo.Get(), nullptr);
    EXPECT_EQ(getc(fifo.Get()), EOF);

    const CInputFile folder(mFolder.Path());
    ASSERT_NE(folder.Get(), nullptr);
    EXPECT_EQ(getc(folder.Get()), EOF);
    EXPECT_NE(ferror(folder.Get()), 0);
}

TEST_F(Streams, FindsNamesInMacOSRoman)
{
    Write("Z\u00FCge \u20AC", "utf-8");
    EXPECT_EQ(ReadAll(CInputFile(In("Z\x9Fge \xDB"))), "utf-8");
    EXPECT_TRUE(Save(In("Z\x9Fge \xDB"), "saved")); // the existing file, not a second one
    EXPECT_TRUE(Save(In("neu\x8A"), "new"));
    EXPECT_TRUE(Save(In("schon\u00F6"), "already utf-8"));
    EXPECT_THAT(Names(), UnorderedElementsAre("Z\u00FCge \u20AC", "neu\u00E4", "schon\u00F6"));
    EXPECT_EQ(ReadFile(In("Z\u00FCge \u20AC")), "saved");

    Write("neu\x8A", "raw"); // the bytes themselves come first, where they name something
    EXPECT_EQ(ReadAll(CInputFile(In("neu\x8A"))), "raw");
    EXPECT_TRUE(Save(In("neu\x8A"), "raw 2"));
    EXPECT_EQ(ReadFile(In("neu\u00E4")), "new");
}

TEST_F(Streams, TheOldFileStaysUntilTheNewOneIsComplete)
{
    Write("layout", "old");
    COutputFile file(In("layout"));
    fputs("new", file.Get());
    COutputFile second(In("layout")); // two at a time do not meet
    fputs("newer", second.Get());
    EXPECT_EQ(ReadFile(In("layout")), "old");
    EXPECT_TRUE(file.Commit());
    EXPECT_EQ(file.Get(), nullptr);
    EXPECT_FALSE(file.Commit());
    EXPECT_TRUE(second.Commit());
    EXPECT_EQ(ReadFile(In("layout")), "newer");
    EXPECT_THAT(Names(), ElementsAre("layout"));

    fs::create_directory(In("folder"));
    EXPECT_TRUE(Save(In(std::string(255, 'n')), "the longest name"));
    for (const std::string& bad : {In("folder"), In("folder/"), In("no/such/folder"), In("layout/x"), In("new/"),
                                   std::string(), In("a") + std::string(1, '\0') + "b"}) {
        EXPECT_EQ(COutputFile(bad).Get(), nullptr) << bad;
    }
    EXPECT_EQ(Names().size(), 3u);
}

TEST_F(Streams, LinksAndModesAreKept)
{
    fs::create_directory(In("real"));
    Write("real/document", "old");
    fs::permissions(In("real/document"), fs::perms(0640));
    fs::create_symlink("real/document", In("link"));
    fs::create_symlink("link", In("link-to-link"));
    EXPECT_TRUE(Save(In("link-to-link"), "through two links"));
    EXPECT_TRUE(fs::is_symlink(In("link")) && fs::is_symlink(In("link-to-link")));
    EXPECT_EQ(ReadFile(In("real/document")), "through two links");
    EXPECT_EQ(Mode(In("real/document")), 0640u);

    fs::create_symlink("real/not-yet", In("dangling"));
    fs::create_symlink(In("dangling"), In("dangling-absolute"));
    const mode_t mask = umask(027);
    EXPECT_TRUE(Save(In("dangling-absolute"), "made"));
    umask(mask);
    EXPECT_TRUE(fs::is_symlink(In("dangling")));
    EXPECT_EQ(ReadFile(In("real/not-yet")), "made");
    EXPECT_EQ(Mode(In("real/not-yet")), 0640u);

    fs::create_symlink("circle", In("circle"));
    EXPECT_FALSE(Save(In("circle"), "x"));
    EXPECT_EQ(std::distance(fs::directory_iterator(In("real")), fs::directory_iterator()), 2);
}

TEST_F(Streams, DevicesAreWrittenInPlace)
{
    EXPECT_FALSE(Save("/dev/full", "x"));
    ASSERT_EQ(mkfifo(In("fifo").c_str(), 0600), 0);
    EXPECT_EQ(COutputFile(In("fifo")).Get(), nullptr); // nobody reads; not waited for
    const CInputFile reader(In("fifo"));
    EXPECT_TRUE(Save(In("fifo"), "to the reader"));
    EXPECT_EQ(ReadAll(reader), "to the reader");

    // A file that has no name any more is reached through its descriptor, and not another one by what its link shows.
    const int descriptor = open(Write("nameless", "a longer old text").c_str(), O_RDWR);
    fs::remove(In("nameless"));
    Write("nameless (deleted)", "other");
    EXPECT_TRUE(Save("/proc/self/fd/" + std::to_string(descriptor), "short"));
    EXPECT_EQ(ReadAll(CInputFile("/proc/self/fd/" + std::to_string(descriptor))), "short");
    close(descriptor);
    EXPECT_EQ(ReadFile(In("nameless (deleted)")), "other");
    EXPECT_THAT(Names(), UnorderedElementsAre("fifo", "nameless (deleted)"));
}

TEST_F(Streams, AFolderThatRefusesNewFilesIsWrittenInPlace)
{
    fs::permissions(Write("open", "a longer old text"), fs::perms(0666));
    fs::create_directory(In("free"));
    fs::permissions(In("free"), fs::perms(0777));
    for (const char* name : {"protected", "free/protected"}) {
        fs::permissions(Write(name, "old"), fs::perms(0444));
    }
    const fs::path path = mFolder.Path();
    for (const fs::path& above : {path.parent_path(), path.parent_path().parent_path()}) { // others may enter
        fs::permissions(above, fs::perms(0711));
    }
    fs::permissions(path, fs::perms(0555));
    RunInChild([&] {
        if (geteuid() == 0) { // permissions do not bind the superuser
            ASSERT_EQ(setgid(65534), 0);
            ASSERT_EQ(setuid(65534), 0);
        }
        ASSERT_NE(access(path.c_str(), W_OK), 0);
        EXPECT_TRUE(Save(In("open"), "new"));
        EXPECT_FALSE(Save(In("protected"), "new"));
        EXPECT_FALSE(Save(In("free/protected"), "new")); // could be replaced, but its owner said no
    });
    fs::permissions(path, fs::perms(0755));
    EXPECT_EQ(ReadFile(In("open")), "new");
    EXPECT_EQ(ReadFile(In("protected")), "old");
    EXPECT_EQ(ReadFile(In("free/protected")), "old");
    EXPECT_EQ(Names().size(), 3u);
}
