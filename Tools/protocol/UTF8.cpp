#include "protocol/UTF8.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace UTF8 {
char32_t DecodeNext(std::string_view text, size_t& position)
{
    const auto byteAt = [&](size_t index) { return static_cast<unsigned char>(text[index]); };
    const unsigned char first = byteAt(position);
    const size_t start = position++;
    if (first < 0x80) {
        return first;
    }
    size_t following = 0;
    char32_t character = 0;
    char32_t smallest = 0; // what a sequence of this length is for; less would be an overlong form
    if ((first & 0xE0) == 0xC0) {
        following = 1;
        character = first & 0x1F;
        smallest = 0x80;
    } else if ((first & 0xF0) == 0xE0) {
        following = 2;
        character = first & 0x0F;
        smallest = 0x800;
    } else if ((first & 0xF8) == 0xF0) {
        following = 3;
        character = first & 0x07;
        smallest = 0x10000;
    } else {
        return kInvalid;
    }
    if (text.size() - start <= following) {
        return kInvalid;
    }
    for (size_t i = 1; i <= following; ++i) {
        const unsigned char next = byteAt(start + i);
        if ((next & 0xC0) != 0x80) {
            return kInvalid;
        }
        character = (character << 6) | (next & 0x3F);
    }
    if (character < smallest || character > 0x10FFFF || (character >= 0xD800 && character <= 0xDFFF)) {
        return kInvalid;
    }
    position = start + following + 1;
    return character;
}

bool IsValid(std::string_view text)
{
    for (size_t position = 0; position < text.size();) {
        uint64_t eight = 0;
        if (text.size() - position >= sizeof eight) { // most texts are plain: many bytes at once
            memcpy(&eight, text.data() + position, sizeof eight);
            if ((eight & 0x8080808080808080) == 0) {
                position += sizeof eight;
                continue;
            }
        }
        if (DecodeNext(text, position) == kInvalid) {
            return false;
        }
    }
    return true;
}

std::string MakeValid(std::string_view text)
{
    std::string result;
    for (size_t position = 0; position < text.size();) {
        const size_t start = position;
        if (DecodeNext(text, position) == kInvalid) {
            result += "\uFFFD";
        } else {
            result += text.substr(start, position - start);
        }
    }
    return result;
}

size_t CountCharacters(std::string_view text)
{
    return static_cast<size_t>(std::count_if(
        text.begin(), text.end(), [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }));
}
} // namespace UTF8
