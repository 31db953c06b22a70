#include "CXMLDocument/UXMLFile.h"

#include "Bounds.h"
#include "CheckError/ULog.h"
#include "KVUStr/KVUStr.h"
#include "Platform/Streams.h"

#include <CoreFoundation/CoreFoundation.h>
#include <pugixml.hpp>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

namespace {
/// Everything is kept, so that what was read can be written back; text beside the root element, to be refused.
constexpr unsigned kParseFlags = pugi::parse_default | pugi::parse_comments | pugi::parse_pi | pugi::parse_declaration |
                                 pugi::parse_doctype | pugi::parse_fragment;
constexpr char kIndentation[] = "\t";
constexpr std::string_view kBlanks = " \t\r\n";

bool Refuse(const char* function)
{
    ULog::Warn("%s: XML files may have %zu bytes, %zu tags or nodes and %d levels", function, Bounds::kMostXMLBytes,
               Bounds::kMostXMLMarks, Bounds::kDeepestXML);
    return false;
}

bool IsWithinLimits(const std::string& bytes)
{
    return bytes.size() <= Bounds::kMostXMLBytes &&
           static_cast<size_t>(std::count(bytes.begin(), bytes.end(), '<')) <= Bounds::kMostXMLMarks;
}

/// What the parser lets pass: bytes that are not the encoding's.
bool IsWellEncoded(const std::string& bytes, pugi::xml_encoding encoding)
{
    if (encoding == pugi::encoding_utf8) {
        return bytes.find('\0') == std::string::npos && KVUStr::IsConvertible(bytes, kCFStringEncodingUTF8);
    }
    return encoding != pugi::encoding_latin1 || bytes.find('\0') == std::string::npos;
}

/// The fault at a place of a file of bytes.
tXMLProblem At(const std::string& bytes, size_t offset, std::string text)
{
    offset = std::min(offset, bytes.size());
    const auto end = bytes.begin() + static_cast<std::ptrdiff_t>(offset);
    return {std::move(text), static_cast<size_t>(std::count(bytes.begin(), end, '\n')) + 1, offset};
}

/// The first line with bytes that are not the encoding's.
tXMLProblem FindForeignBytes(const std::string& bytes, pugi::xml_encoding encoding)
{
    size_t begin = 0;
    for (size_t end = 0; end != std::string::npos; begin = end + 1) {
        end = bytes.find('\n', begin);
        if (!IsWellEncoded(bytes.substr(begin, end - begin), encoding)) {
            break;
        }
    }
    return At(bytes, begin, "there are bytes that are no characters in the encoding of the file");
}

/// What the parser lets pass: several root elements, or none, and text beside them.
bool HasOneRoot(const pugi::xml_document& document)
{
    int elements = 0;
    for (const pugi::xml_node node : document) {
        if (node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata) {
            return false;
        }
        elements += node.type() == pugi::node_element ? 1 : 0;
    }
    return elements == 1;
}

class CTreeGuard : public pugi::xml_tree_walker {
public:
    bool for_each(pugi::xml_node&) override
    {
        return depth() < Bounds::kDeepestXML && ++mNodes <= Bounds::kMostXMLMarks;
    }

private:
    size_t mNodes = 0;
};

bool IsWithinLimits(pugi::xml_document& document)
{
    CTreeGuard guard;
    return document.traverse(guard);
}

/// Makes a document of a file's bytes. @return what is wrong with them
tXMLProblem ParseInto(pugi::xml_document& document, const std::string& bytes)
{
    static constexpr char kFunction[] = "static unique_ptr<xml_document> UXMLFile::Parse(const string &)";
    static constexpr char kBeyondLimits[] = "the file is larger, or nested deeper, than is read";
    if (!IsWithinLimits(bytes)) {
        Refuse(kFunction);
        return {kBeyondLimits, 0, 0};
    }
    const pugi::xml_parse_result result = document.load_buffer(bytes.data(), bytes.size(), kParseFlags);
    const bool hasLines = result.encoding == pugi::encoding_utf8 || result.encoding == pugi::encoding_latin1;
    if (!result) {
        std::string reason = result.description();
        reason[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(reason[0])));
        return hasLines ? At(bytes, static_cast<size_t>(std::max<std::ptrdiff_t>(result.offset, 0)), std::move(reason))
                        : tXMLProblem{std::move(reason), 0, 0};
    }
    if (!HasOneRoot(document)) {
        return {"there is not one element around everything else", 0, 0};
    }
    if (!IsWithinLimits(document)) { // before the encoding, which is looked at in a string object made of the file
        Refuse(kFunction);
        return {kBeyondLimits, 0, 0};
    }
    return IsWellEncoded(bytes, result.encoding) ? tXMLProblem() : FindForeignBytes(bytes, result.encoding);
}

