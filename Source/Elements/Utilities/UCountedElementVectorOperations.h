// Operations on lists of counted elements.
#pragma once

#include <vector>

class CCountedCIG;

/// Keeps lists of counted elements; the lists own their entries.
class UCountedElementVectorOperations {
public:
    UCountedElementVectorOperations() = delete;

    using tList = std::vector<CCountedCIG*>;

    /// @return the first entry of that name, byte for byte, or null
    static CCountedCIG* FindElement(const tList& list, const char* name);
    /// Destroys and removes the entries with count 0.
    static void ClearZeroCountElements(tList& list);
    /// Destroys every entry and empties the list.
    static void EraseAll(tList& list);
    /// Appends a copy of every entry.
    static void Copy(const tList& source, tList& target);
    /// Sum of all counts, clamped to 32 bits.
    static int GetSumOfAllElements(const tList& list);
    /// Prints the list for developers; the label may be null.
    static void Dump(const tList& list, const char* label);
};
