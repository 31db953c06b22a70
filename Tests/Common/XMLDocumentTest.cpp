#include "Bounds.h"
#include "CXMLDocument/CXMLDocument.h"
#include "CXMLDocument/CXMLLeafNodes.h"
#include "CXMLDocument/UXML.h"
#include "CXMLDocument/UXMLFile.h"
#include "Reports.h"
#include "support/Fatal.h"
#include "support/Files.h"

#include <pugixml.hpp>

namespace {
constexpr CFStringEncoding kRoman = kCFStringEncodingMacRoman;
constexpr CFStringEncoding kUtf8 = kCFStringEncodingUTF8;

std::string Value(const CXMLLeafNode& node, int size = 256)
{
    std::string buffer(static_cast<size_t>(size), '#');
    node.GetValueAsString(buffer.data(), size);
    return buffer.c_str();
}

std::string Written(const CXMLDocument& document)
{
    const std::string path = TestPath("written.xml");
    EXPECT_TRUE(document.Write(path.c_str()));
    return ReadFile(path);
}

/// The nodes below a node in words: "name(children)" for elements, "'text'" for texts.
std::string Outline(const CXMLTreeNode* node)
{
    std::string result;
    CXMLTreeNode::tNodes children;
    node->GetChildren(children);
    for (CXMLNode* child : children) {
        char key[256];
        const std::string text = child->GetKey(key, sizeof key);
        const auto* const tree = dynamic_cast<CXMLTreeNode*>(child);
        result += result.empty() ? "" : " ";
        result += tree != nullptr ? text + "(" + Outline(tree) + ")" : "'" + text + "'";
    }
    return result;
}

std::string Outline(const CXMLDocument& document)
{
    return Outline(static_cast<CXMLTreeNode*>(document.GetNodeByKey(CXMLDocument::kRootID)));
}

/// Outline of a new document that has read these bytes. Every one begins with the declaration.
std::string OutlineOf(const std::string& bytes)
{
    CXMLDocument document;
    document.Read(WriteTestFile("read.xml", bytes).c_str());
    return Outline(document);
}

std::string Repeated(const std::string& text, size_t count)
{
    return count == 0 ? "" : Repeated(text + text, count / 2) + (count % 2 == 1 ? text : "");
}
} // namespace

TEST(CXMLNode, TextsAreEscapedOnceAndNumbersHaveTheirDecimals)
{
    const CXMLTextNode text("a<b & 'c' > \"d\"", kRoman);
    EXPECT_EQ(Value(text), "a&lt;b &amp; &apos;c&apos; &gt; \"d\"");
    EXPECT_EQ(UXML::Unescape("&amp;lt; &amp;amp; &amp &quot; &"), "&lt; &amp; &amp &quot; &");
    EXPECT_EQ(Value(CXMLTextNode(3.14159265)), "3.14159");
    EXPECT_EQ(Value(CXMLTextNode(3.14159265, 2)), "3.14");
    EXPECT_EQ(Value(CXMLTextNode(1e308, 1000), 1000).size(), 309u + 1 + 100) << "decimals are bounded";

    EXPECT_EQ(CXMLTextNode("99999999999999999999", kRoman).GetValueAsInteger(), 2147483647);
    EXPECT_EQ(CXMLTextNode("-2.5mm", kRoman).GetValueAsDouble(), -2.5);
}

TEST(CXMLNode, KeysAreMacOSRoman)
{
    const CXMLElementNode roman("Gr\x9A\xA7", kRoman);
    const CXMLElementNode utf8("Gr\xC3\xB6\xC3\x9F", kUtf8);
    EXPECT_TRUE(roman == utf8);
    EXPECT_FALSE(utf8.VerifyKey("gr\x9A\xA7"));
    char key[4];
    EXPECT_STREQ(utf8.GetKey(key, sizeof key), "Gr\x9A") << "cut";
    EXPECT_EQ(Value(CXMLTextNode("a\xE6\x97\xA5\xF0\x9F\x9A\x82z", kUtf8)), "a??z") << "outside the character set";
    ExpectFatal({{"CFStringCreateWithCString\\(\\) failed", [] { CXMLTextNode("\xFF", kUtf8); }}});
}

