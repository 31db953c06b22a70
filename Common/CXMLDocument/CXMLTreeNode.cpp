#include "CXMLDocument/CXMLTreeNode.h"

#include "CXMLDocument/CXMLDocument.h"

CXMLTreeNode::~CXMLTreeNode()
{
    tNodes pending;
    pending.swap(mChildren);
    while (!pending.empty()) {
        CXMLNode* const node = pending.back();
        pending.pop_back();
        if (auto* const tree = dynamic_cast<CXMLTreeNode*>(node)) {
            pending.insert(pending.end(), tree->mChildren.begin(), tree->mChildren.end());
            tree->mChildren.clear();
        }
        delete node;
    }
}

int CXMLTreeNode::GetChildren(tNodes& children) const
{
    children = mChildren;
    return static_cast<int>(children.size());
}

CXMLNode* CXMLTreeNode::GetChildForKey(const char* key) const
{
    for (CXMLNode* const child : mChildren) {
        if (child->VerifyKey(key)) {
            return child;
        }
    }
    return nullptr;
}

CXMLDocumentNode::CXMLDocumentNode(CFStringEncoding /*encoding*/)
{
    Create(eXMLNodeType::kDocument, CXMLDocument::kRootID, "CXMLDocumentNode::CXMLDocumentNode(CFStringEncoding)");
}

CXMLElementNode::CXMLElementNode(const char* name, CFStringEncoding encoding)
{
    static constexpr char kFunction[] = "CXMLElementNode::CXMLElementNode(const char *, CFStringEncoding)";
    Create(eXMLNodeType::kElement, MakeText(name, encoding, kFunction), kFunction);
}
