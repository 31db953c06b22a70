// Values as the data of a record of fixed size holds them.
#pragma once

#include "CColor/RGBColor.h"
#include "CRect/Rect.h"
#include "CTaggedFile/BigEndian.h"
#include "KVUByteOrdering/KVUByteOrdering.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace RecordData {
inline void Decode(const unsigned char* bytes, bool& value)
{
    value = *bytes != 0;
}

inline void Decode(const unsigned char* bytes, char& value)
{
    value = static_cast<char>(*bytes);
}

inline void Decode(const unsigned char* bytes, int& value)
{
    value = BigEndian::Signed32(bytes);
}

inline void Decode(const unsigned char* bytes, double& value)
{
    value = BigEndian::FixedPoint(bytes);
}

inline void Decode(const unsigned char* bytes, float& value)
{
    value = std::bit_cast<float>(BigEndian::Unsigned32(bytes));
}

inline void Decode(const unsigned char* bytes, RGBColor& color)
{
    std::memcpy(&color, bytes, sizeof color);
    KVUByteOrdering::SwapBigToHost(color);
}

inline void Decode(const unsigned char* bytes, Rect& rect)
{
    std::memcpy(&rect, bytes, sizeof rect);
    KVUByteOrdering::SwapBigToHost(rect);
}

template <size_t kCount>
void Decode(const unsigned char* bytes, float (&values)[kCount])
{
    for (size_t i = 0; i < kCount; ++i) {
        Decode(bytes + i * sizeof(float), values[i]);
    }
}

inline void Encode(bool value, unsigned char* bytes)
{
    *bytes = value ? 1 : 0;
}

inline void Encode(char value, unsigned char* bytes)
{
    *bytes = static_cast<unsigned char>(value);
}

inline void Encode(int value, unsigned char* bytes)
{
    BigEndian::StoreUnsigned32(static_cast<uint32_t>(value), bytes);
}

inline void Encode(double value, unsigned char* bytes)
{
    BigEndian::StoreFixedPoint(value, bytes);
}

inline void Encode(float value, unsigned char* bytes)
{
    BigEndian::StoreUnsigned32(std::bit_cast<uint32_t>(value), bytes);
}

inline void Encode(RGBColor color, unsigned char* bytes)
{
    KVUByteOrdering::SwapHostToBig(color);
    std::memcpy(bytes, &color, sizeof color);
}

inline void Encode(Rect rect, unsigned char* bytes)
{
    KVUByteOrdering::SwapHostToBig(rect);
    std::memcpy(bytes, &rect, sizeof rect);
}

template <size_t kCount>
void Encode(const float (&values)[kCount], unsigned char* bytes)
{
    for (size_t i = 0; i < kCount; ++i) {
        Encode(values[i], bytes + i * sizeof(float));
    }
}

template <typename tValue>
concept cFixed = requires(const unsigned char* from, unsigned char* to, tValue& value)
{
    Decode(from, value);
    Encode(value, to);
};

/// Bytes of such a value; the two words of a double are as many as it has in memory.
template <cFixed tValue>
constexpr size_t kSize = sizeof(tValue);
} // namespace RecordData