TEST(CXMLDocument, NodesAreAddedByParentAndByKey)
{
    CXMLDocument document;
    EXPECT_EQ(Written(document), "<?xml version=\"1.0\"?>\n");
    auto* const list =
        UXML::CreateCXMLElementNodeForParentNode(&document, document.GetNodeByKey(CXMLDocument::kRootID), "list");
    auto* const first = UXML::CreateCXMLElementNodeForParentNode(&document, list, "item");
    EXPECT_TRUE(document.AddNode("item", new CXMLTextNode("list", kRoman))); // as a text, the key of another node
    auto* const second = new CXMLElementNode("item", kRoman);
    EXPECT_FALSE(document.AddNode("list", second)) << "two nodes have that key";
    EXPECT_FALSE(document.AddNode("List", second)) << "no node has that key";
    EXPECT_TRUE(document.AddNode(list, second));
    EXPECT_EQ(UXML::CreateCXMLElementNodeForParentNode(&document, second, ""), nullptr);

    EXPECT_EQ(document.GetNodeByKey("list"), list) << "the one added first";
    std::vector<CXMLNode*> nodes = {list};
    document.GetNodesWithKey("item", nodes);
    EXPECT_EQ(nodes, (std::vector<CXMLNode*>{list, first, second}));
    EXPECT_EQ(Written(document), "<?xml version=\"1.0\"?>\n<list>\n\t<item>list</item>\n\t<item />\n</list>\n");

    CXMLTextNode text("text", kRoman);
    ExpectFatal({{"Parent node not a CXMLTreeNode", [&] { document.AddNode(&text, list); }}});
    document.DeleteTree();
    EXPECT_FALSE(document.Write(TestPath("deleted.xml").c_str()));
}

TEST(CXMLDocument, WhatCouldNotBeReadIsNotWritten)
{
    const std::string target = TestPath("target.xml");
    CXMLDocument deep;
    CXMLNode* parent = deep.GetNodeByKey(CXMLDocument::kRootID);
    for (int i = 0; i < 100000; ++i) { // also destroyed without recursion
        auto* const child = new CXMLElementNode("a", kRoman);
        ASSERT_TRUE(deep.AddNode(parent, child));
        parent = child;
        if (i == Bounds::kDeepestXML - 1 || i == Bounds::kDeepestXML) {
            ASSERT_EQ(deep.Write(target.c_str()), i < Bounds::kDeepestXML);
        }
    }
    const std::string old = ReadFile(target);
    const CReports reports;
    EXPECT_FALSE(deep.Write(target.c_str()));
    EXPECT_EQ(ReadFile(target), old);
    const tXMLNode nodes[] = {{eXMLNodeType::kElement, "a"},
                              {eXMLNodeType::kText, std::string(Bounds::kMostXMLBytes, '=')}};
    const tXMLTree large[] = {{&nodes[0], {&large[1]}}, {&nodes[1], {}}};
    std::string bytes;
    EXPECT_FALSE(UXMLFile::Format(large[0], bytes));
    ASSERT_EQ(reports.mMessages.size(), 2u);
    EXPECT_TRUE(reports.mMessages[0].second.starts_with("static bool UXMLFile::Format("));
}

TEST(CXMLDocument, ReadingTakesElementsAndTextsInOrder)
{
    EXPECT_EQ(OutlineOf("<?xml version=\"1.0\"?>\n<!-- c --><a>\n  <b x='1'>one &amp; two</b>\t<!-- <c/> --><d/> "
                        "text <![CDATA[left out]]><?left out?><b> </b>\n</a>\n<!-- end -->\n"),
              "'xml' a(b('one &amp; two') d() ' text ' b())")
        << "comments and texts of white space alone are dropped";
    EXPECT_EQ(OutlineOf("<a>&lt;&gt;&apos;&quot;&#x41;\r\n\xC3\xA4</a>"), "'xml' a('&lt;&gt;&apos;\"A\n\x8A')");
    EXPECT_EQ(OutlineOf("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a>\xE4</a>"), "'xml' a('\x8A')");
    EXPECT_EQ(OutlineOf(std::string("\xFF\xFE<\0a\0>\0\xE4\0<\0/\0a\0>\0", 18)), "'xml' a('\x8A')");
    EXPECT_EQ(OutlineOf("<a><b>" + std::string(1023, 'x') + "</b><c>" + std::string(1024, 'x') + "</c></a>"),
              "'xml' a(b('" + std::string(255, 'x') + "') c())")
        << "longer texts are left out";

    CXMLDocument document;
    const std::string path = WriteTestFile("b\xC3\xA4um.xml", "<a><!-- c --><b x=\"&lt;\">1 &amp; 2</b></a>");
    document.Read(TestPath("b\x8Aum.xml").c_str());
    EXPECT_EQ(Outline(document), "'xml' a(b('1 &amp; 2'))") << "a path in Mac OS Roman";
    EXPECT_EQ(Written(document), "<?xml version=\"1.0\"?>\n<a>\n\t<!-- c -->\n\t<b x=\"&lt;\">1 &amp; 2</b>\n</a>\n")
        << "what nodes do not stand for is written back as well";
    document.Read(FSRef{path});
    EXPECT_EQ(Outline(document), "'xml' a(b('1 &amp; 2')) a(b('1 &amp; 2'))");
}

