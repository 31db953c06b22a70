// The plug-in as a host sees it: exports, factory, interfaces, references, and which documents it takes.
#include "CPlugInHost.h"

#include "Importer/Names.h"

#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;
using nlohmann::json;

static const json kOld = {{"kMDItemAuthors", "someone"}, {"com_example_note", "stays"}};

static std::string Plugin()
{
    return std::string(BUILD_FOLDER) + "/" + Importer::kBundleName + "/Contents/Linux/VelmoraLayouts";
}

TEST(PlugIn, ExportsItsTwoEntriesAndNothingElse)
{
    const std::string command = std::string(NM) + " -D --defined-only --format=posix '" + Plugin() + "'";
    const std::unique_ptr<FILE, int (*)(FILE*)> output(popen(command.c_str(), "r"), &pclose);
    ASSERT_TRUE(output);
    std::vector<std::string> names;
    char line[1000];
    while (fgets(line, sizeof line, output.get()) != nullptr) {
        const std::string text = line;
        names.push_back(text.substr(0, text.find(' ')));
    }
    EXPECT_THAT(names, testing::UnorderedElementsAre("GetMetadataForFile", "MetadataImporterPluginFactory"));
}

TEST(PlugIn, FactoryServesImportersOnly)
{
    const CPlugInHost host;
    const CFIndex before = PlatformPlugInInstanceCount(host.Factory());
    // By the property list, and by the function itself for hosts that do not ask the list.
    EXPECT_EQ(CFPlugInInstanceCreate(kCFAllocatorDefault, host.Factory(), IUnknownUUID), nullptr);
    using tFactory = void* (*)(CFAllocatorRef, CFUUIDRef);
    const auto factory = reinterpret_cast<tFactory>(
        CFBundleGetFunctionPointerForName(host.PlugIn(), CFSTR("MetadataImporterPluginFactory")));
    ASSERT_NE(factory, nullptr);
    EXPECT_EQ(factory(kCFAllocatorDefault, kMDImporterInterfaceID), nullptr);
    EXPECT_EQ(PlatformPlugInInstanceCount(host.Factory()), before);
    auto** const instance = static_cast<MDImporterInterfaceStruct**>(factory(nullptr, kMDImporterTypeID));
    ASSERT_NE(instance, nullptr);
    EXPECT_EQ(PlatformPlugInInstanceCount(host.Factory()), before + 1);
    EXPECT_EQ((*instance)->Release(instance), 0u);
    EXPECT_EQ(PlatformPlugInInstanceCount(host.Factory()), before);
}

TEST(PlugIn, CountsReferencesDownToTheInstancesEnd)
{
    Platform::tReleased<CFUUIDRef> factory;
    {
        const CPlugInHost host;
        factory.reset(static_cast<CFUUIDRef>(CFRetain(host.Factory())));
        MDImporterInterfaceStruct** const importer = host.Importer();
        EXPECT_DEATH((*importer)->AddRef = nullptr, "") << "the table is constant";
        EXPECT_EQ((*importer)->AddRef(importer), 2u);

        LPVOID unknown = nullptr;
        EXPECT_EQ((*importer)->QueryInterface(importer, CFUUIDGetUUIDBytes(IUnknownUUID), &unknown), S_OK);
        EXPECT_EQ(unknown, importer);
        LPVOID other = importer;
        EXPECT_EQ((*importer)->QueryInterface(importer, CFUUIDGetUUIDBytes(kMDImporterTypeID), &other), E_NOINTERFACE);
        EXPECT_EQ(other, nullptr);

        for (ULONG left = 3; left > 1;) {
            EXPECT_EQ((*importer)->Release(importer), --left);
        }
        EXPECT_EQ(PlatformPlugInInstanceCount(factory.get()), 1);
    }
    EXPECT_EQ(PlatformPlugInInstanceCount(factory.get()), 0);
}

TEST(PlugIn, LeavesOtherContentTypesAlone)
{
    const CPlugInHost host;
    for (const char* type : {"public.data", "COM.VELMORA.LAYOUT", "com.velmora.layout ", ""}) {
        json attributes = kOld;
        EXPECT_FALSE(host.Import(GoodDocument(), attributes, type)) << type;
        EXPECT_EQ(attributes, kOld) << type;
    }
    json attributes = kOld;
    EXPECT_TRUE(host.Import(GoodDocument(), attributes));
    EXPECT_EQ(attributes["com_example_note"], "stays");
    EXPECT_TRUE(attributes["kMDItemAuthors"].is_array()) << "replaced";
}

TEST(PlugIn, TakesEveryPathThatMacRomanCanName)
{
    const CPlugInHost host;
    json expected = json::object();
    ASSERT_TRUE(host.Import(GoodDocument(), expected));

    const fs::path folder = fs::path(getenv("TEST_FOLDER")) / "paths";
    fs::create_directories(folder);
    const std::pair<fs::path, bool> cases[] = {
        {folder / "plain.velmora", true},
        {folder / "Bahnh\xC3\xB6 fe.velmora", true},          // UTF-8 on the disk, in Mac OS Roman
        {folder / "\xE8\xBD\xA8\xE9\x81\x93.velmora", false}, // outside Mac OS Roman
    };
    for (const auto& [path, taken] : cases) {
        SCOPED_TRACE(path.string());
        fs::copy_file(GoodDocument(), path);
        json attributes = json::object();
        EXPECT_EQ(host.Import(path.string(), attributes), taken);
        EXPECT_EQ(attributes, taken ? expected : json::object());

        // An open descriptor's path has a form for all of them, and is read from the beginning wherever it stands.
        const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
        ASSERT_GE(descriptor, 0);
        lseek(descriptor, 10, SEEK_SET);
        attributes = json::object();
        EXPECT_TRUE(host.Import("/proc/self/fd/" + std::to_string(descriptor), attributes));
        EXPECT_EQ(attributes, expected);
        close(descriptor);
    }
    json attributes = kOld;
    EXPECT_FALSE(host.Import((folder / "missing.velmora").string(), attributes));
    EXPECT_EQ(attributes, kOld);
}
