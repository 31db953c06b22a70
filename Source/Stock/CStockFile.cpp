// CStock: the file.
#include "BuildingBlocks/CCountedCIG.h"
#include "CXMLDocument/CXMLDocument.h"
#include "CXMLDocument/CXMLLeafNodes.h"
#include "CXMLDocument/UXML.h"
#include "CXMLDocument/UXMLFile.h"
#include "CheckError/CErr.h"
#include "CheckError/ULog.h"
#include "Platform/MacRoman.h"
#include "Stock/CStock.h"
#include "TrackLibraries/CRailsetFolder.h"

#include <boost/foreach.hpp>
#include <pugixml.hpp>

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <utility>

namespace {
constexpr char kRoot[] = "Velmora_Stock";
constexpr char kItem[] = "StockItem";
constexpr char kProductNumber[] = "ProductNr";
constexpr char kLibrary[] = "Railset";
constexpr char kCount[] = "Count";

constexpr char kLoadFunction[] = "bool CStock::LoadFromFile(const char *)";
constexpr char kSaveFunction[] = "bool CStock::SaveToFile(const char *)";

/// A node for an element or a text of the file, or null for what a document's nodes leave out. For one look: a document
/// of nodes takes many times the memory of the file.
std::unique_ptr<CXMLNode> NodeOf(const pugi::xml_node& node)
{
    return std::unique_ptr<CXMLNode>(UXML::CreateCXMLNodeFromCFXMLNode(node));
}

bool IsElement(const pugi::xml_node& node)
{
    return node.type() == pugi::node_element;
}

/// Whether it is an element of that name, or a text of the same characters.
bool HasKey(const pugi::xml_node& node, const char* key)
{
    return std::strcmp(IsElement(node) ? node.name() : node.type() == pugi::node_pcdata ? node.value() : "", key) == 0;
}

/// Finds the first node with a key.
class CKeySearch : public pugi::xml_tree_walker {
public:
    explicit CKeySearch(const char* key) : mKey(key) {}
    bool for_each(pugi::xml_node& node) override
    {
        mFound = HasKey(node, mKey) ? node : mFound;
        return mFound.empty();
    }
    const pugi::xml_node& GetFound() const { return mFound; }

private:
    const char* mKey;
    pugi::xml_node mFound;
};

/// The first node with that key below an item.
pugi::xml_node FindValue(const pugi::xml_node& item, const char* key)
{
    return item.find_child([key](const pugi::xml_node& node) { return HasKey(node, key); });
}

/// The text right below an element; null where the node is none, or the first below it is no text.
std::unique_ptr<CXMLTextNode> ReadText(const pugi::xml_node& element)
{
    if (IsElement(element)) {
        for (const pugi::xml_node& child : element) {
            if (std::unique_ptr<CXMLNode> node = NodeOf(child)) {
                return std::unique_ptr<CXMLTextNode>(IsElement(child) ? nullptr
                                                                      : static_cast<CXMLTextNode*>(node.release()));
            }
        }
    }
    return nullptr;
}

/// The plain text, in UTF-8, of the element with that key below an item. @return false where it is missing or empty
bool ReadName(const pugi::xml_node& item, const char* key, std::string& name)
{
    const std::unique_ptr<CXMLTextNode> text = ReadText(FindValue(item, key));
    // Not the value in Mac OS Roman, in which different names may be the same.
    name = text ? UXML::Unescape(text->GetKeyInUtf8().c_str()) : std::string();
    return !name.empty();
}

/// Fills in what stands in place of the count.
void ReadCount(const pugi::xml_node& element, CStock::tEntry& entry)
{
    using eCount = CStock::tEntry::eCount;
    entry.state = IsElement(element) ? eCount::kWrong : eCount::kMissing;
    const std::unique_ptr<CXMLTextNode> text = ReadText(element);
    if (!text) {
        return;
    }
    entry.countText = text->GetKeyInUtf8();
    entry.count = text->GetValueAsInteger();
    static constexpr char kBlanks[] = " \t\r\n";
    const std::string& all = entry.countText;
    const size_t first = std::min(all.find_first_not_of(kBlanks), all.size());
    const std::string digits = all.substr(first, all.find_last_not_of(kBlanks) + 1 - first);
    static const std::string kMost = std::to_string(std::numeric_limits<int>::max());
    const std::string number = digits.substr(std::min(digits.find_first_not_of('0'), digits.size()));
    if (!digits.empty() && digits.find_first_not_of("0123456789") == std::string::npos &&
        (number.size() < kMost.size() || (number.size() == kMost.size() && number <= kMost))) {
        entry.state = eCount::kProper;
    }
}

/// A new element below a node that is known by itself, not by its key: an article may be named like an element.
CXMLElementNode* AddElementNode(CXMLDocument& document, CXMLNode* parent, const char* name)
{
    CXMLElementNode* const element = UXML::CreateCXMLElementNodeForParentNode(&document, parent, name);
    CErr::CheckNull(element, kSaveFunction, "Failed to create CXMLElementNode instance");
    return element;
}

/// A new element with a text. An empty text leaves the element empty.
void AddValue(CXMLDocument& document, CXMLNode* parent, const char* name, std::unique_ptr<CXMLTextNode> text)
{
    CXMLNode* const element = AddElementNode(document, parent, name);
    if (document.AddNode(element, text.get())) {
        (void)text.release();
    }
}
} // namespace