TEST(CXMLDocument, WhatIsNoDocumentIsRefusedWhole)
{
    const std::string deep = Repeated("<a>", Bounds::kDeepestXML);
    const std::string deepEnd = Repeated("</a>", Bounds::kDeepestXML);
    EXPECT_NE(OutlineOf(deep + deepEnd), "'xml'") << "the limit itself";
    EXPECT_NE(UXMLFile::Parse("<a>" + Repeated("<b/>", Bounds::kMostXMLMarks - 2) + "</a>"), nullptr);
    const std::pair<const char*, std::string> cases[] = {
        {"empty", ""},
        {"no XML", std::string("RSet\0\0\0\2", 8)},
        {"two roots", "<a/><b/>"},
        {"text in front", "x<a/>"},
        {"text behind", "<a/>x"},
        {"crossed tags", "<a><b></a></b>"},
        {"not UTF-8", "<a>\xE4</a>"},
        {"not UTF-8 in a comment", "<a><!-- \xC0\x80 --></a>"},
        {"a zero byte", std::string("<a>x\0</a>", 9) + "<a/>"},
        {"one level too deep", "<a>" + deep + deepEnd + "</a>"},
        {"deep", Repeated("<a>", 150000) + Repeated("</a>", 150000)},
        {"many elements", "<a>" + Repeated("<b/>", Bounds::kMostXMLMarks) + "</a>"},
        {"many nodes", "<a>" + Repeated("<b/>x", Bounds::kMostXMLMarks / 2) + "</a>"},
        {"large", "<a><!--" + std::string(Bounds::kMostXMLBytes, ' ') + "--></a>"},
    };
    for (const auto& [what, bytes] : cases) {
        SCOPED_TRACE(what);
        CXMLDocument document;
        UXML::CreateCXMLElementNodeForParentNode(&document, document.GetNodeByKey(CXMLDocument::kRootID), "kept");
        document.Read(WriteTestFile("read.xml", bytes).c_str());
        EXPECT_EQ(Outline(document), "'xml' kept()") << "the nodes stay";
        const std::string target = WriteTestFile("target.xml", "old");
        EXPECT_FALSE(document.Write(target.c_str()));
        EXPECT_EQ(ReadFile(target), "old");
    }
}

TEST(CXMLDocument, EntitiesAndDeclarationsOfTypesAreNotFollowed)
{
    const std::string secret = WriteTestFile("secret.txt", "SECRET");
    EXPECT_EQ(OutlineOf("<!DOCTYPE a [<!ENTITY x \"ha\"><!ENTITY y \"&x;&x;\">]><a>&y;</a>"), "'xml' a('&amp;y;')");
    EXPECT_EQ(OutlineOf("<!DOCTYPE a [<!ENTITY x SYSTEM \"file://" + secret + "\">]><a>&x;</a>"), "'xml' a('&amp;x;')");
    EXPECT_EQ(OutlineOf("<a><b>&#xD83D;</b><b>&#x110000;</b><b>&#xFFFFFFFFFF;</b><b>&#xE4;</b></a>"),
              "'xml' a(b() b() b() b('\x8A'))")
        << "references to what is no character";
}

TEST(UXML, ValuesOfElements)
{
    CXMLDocument document;
    document.Read(WriteTestFile("values.xml", "<v>nr<nr>7</nr><size>-2.5</size><none/><late><b/>5</late></v>").c_str());
    const auto* const values = static_cast<CXMLTreeNode*>(document.GetNodeByKey("v"));
    char buffer[8] = "";
    EXPECT_FALSE(UXML::GetValueAsStringForElementChildNode(values, "nr", buffer, sizeof buffer))
        << "the first node with that key is a text";
    EXPECT_EQ(UXML::GetValueAsDoubleForElementChildNode(values, "size"), -2.5);
    EXPECT_TRUE(UXML::GetValueAsStringForElementChildNode(values, "size", buffer, sizeof buffer));
    for (const char* key : {"none", "late", "missing"}) {
        EXPECT_FALSE(UXML::GetValueAsStringForElementChildNode(values, key, buffer, sizeof buffer)) << key;
        EXPECT_EQ(UXML::GetValueAsIntegerForElementChildNode(values, key), 0) << key;
    }
    EXPECT_STREQ(buffer, "-2.5") << "left alone";
}
