#include "CXMLDocument/CXMLDocument.h"

#include "CXMLDocument/CXMLLeafNodes.h"
#include "CXMLDocument/UXML.h"
#include "CXMLDocument/UXMLFile.h"
#include "CheckError/CErr.h"
#include "Platform/Streams.h"

#include <pugixml.hpp>

#include <climits>
#include <new>

namespace {
/// The path of a file's URL; empty where there is none.
std::string PathOf(CFURLRef file)
{
    UInt8 path[PATH_MAX];
    if (file == nullptr || !CFURLGetFileSystemRepresentation(file, true, path, sizeof path)) {
        return {};
    }
    return reinterpret_cast<const char*>(path);
}
} // namespace

CXMLDocument::CXMLDocument() : mRoot(new (std::nothrow) CXMLDocumentNode(kCFStringEncodingUTF8))
{
    static constexpr char kFunction[] = "CXMLDocument::CXMLDocument()";
    CErr::CheckNull(mRoot, kFunction, "Failed to create CXMLDocumentNode instance.");
    mNodesByKey.emplace(kRootID, mRoot);
    mTree = mRoot->GetCFXMLTree();
    auto* const declaration = new (std::nothrow) CXMLProcInstNode;
    CErr::CheckNull(declaration, kFunction, "Failed to create CXMLProcInstNode instance.");
    AddNode(mRoot, declaration);
}

CXMLDocument::~CXMLDocument()
{
    DeleteTree();
}

bool CXMLDocument::AddNode(CXMLNode* parent, CXMLNode* child)
{
    auto* const tree = dynamic_cast<CXMLTreeNode*>(parent);
    CErr::CheckNull(tree, "bool CXMLDocument::AddNode(CXMLNode *, CXMLNode *)", "Parent node not a CXMLTreeNode");
    char key[CXMLNode::kKeySize] = "";
    child->GetKey(key, sizeof key);
    if (key[0] == '\0') {
        return false;
    }
    tree->GetCFXMLTree()->children.push_back(child->GetCFXMLTree());
    tree->AddChild(child);
    mNodesByKey.emplace(key, child);
    return true;
}

bool CXMLDocument::AddNode(const char* parentKey, CXMLNode* child)
{
    if (parentKey == nullptr || mNodesByKey.count(parentKey) != 1) {
        return false;
    }
    return AddNode(mNodesByKey.find(parentKey)->second, child);
}

CXMLNode* CXMLDocument::GetNodeByKey(const char* key) const
{
    const auto found = mNodesByKey.lower_bound(key);
    return found != mNodesByKey.end() && found->first == key ? found->second : nullptr;
}

void CXMLDocument::GetNodesWithKey(const char* key, std::vector<CXMLNode*>& nodes) const
{
    const auto range = mNodesByKey.equal_range(key);
    for (auto entry = range.first; entry != range.second; ++entry) {
        nodes.push_back(entry->second);
    }
}

bool CXMLDocument::Read(const char* path)
{
    std::string bytes;
    if (path == nullptr || !UXMLFile::ReadBytes(path, bytes)) {
        return false;
    }
    mTree = nullptr;
    mParsed = UXMLFile::Parse(bytes);
    if (mParsed) {
        BuildNodes();
    }
    return true;
}

void CXMLDocument::Read(CFURLRef file)
{
    Read(PathOf(file).c_str());
}

void CXMLDocument::Read(const FSRef& file)
{
    Read(file.path.c_str());
}

void CXMLDocument::BuildNodes()
{
    struct tLevel {
        pugi::xml_node next;
        CXMLNode* parent;
    };
    std::vector<tLevel> levels;
    if (CXMLNode* const root = GetNodeByKey(kRootID)) {
        levels.push_back({mParsed->first_child(), root});
    }
    while (!levels.empty()) {
        const pugi::xml_node item = levels.back().next;
        if (item.empty()) {
            levels.pop_back();
            continue;
        }
        levels.back().next = item.next_sibling();
        CXMLNode* const node = UXML::CreateCXMLNodeFromCFXMLNode(item);
        if (node == nullptr) {
            continue;
        }
        if (!AddNode(levels.back().parent, node)) {
            delete node;
        } else if (!item.first_child().empty()) {
            levels.push_back({item.first_child(), node});
        }
    }
}

bool CXMLDocument::Write(const char* path) const
{
    if (path == nullptr || (mTree == nullptr && !mParsed)) {
        return false;
    }
    std::string bytes;
    if (!(mParsed ? UXMLFile::Format(*mParsed, bytes) : UXMLFile::Format(*mTree, bytes))) {
        return false;
    }
    Platform::COutputFile file(path);
    return file.Get() != nullptr && fwrite(bytes.data(), 1, bytes.size(), file.Get()) == bytes.size() && file.Commit();
}

bool CXMLDocument::Write(CFURLRef file) const
{
    return Write(PathOf(file).c_str());
}

void CXMLDocument::DeleteTree()
{
    delete mRoot;
    mRoot = nullptr;
    mTree = nullptr;
    mParsed.reset();
    mNodesByKey.clear();
}
