// What the XML node objects stand for, without their classes: all that is needed to write a document.
#pragma once

#include <string>
#include <vector>

/// Kinds of nodes, with the numbers that the platform's XML service gives them.
enum class eXMLNodeType : int { kDocument = 1, kElement = 2, kProcessingInstruction = 4, kText = 6 };

/// One node.
struct tXMLNode {
    eXMLNodeType type;
    std::string text; ///< UTF-8; an element's name, a text with its markup escaped, what an instruction is for
};

/// A node and what hangs below it. Neither node nor children are owned: the node objects own them.
struct tXMLTree {
    const tXMLNode* node;
    std::vector<const tXMLTree*> children;
};
