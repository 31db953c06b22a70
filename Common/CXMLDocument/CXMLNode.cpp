#include "CXMLDocument/CXMLNode.h"

#include "CheckError/CErr.h"
#include "KVUStr/KVUStr.h"
#include "Platform/MacRoman.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

namespace {
/// Number of bytes of a character by its first one, in well-formed UTF-8.
size_t LengthOfCharacter(char first)
{
    const auto byte = static_cast<unsigned char>(first);
    return byte < 0x80 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
}

/// The text in Mac OS Roman, with "?" for each character outside that set.
std::string RomanOf(const std::string& utf8)
{
    std::string roman;
    if (Platform::Utf8ToMacRoman(utf8, roman)) {
        return roman;
    }
    for (size_t i = 0; i < utf8.size();) {
        const std::string character = utf8.substr(i, LengthOfCharacter(utf8[i]));
        std::string converted = "?";
        Platform::Utf8ToMacRoman(character, converted);
        roman += converted;
        i += character.size();
    }
    return roman;
}
} // namespace

CFStringRef CXMLNode::GetKey() const
{
    if (!mKey && mNode) {
        mKey.reset(CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(mNode->text.data()),
                                           static_cast<CFIndex>(mNode->text.size()), kCFStringEncodingUTF8, false));
    }
    return mKey.get();
}

char* CXMLNode::GetKey(char* buffer, int size) const
{
    if (mNode && size > 0) {
        KVUStr::strncpy(buffer, RomanOf(mNode->text).c_str(), static_cast<unsigned long>(size));
    }
    return buffer;
}

bool CXMLNode::VerifyKey(const char* key) const
{
    char own[kKeySize] = "";
    return key != nullptr && std::strcmp(GetKey(own, sizeof own), key) == 0;
}

bool CXMLNode::operator==(const CXMLNode& other) const
{
    return mNode && other.mNode && mNode->text == other.mNode->text;
}

void CXMLNode::Create(eXMLNodeType type, std::string text, const char* function)
{
    mNode.reset(new (std::nothrow) tXMLNode{type, std::move(text)});
    CErr::CheckNull(mNode.get(), function, "CFXMLNodeCreate() failed");
    mTree.reset(new (std::nothrow) tXMLTree{mNode.get(), {}});
    CErr::CheckNull(mTree.get(), function, "CFXMLTreeCreateWithNode() failed");
}

bool CXMLNode::ConvertText(const char* text, CFStringEncoding encoding, std::string& utf8)
{
    const std::string_view bytes = text;
    const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    if (encoding != kCFStringEncodingUnicode && std::all_of(bytes.begin(), bytes.end(), isAscii)) {
        utf8 = bytes; // nearly every text: no need to make a string object
        return true;
    }
    const Platform::tReleased<CFStringRef> string(CFStringCreateWithCString(kCFAllocatorDefault, text, encoding));
    return KVUStr::GetText(string.get(), kCFStringEncodingUTF8, utf8);
}

std::string CXMLNode::MakeText(const char* text, CFStringEncoding encoding, const char* function)
{
    std::string utf8;
    const bool isWellFormed = ConvertText(text, encoding, utf8);
    CErr::CheckNull(isWellFormed ? text : nullptr, function, "CFStringCreateWithCString() failed");
    return utf8;
}
