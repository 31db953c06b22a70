// How far a document reaches.
#pragma once

#include "KVURawMem/KVURawMem.h"

#include <algorithm>
#include <cmath>

/// Numbers that a document can hold: an integer part of 32 bits. Loads give no others. What comes from elsewhere
/// (editing, the clipboard) is brought within them as saving would, so that no geometry ever meets a number that is not
/// finite or whose square overflows.
class UReach {
public:
    UReach() = delete;

    static constexpr double kFarthest = 2147483647.0;

    /// The nearest number that can be stored; 0 for one that is none.
    static double Clamp(double value) { return std::isnan(value) ? 0.0 : std::clamp(value, -kFarthest, kFarthest); }

    /// Fetches a double from raw memory and clamps it. @return the cursor behind it
    template <class tMemory>
    static tMemory* Fetch(tMemory* cursor, double& value)
    {
        cursor = KVURawMem::FetchDataFromRawMem(cursor, value);
        value = Clamp(value);
        return cursor;
    }
};
