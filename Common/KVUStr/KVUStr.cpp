#include "KVUStr/KVUStr.h"

#include "CheckError/CErr.h"
#include "Platform/Released.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

using tString = Platform::tReleased<CFStringRef>;

namespace {
// Not <cctype>: its answers change with the locale that preferences and property lists may set.
bool IsWhitespace(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

char ToUpper(char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

char ToLower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool IsLetter(char c)
{
    return ToUpper(c) >= 'A' && ToUpper(c) <= 'Z';
}

std::string Lowered(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), ToLower);
    return text;
}

/// Copies into a buffer of `size` bytes, cut to it and terminated.
void CopyCut(char* dst, const std::string& text, size_t size)
{
    if (size == 0) {
        return;
    }
    const size_t count = std::min(text.size(), size - 1);
    memcpy(dst, text.data(), count);
    dst[count] = '\0';
}

/// A Core Foundation string of a text that is UTF-8 or else Mac OS Roman; null when it is neither.
tString CreateString(const char* text)
{
    tString string(CFStringCreateWithCString(kCFAllocatorDefault, text, kCFStringEncodingUTF8));
    if (!string) {
        string.reset(CFStringCreateWithCString(kCFAllocatorDefault, text, kCFStringEncodingMacRoman));
    }
    return string;
}
} // namespace

void KVUStr::strncpy(char* dst, const char* src, unsigned long n)
{
    if (n == 0) {
        return;
    }
    const size_t length = strnlen(src, n - 1);
    memmove(dst, src, length);
    memset(dst + length, 0, n - length);
}

void KVUStr::HexChar_Encode(char* dst, const char* src, size_t size)
{
    std::string result;
    for (; *src != '\0'; ++src) {
        char digits[16];
        snprintf(digits, sizeof digits, "%2X", static_cast<unsigned>(static_cast<signed char>(*src)));
        result += digits;
    }
    CopyCut(dst, result, size);
}

void KVUStr::HexChar_Decode(const char* src, char* dst, size_t size)
{
    std::string result;
    const size_t count = strlen(src) / 2;
    for (size_t i = 0; i < count; ++i) {
        const char pair[3] = {src[2 * i], src[2 * i + 1], '\0'};
        const char character = static_cast<char>(strtoul(pair, nullptr, 16)); // skips a blank before a single digit
        if (character != '\0') {
            result += character;
        }
    }
    CopyCut(dst, result, size);
}

void KVUStr::ReplaceChars(char* text, char from, char to)
{
    std::replace(text, text + strlen(text), from, to);
}

int KVUStr::ReplaceStrings(char* text, const char* find, const char* replace, bool ignoreCase, size_t size)
{
    if (*find == '\0') {
        return 0;
    }
    std::string result = text;
    std::string searched = ignoreCase ? Lowered(result) : result;
    const std::string pattern = ignoreCase ? Lowered(find) : find;
    const std::string replacement = replace;
    int count = 0;
    size_t position = searched.find(pattern);
    while (position != std::string::npos) {
        result.replace(position, pattern.size(), replacement);
        searched.replace(position, pattern.size(), replacement);
        ++count;
        const size_t next = searched.find(pattern);
        // A match that begins before the end of the replacement is made of it: replacing that one may never end.
        if (next < position + replacement.size()) {
            break;
        }
        position = next;
    }
    CopyCut(text, result, size);
    return count;
}

int KVUStr::CountCharOccurance(const char* text, char character)
{
    return static_cast<int>(std::count(text, text + strlen(text), character));
}

void KVUStr::strupr(char* text)
{
    std::transform(text, text + strlen(text), text, ToUpper);
}

void KVUStr::strlwr(char* text)
{
    std::transform(text, text + strlen(text), text, ToLower);
}

char* KVUStr::fgetline(char* buffer, int size, FILE* stream)
{
    if (stream == nullptr || size <= 0) {
        return nullptr;
    }
    int count = 0;
    for (int c = getc(stream); c != EOF && c != '\n' && c != '\r'; c = getc(stream)) {
        buffer[count++] = static_cast<char>(c);
        if (count == size) {
            buffer[size - 1] = '\0';
            constexpr int kLargestCode = std::numeric_limits<short>::max();
            CErr::MinorError(static_cast<short>(std::min(count, kLargestCode)),
                             "static char *KVUStr::fgetline(char *, int, FILE *)", "Line too long");
            return buffer;
        }
    }
    buffer[count] = '\0';
    return buffer;
}

const char* KVUStr::GetCStrFromCFStr(CFStringRef text, unsigned encoding)
{
    static char sBuffer[1024];
    if (text == nullptr) {
        return nullptr;
    }
    if (const char* const own = CFStringGetCStringPtr(text, encoding)) {
        return own;
    }
    return CFStringGetCString(text, sBuffer, sizeof sBuffer, encoding) ? sBuffer : nullptr;
}

bool KVUStr::GetText(CFStringRef text, unsigned encoding, std::string& out)
{
    if (text == nullptr) {
        return false;
    }
    std::string converted(static_cast<size_t>(CFStringGetMaximumSizeForEncoding(CFStringGetLength(text), encoding)) + 1,
                          '\0');
    if (!CFStringGetCString(text, converted.data(), static_cast<CFIndex>(converted.size()), encoding)) {
        return false;
    }
    out = converted.c_str();
    return true;
}

bool KVUStr::IsConvertible(const std::string& text, unsigned encoding)
{
    return tString(CFStringCreateWithCString(kCFAllocatorDefault, text.c_str(), encoding)) != nullptr;
}

void KVUStr::CStr2UniChar(const char* text, char* out, int size, int& length)
{
    const tString string(CFStringCreateWithCString(kCFAllocatorDefault, text, kCFStringEncodingUTF8));
    CErr::CheckNull(string.get(), "static void KVUStr::CStr2UniChar(const char *, char *, int, int &)",
                    "Failed to create CFStringRef");
    if (CFStringGetCString(string.get(), out, size, kCFStringEncodingUnicode)) {
        length = static_cast<int>(CFStringGetLength(string.get()));
    } else {
        length = 0;
        if (size > 0) {
            out[0] = '\0';
        }
    }
}

bool KVUStr::CStr2HFSUniStr(const char* text, HFSUniStr255* out)
{
    out->length = 0;
    const tString string(CFStringCreateWithCString(kCFAllocatorDefault, text, kCFStringEncodingMacRoman));
    if (!string) {
        return false;
    }
    const bool fits = CFStringGetCString(string.get(), reinterpret_cast<char*>(out->unicode), sizeof out->unicode,
                                         kCFStringEncodingUnicode) != 0;
    if (fits) {
        out->length = static_cast<uint16_t>(CFStringGetLength(string.get()));
    }
    return fits;
}

int KVUStr::CompareStrings(const char* a, const char* b)
{
    const tString first = CreateString(a);
    const tString second = CreateString(b);
    return first && second ? static_cast<int>(CFStringCompare(first.get(), second.get(), 0)) : 0;
}

void KVUStr::CorrectCase(std::string& text)
{
    bool atBreak = true;
    for (char& c : text) {
        c = atBreak ? ToUpper(c) : ToLower(c);
        atBreak = IsWhitespace(c) || c == '-' || c == ',' || c == '.' || c == '\'';
    }
}

void KVUStr::ClearLeadingWhitespace(std::string& text)
{
    text.erase(text.begin(), std::find_if_not(text.begin(), text.end(), IsWhitespace));
}

bool KVUStr::ContainsLetters(const std::string& text)
{
    return std::any_of(text.begin(), text.end(), IsLetter);
}