class CStringWriter : public pugi::xml_writer {
public:
    explicit CStringWriter(std::string& bytes) : mBytes(bytes) { mBytes.clear(); }
    void write(const void* data, size_t size) override { mBytes.append(static_cast<const char*>(data), size); }

private:
    std::string& mBytes;
};

/// An escaped text as it comes back from the parser unchanged: other parsers and ours would make a line feed of a
/// carriage return and nothing of blanks alone, and control characters are no characters of XML at all.
std::string ReferencesFor(const std::string& text)
{
    const bool isBlank = text.find_first_not_of(kBlanks) == std::string::npos;
    std::string result;
    for (const char c : text) {
        const bool isControl = c >= 0 && c < ' ' && c != '\t' && c != '\n';
        if (isControl || (isBlank && result.empty())) {
            result += "&#" + std::to_string(static_cast<int>(c)) + ";";
        } else {
            result += c;
        }
    }
    return result;
}

pugi::xml_node Append(pugi::xml_node parent, const tXMLNode& node)
{
    switch (node.type) {
    case eXMLNodeType::kElement:
        return parent.append_child(node.text.c_str());
    case eXMLNodeType::kProcessingInstruction: {
        pugi::xml_node declaration = parent.append_child(pugi::node_declaration);
        declaration.set_name(node.text.c_str());
        declaration.append_attribute("version") = "1.0";
        return declaration;
    }
    case eXMLNodeType::kText: {
        pugi::xml_node text = parent.append_child(pugi::node_pcdata);
        text.set_value(ReferencesFor(node.text).c_str());
        return text;
    }
    case eXMLNodeType::kDocument:
        break;
    }
    return parent;
}
} // namespace

bool UXMLFile::ReadBytes(const std::string& path, std::string& bytes)
{
    const Platform::CInputFile file(path);
    if (file.Get() == nullptr) {
        return false;
    }
    bytes.clear();
    char block[16384];
    while (bytes.size() <= Bounds::kMostXMLBytes) {
        const size_t count =
            fread(block, 1, std::min(sizeof block, Bounds::kMostXMLBytes + 1 - bytes.size()), file.Get());
        if (count == 0) {
            break;
        }
        bytes.append(block, count);
    }
    return ferror(file.Get()) == 0;
}

std::unique_ptr<pugi::xml_document> UXMLFile::Parse(const std::string& bytes)
{
    auto document = std::make_unique<pugi::xml_document>();
    return ParseInto(*document, bytes).text.empty() ? std::move(document) : nullptr;
}

tXMLProblem UXMLFile::FindProblem(const std::string& bytes)
{
    pugi::xml_document document;
    return ParseInto(document, bytes);
}

bool UXMLFile::Format(const pugi::xml_document& document, std::string& bytes)
{
    CStringWriter writer(bytes);
    document.save(writer, kIndentation, pugi::format_default, pugi::encoding_utf8);
    return IsWithinLimits(bytes) || Refuse("static bool UXMLFile::Format(const xml_document &, string &)");
}

bool UXMLFile::Format(const tXMLTree& tree, std::string& bytes)
{
    pugi::xml_document document;
    std::vector<std::pair<const tXMLTree*, pugi::xml_node>> pending = {{&tree, document}};
    while (!pending.empty()) {
        const auto [parent, node] = pending.back();
        pending.pop_back();
        // A node's children are appended all at once, so that the order of the pending nodes does not matter.
        for (const tXMLTree* const child : parent->children) {
            pending.emplace_back(child, Append(node, *child->node));
        }
    }
    if (IsWithinLimits(document)) {
        CStringWriter writer(bytes);
        document.save(writer, kIndentation, pugi::format_indent | pugi::format_no_escapes, pugi::encoding_utf8);
        if (IsWithinLimits(bytes)) {
            return true;
        }
    }
    return Refuse("static bool UXMLFile::Format(const tXMLTree &, string &)");
}
