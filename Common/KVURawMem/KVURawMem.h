// Fields of raw memory records, as they lie on the clipboard.
#pragma once

#include "CColor/RGBColor.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>

/// Appends fields to a raw memory block and fetches them back: packed, host byte order, at any alignment. Each
/// operation returns the cursor behind the field. Nothing is checked: the caller sizes the block beforehand.
///
/// Widths in bytes: double 8, int 4, bool 1, RGBColor 6, a character array its given length, a std::string 2 for its
/// length and then its characters without a terminator. The cursors of Fetch may point to const memory or not.
class KVURawMem {
public:
    static void* AppendDataToRawMem(void* cursor, double value) { return Append(cursor, &value, sizeof value); }
    static void* AppendDataToRawMem(void* cursor, int value) { return Append(cursor, &value, sizeof value); }
    static void* AppendDataToRawMem(void* cursor, bool value) { return Append(cursor, &value, sizeof value); }
    static void* AppendDataToRawMem(void* cursor, const RGBColor& value)
    {
        return Append(cursor, &value, sizeof value);
    }
    static void* AppendDataToRawMem(void* cursor, const char* characters, size_t count)
    {
        return Append(cursor, characters, count);
    }
    /// A length above 65535 is cut to its low 16 bits, and the text with it.
    static void* AppendDataToRawMem(void* cursor, const std::string& text)
    {
        const uint16_t length = static_cast<uint16_t>(text.size());
        return Append(Append(cursor, &length, sizeof length), text.data(), length);
    }
    /// A pointer alone would silently become a bool.
    static void* AppendDataToRawMem(void* cursor, const void* pointer) = delete;

    template <class tMemory>
    static tMemory* FetchDataFromRawMem(tMemory* cursor, double& value)
    {
        return Fetch(cursor, &value, sizeof value);
    }
    template <class tMemory>
    static tMemory* FetchDataFromRawMem(tMemory* cursor, int& value)
    {
        return Fetch(cursor, &value, sizeof value);
    }
    /// Any byte but 0 is true.
    template <class tMemory>
    static tMemory* FetchDataFromRawMem(tMemory* cursor, bool& value)
    {
        unsigned char byte = 0;
        tMemory* const next = Fetch(cursor, &byte, sizeof byte);
        value = byte != 0;
        return next;
    }
    template <class tMemory>
    static tMemory* FetchDataFromRawMem(tMemory* cursor, RGBColor& value)
    {
        return Fetch(cursor, &value, sizeof value);
    }
    /// Terminates nothing: a text comes back as it was appended.
    template <class tMemory>
    static tMemory* FetchDataFromRawMem(tMemory* cursor, char* characters, size_t count)
    {
        return Fetch(cursor, characters, count);
    }
    template <class tMemory>
    static tMemory* FetchDataFromRawMem(tMemory* cursor, std::string& text)
    {
        uint16_t length = 0;
        cursor = Fetch(cursor, &length, sizeof length);
        text.resize(length);
        return Fetch(cursor, text.data(), length);
    }

    /// Bytes that AppendDataToRawMem writes for the text.
    static size_t RawMemSize(const std::string& text) { return static_cast<uint16_t>(text.size()) + sizeof(uint16_t); }

private:
    static void* Append(void* cursor, const void* data, size_t count)
    {
        if (count != 0) {
            std::memcpy(cursor, data, count);
        }
        return static_cast<char*>(cursor) + count;
    }

    template <class tMemory>
    static tMemory* Fetch(tMemory* cursor, void* data, size_t count)
    {
        static_assert(std::is_void_v<tMemory>, "cursors are void* or const void*");
        if (count != 0) {
            std::memcpy(data, cursor, count);
        }
        using tByte = std::conditional_t<std::is_const_v<tMemory>, const char, char>;
        return static_cast<tByte*>(cursor) + count;
    }
};