bool CStock::LoadFromFile(const char* path)
{
    ClearStock();
    return ForEachEntry(path, [this](const tEntry& entry) {
               LoadItem(entry.library, entry.productNumber, entry.count);
           }) == eFileState::kWhole;
}

CStock::eFileState CStock::ForEachEntry(const char* path, const tUseEntry& use)
{
    std::string bytes;
    if (path == nullptr || *path == '\0' || !UXMLFile::ReadBytes(path, bytes)) {
        return eFileState::kUnreadable;
    }
    const std::unique_ptr<pugi::xml_document> document = UXMLFile::Parse(bytes);
    CKeySearch root(kRoot);
    if (!document || document->traverse(root) || !IsElement(root.GetFound())) {
        return eFileState::kNoStock;
    }
    CStockPlaces places(bytes);
    eFileState state = eFileState::kNoStock;
    for (const pugi::xml_node& item : root.GetFound()) {
        if (!NodeOf(item)) {
            continue;
        }
        state = eFileState::kWhole;
        if (!IsElement(item) || !HasKey(item, kItem)) {
            ULog::Warn("%s: Invalid stock file format. (Invalid node type under '%s' node)", kLoadFunction, kRoot);
            return eFileState::kBadEntry;
        }
        tEntry entry;
        for (const auto& [key, name] :
             {std::pair(kProductNumber, &entry.productNumber), std::pair(kLibrary, &entry.library)}) {
            if (!ReadName(item, key, *name)) {
                ULog::Warn("%s: Invalid stock file format. (Stock item is missing '%s' node)", kLoadFunction, key);
                return eFileState::kBadEntry;
            }
        }
        const pugi::xml_node count = FindValue(item, kCount);
        ReadCount(count, entry);
        entry.place = places.Find(item, IsElement(count) ? count : pugi::xml_node());
        use(entry);
    }
    return state;
}

void CStock::LoadItem(const std::string& library, const std::string& product, int count)
{
    std::string libraryName;
    std::string productNumber;
    if (!Platform::Utf8ToMacRoman(library, libraryName) || !Platform::Utf8ToMacRoman(product, productNumber)) {
        ULog::Warn("%s: Skipping element '%s' of library '%s', whose names have characters that no article has",
                   kLoadFunction, product.c_str(), library.c_str());
        return;
    }
    if (!CRailsetFolder::Instance()->ContainsRailset(libraryName)) {
        ULog::Info("%s: Skipping element due to unknown library \"%s\"", kLoadFunction, libraryName.c_str());
        return;
    }
    std::unique_ptr<CCountedCIG> element(CreateCountedCIG(libraryName.c_str(), productNumber.c_str(), count));
    if (element && AddElement(element.get()) == 1) {
        (void)element.release(); // the stock's now
    }
}

bool CStock::SaveToFile(const char* path) const
{
    CXMLDocument document;
    CXMLElementNode* const root = AddElementNode(document, document.GetNodeByKey(CXMLDocument::kRootID), kRoot);
    BOOST_FOREACH(const auto& entry, mItems) {
        const CCountedCIG* const element = entry.second;
        CErr::CheckNull(element, kSaveFunction, "Failed to retrieve stock element from iterator");
        if (*element->GetName() == '\0' || *element->GetRailSetName() == '\0') { // it would end the reading of the file
            ULog::Warn("%s: Leaving out element '%s' of library '%s', which lacks a name", kSaveFunction,
                       element->GetName(), element->GetRailSetName());
            continue;
        }
        CXMLElementNode* const item = AddElementNode(document, root, kItem);
        AddValue(document, item, kProductNumber,
                 std::make_unique<CXMLTextNode>(element->GetName(), kCFStringEncodingMacRoman));
        AddValue(document, item, kLibrary,
                 std::make_unique<CXMLTextNode>(element->GetRailSetName(), kCFStringEncodingMacRoman));
        AddValue(document, item, kCount, std::make_unique<CXMLTextNode>(element->GetCount()));
    }
    return document.Write(path);
}
