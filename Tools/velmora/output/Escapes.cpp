#include "output/Escapes.h"

#include "protocol/UTF8.h"

#include <cstdio>

static bool IsHarmful(char32_t character)
{
    return character < 0x20 || (character >= 0x7F && character <= 0x9F) || character == 0x061C || character == 0x200E ||
           character == 0x200F ||                          // direction marks
           (character >= 0x2028 && character <= 0x202E) || // separators; embeddings and overrides of direction
           (character >= 0x2066 && character <= 0x2069);   // isolates
}

std::string Escapes::ForTerminal(std::string_view text)
{
    std::string result;
    char escape[16];
    for (size_t position = 0; position < text.size();) {
        const size_t start = position;
        const char32_t character = UTF8::DecodeNext(text, position);
        if (character == UTF8::kInvalid) {
            snprintf(escape, sizeof escape, "\\x%02X", static_cast<unsigned char>(text[start]));
            result += escape;
        } else if (!IsHarmful(character)) {
            result += text.substr(start, position - start);
        } else if (character == '\n') {
            result += "\\n";
        } else if (character == '\r') {
            result += "\\r";
        } else if (character == '\t') {
            result += "\\t";
        } else {
            snprintf(escape, sizeof escape, character < 0x80 ? "\\x%02X" : "\\u{%X}", static_cast<unsigned>(character));
            result += escape;
        }
    }
    return result;
}

std::string Escapes::ForXML(std::string_view text)
{
    std::string result;
    for (size_t position = 0; position < text.size();) {
        const size_t start = position;
        const char32_t character = UTF8::DecodeNext(text, position);
        switch (character) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        case '\r': // a bare one would come back as a line feed
            result += "&#13;";
            break;
        default:
            if ((character >= 0x20 || character == '\t' || character == '\n') && character != 0xFFFE &&
                character != 0xFFFF && character != UTF8::kInvalid) {
                result += text.substr(start, position - start);
            }
        }
    }
    return result;
}

void Escapes::AppendJSON(std::string& json, std::string_view text)
{
    json += '"';
    size_t done = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        const char character = text[i];
        if (static_cast<unsigned char>(character) >= 0x20 && character != '"' && character != '\\') {
            continue;
        }
        json.append(text, done, i - done);
        done = i + 1;
        static constexpr std::string_view kShort = "\"\\\b\f\n\r\t";
        static constexpr std::string_view kLetters = "\"\\bfnrt";
        const size_t found = kShort.find(character);
        if (found != std::string_view::npos) {
            json += '\\';
            json += kLetters[found];
        } else {
            char escape[8];
            snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(character));
            json += escape;
        }
    }
    json.append(text, done);
    json += '"';
}

static constexpr char kBase64Digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

bool Escapes::FromBase64(std::string_view text, std::string& bytes)
{
    bytes.clear();
    if (text.size() % 4 != 0) {
        return false;
    }
    const size_t padding = text.ends_with("==") ? 2 : text.ends_with("=") ? 1 : 0;
    const std::string_view digits = text.substr(0, text.size() - padding);
    unsigned bits = 0;
    for (size_t i = 0; i < digits.size(); ++i) {
        const size_t digit = std::string_view(kBase64Digits).find(digits[i]);
        if (digit == std::string_view::npos) {
            return false;
        }
        bits = bits << 6 | static_cast<unsigned>(digit);
        if (i % 4 != 0) {
            bytes += static_cast<char>(bits >> (6 - 2 * (i % 4)));
        }
    }
    return Base64(bytes) == text; // also that the bits left over are zeros
}

std::string Escapes::ForURL(std::string_view text)
{
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string escaped;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if ((byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') ||
            std::string_view("-._~/").find(character) != std::string_view::npos) {
            escaped += character;
        } else {
            escaped.append({'%', kDigits[byte >> 4], kDigits[byte & 15]});
        }
    }
    return escaped;
}

std::string Escapes::Base64(std::string_view bytes)
{
    std::string result;
    for (size_t i = 0; i < bytes.size(); i += 3) {
        const std::string_view three = bytes.substr(i, 3);
        unsigned bits = 0;
        for (size_t j = 0; j < 3; ++j) {
            bits = bits << 8 | (j < three.size() ? static_cast<unsigned char>(three[j]) : 0U);
        }
        for (size_t j = 0; j < 4; ++j) {
            result += j <= three.size() ? kBase64Digits[bits >> (18 - 6 * j) & 0x3F] : '=';
        }
    }
    return result;
}
