// Byte order of the platform structures that layout files store raw.
#pragma once

#include "CColor/RGBColor.h"
#include "CRect/Rect.h"

#include <bit>
#include <cstdint>

/// Converts in place between the big-endian order of files and the order of this machine.
class KVUByteOrdering {
public:
    static void SwapBigToHost(RGBColor& color)
    {
        Swap(color.red);
        Swap(color.green);
        Swap(color.blue);
    }

    static void SwapBigToHost(Rect& rect)
    {
        Swap(rect.top);
        Swap(rect.left);
        Swap(rect.bottom);
        Swap(rect.right);
    }

    /// As bits: in the wrong order the value is not a number anyone may compute with.
    static void SwapBigToHost(float& value)
    {
        if constexpr (std::endian::native == std::endian::little) {
            value = std::bit_cast<float>(__builtin_bswap32(std::bit_cast<uint32_t>(value)));
        }
    }

    static void SwapHostToBig(RGBColor& color) { SwapBigToHost(color); }
    static void SwapHostToBig(Rect& rect) { SwapBigToHost(rect); }
    static void SwapHostToBig(float& value) { SwapBigToHost(value); }

private:
    template <class tValue>
    static void Swap(tValue& value)
    {
        static_assert(sizeof(tValue) == 2);
        if constexpr (std::endian::native == std::endian::little) {
            value = static_cast<tValue>(__builtin_bswap16(static_cast<uint16_t>(value)));
        }
    }
};
