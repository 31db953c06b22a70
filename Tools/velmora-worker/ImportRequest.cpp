#include "Layouts/Utilities/CBoundLayout.h"
#include "Platform/Released.h"
#include "Reports.h"
#include "Requests.h"
#include "Texts.h"

#include <algorithm>
#include <cstdint>
#include <unistd.h>

#if defined(__linux__)
static constexpr const char* kDescriptorFolder = "/proc/self/fd/";
#else
static constexpr const char* kDescriptorFolder = "/dev/fd/";
#endif

static void AddAttribute(tAnswer& answer, const std::string& key, CFTypeRef value)
{
    tAttribute attribute;
    attribute.key = key;
    if (ToTexts(value, attribute.texts, attribute.isList)) {
        answer.attributes.push_back(std::move(attribute));
    }
}

/// Everything that is in the dictionary: the well-known attributes in their order, then others by name.
static tAnswer ReadAttributes(CFMutableDictionaryRef dictionary)
{
    tAnswer answer;
    answer.ok = true;
    answer.verb = eVerb::kImport;
    const CFStringRef known[] = {kMDItemAuthors, kMDItemDescription, kMDItemLayerNames, kMDItemVersion,
                                 kMDItemTextContent};
    std::vector<std::string> knownNames;
    for (const CFStringRef key : known) {
        knownNames.push_back(ToUTF8(key));
        AddAttribute(answer, knownNames.back(), CFDictionaryGetValue(dictionary, key));
    }
    const size_t count = static_cast<size_t>(CFDictionaryGetCount(dictionary));
    std::vector<const void*> keys(count);
    std::vector<const void*> values(count);
    CFDictionaryGetKeysAndValues(dictionary, keys.data(), values.data());
    std::vector<std::pair<std::string, CFTypeRef>> others;
    for (size_t i = 0; i < count; ++i) {
        const std::string name = ToUTF8(static_cast<CFStringRef>(keys[i]));
        if (std::find(knownNames.begin(), knownNames.end(), name) == knownNames.end()) {
            others.emplace_back(name, values[i]);
        }
    }
    std::sort(others.begin(), others.end());
    for (const auto& [name, value] : others) {
        AddAttribute(answer, name, value);
    }
    return answer;
}

/// The version that a document's header names: 4 bytes, big-endian, behind the magic.
static int32_t ReadVersion(int document)
{
    unsigned char bytes[4] = {};
    if (pread(document, bytes, sizeof bytes, 4) != static_cast<ssize_t>(sizeof bytes)) {
        return 0;
    }
    return static_cast<int32_t>(static_cast<uint32_t>(bytes[0]) << 24 | static_cast<uint32_t>(bytes[1]) << 16 |
                                static_cast<uint32_t>(bytes[2]) << 8 | bytes[3]);
}

/// Why an element failed, in words for people: the loader's own are for its developers, and it has none for an element
/// of an unknown version.
static std::string DescribeElementFailure(const std::string& reason)
{
    static constexpr struct {
        const char* loader;
        const char* people;
    } kReasons[] = {
        {"Element expected, bad header found.", "its beginning is not that of an element, or the file ends"},
        {"Unsupported component type encountered.", "one of its components is missing, or its version is not known"},
        {"Failed to open file", "one of its components is of an unknown kind"},
        {"", "its version is not supported"}};
    for (const auto& known : kReasons) {
        if (reason == known.loader) {
            return known.people;
        }
    }
    return reason;
}

tAnswer MakeUnreadable()
{
    tAnswer answer = MakeFailure(eFailure::kLoader, "cannot be read: its disk, or the network, reports an error");
    answer.failure.loaderCode = CLayout::kCannotOpen;
    return answer;
}

tAnswer MakeLoadFailure(int result, size_t elements, int document)
{
    tAnswer answer = MakeFailure(eFailure::kLoader, {});
    answer.failure.loaderCode = result;
    switch (result) {
    case CLayout::kCannotOpen:
        return MakeUnreadable();
    case CLayout::kNoLayout:
        answer.failure.message = "is not a layout document";
        break;
    case CLayout::kUnsupportedVersion:
        answer.failure.message = "the format version " + std::to_string(ReadVersion(document)) + " is not supported";
        break;
    case CLayout::kElementFailed:
        answer.failure.element = static_cast<uint32_t>(elements + 1);
        answer.failure.message = "element " + std::to_string(elements + 1) +
                                 " is damaged: " + DescribeElementFailure(Reports::GetLoadFailure());
        break;
    case CLayout::kLayersFailed:
        answer.failure.message = "the list of layers is damaged: " + Reports::GetLoadFailure();
        break;
    default:
        return MakeFailure(eFailure::kCrash, "the loader answered with an unknown code");
    }
    return answer;
}

/// The importer says only yes or no: after a no the worker's own core loads the document again, to learn why.
static tAnswer ExplainFailure(const std::string& path, int document)
{
    CBoundLayout layout;
    const int result = layout.Load(path);
    const size_t elements = layout.GetElements().size();
    if (result == CLayout::kLoaded) {
        return MakeFailure(eFailure::kPlugIn, "the plug-in refuses the document, although it can be loaded");
    }
    return MakeLoadFailure(result, elements, document);
}

/// Calls the importer with an empty dictionary. What it may throw ends here: the caller then has no attributes.
/// @param threw  set when it threw
static bool CallImporter(const CPlugIn& plugIn, CFMutableDictionaryRef attributes, const std::string& contentType,
                         const std::string& path, bool& threw)
{
    const Platform::tReleased<CFStringRef> typeString(MakeString(contentType));
    const Platform::tReleased<CFStringRef> pathString(MakeString(path));
    try {
        return plugIn.Import(attributes, typeString.get(), pathString.get());
    } catch (...) { // also what is not of C++
        threw = true;
        return false;
    }
}

std::string PathOfDescriptor(int document)
{
    return kDescriptorFolder + std::to_string(document);
}

tAnswer AnswerImport(const CPlugIn& plugIn, const std::string& contentType, int document)
{
    if (document < 0) {
        return MakeFailure(eFailure::kCrash, "the request came without its document");
    }
    const std::string path = PathOfDescriptor(document);
    const Platform::tReleased<CFMutableDictionaryRef> attributes(CFDictionaryCreateMutable(
        kCFAllocatorDefault, 0, &kCFCopyStringDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    bool threw = false;
    if (CallImporter(plugIn, attributes.get(), contentType, path, threw)) {
        return ReadAttributes(attributes.get());
    }
    if (threw) {
        return MakeFailure(eFailure::kCrash, "the plug-in raised an exception");
    }
    return ExplainFailure(path, document);
}
