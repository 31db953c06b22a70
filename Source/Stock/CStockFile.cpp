// CStock: the file.
#include "BuildingBlocks/CCountedCIG.h"
#include "CXMLDocument/CXMLDocument.h"
#include "CXMLDocument/CXMLLeafNodes.h"
#include "CXMLDocument/UXML.h"
#include "CheckError/CErr.h"
#include "CheckError/ULog.h"
#include "Platform/MacRoman.h"
#include "Stock/CStock.h"
#include "TrackLibraries/CRailsetFolder.h"

#include <boost/foreach.hpp>

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

/// The plain text, in UTF-8, of the element with that key below an item. @return false where it is missing or empty
bool ReadName(const CXMLTreeNode* item, const char* key, std::string& name)
{
    const auto* const element = dynamic_cast<const CXMLElementNode*>(UXML::GetChildNodeWithKey(item, key));
    const CXMLTextNode* const text = element != nullptr ? UXML::GetTextChildNodeOfElement(element) : nullptr;
    if (text == nullptr) {
        return false;
    }
    // Not the value in Mac OS Roman, in which different names may be the same.
    name = UXML::Unescape(text->GetKeyInUtf8().c_str());
    return !name.empty();
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
    return ForEachEntry(path, [this](const std::string& libraryName, const std::string& productNumber, int count) {
               LoadItem(libraryName, productNumber, count);
           }) == eFileState::kWhole;
}

CStock::eFileState CStock::ForEachEntry(const char* path,
                                        const std::function<void(const std::string&, const std::string&, int)>& use)
{
    if (path == nullptr || *path == '\0') {
        return eFileState::kUnreadable;
    }
    CXMLDocument document;
    if (!document.Read(path)) {
        return eFileState::kUnreadable;
    }
    const auto* const root = dynamic_cast<const CXMLTreeNode*>(document.GetNodeByKey(kRoot));
    CXMLTreeNode::tNodes children;
    if (root == nullptr || root->GetChildren(children) == 0) {
        return eFileState::kNoStock;
    }
    BOOST_FOREACH(const CXMLNode* child, children) {
        const auto* const item = dynamic_cast<const CXMLTreeNode*>(child);
        if (item == nullptr || !item->VerifyKey(kItem)) {
            ULog::Warn("%s: Invalid stock file format. (Invalid node type under '%s' node)", kLoadFunction, kRoot);
            return eFileState::kBadEntry;
        }
        std::string productNumber;
        std::string libraryName;
        for (const auto& [key, name] : {std::pair(kProductNumber, &productNumber), std::pair(kLibrary, &libraryName)}) {
            if (!ReadName(item, key, *name)) {
                ULog::Warn("%s: Invalid stock file format. (Stock item is missing '%s' node)", kLoadFunction, key);
                return eFileState::kBadEntry;
            }
        }
        use(libraryName, productNumber, UXML::GetValueAsIntegerForElementChildNode(item, kCount));
    }
    return eFileState::kWhole;
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
