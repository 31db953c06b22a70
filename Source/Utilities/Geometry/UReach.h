// How far a document reaches.
#pragma once

#include "CPoint/CPoint.h"
#include "KVURawMem/KVURawMem.h"

#include <algorithm>
#include <cmath>

/// Numbers that a document can hold: an integer part of 32 bits. Loads give no others. What comes from elsewhere
/// (editing, the clipboard) is brought within them as saving would, so that no geometry ever meets a number that is not
/// finite, or whose square is not.
class UReach {
public:
    UReach() = delete;

    static constexpr double kFarthest = 2147483647.0;

    /// Less than this is nothing. It lies far below what is stored, and far above where squares become 0.
    static constexpr double kNothing = 1e-30;

    /// The nearest number that can be stored; 0 for one that is none, or next to nothing.
    static double Clamp(double value)
    {
        // NaN is neither above nor below.
        return std::fabs(value) >= kNothing ? std::clamp(value, -kFarthest, kFarthest) : 0.0;
    }

    static CPoint Clamp(const CPoint& point) { return {Clamp(point.x), Clamp(point.y), Clamp(point.z)}; }

    /// Fetches a double from raw memory and clamps it. @return the cursor behind it
    template <class tMemory>
    static tMemory* Fetch(tMemory* cursor, double& value)
    {
        cursor = KVURawMem::FetchDataFromRawMem(cursor, value);
        value = Clamp(value);
        return cursor;
    }
};
