// Checks element records, which layouts and track libraries share.
#pragma once

#include "Checks/CRecordChecker.h"
#include "Formats/ElementFormat.h"

#include <string>
#include <unordered_set>

/// Checks elements one after the other.
class CElementChecker {
public:
    /// What an element's header looks like where a record's key is expected.
    static constexpr int kHeaderKey = ElementFormat::kMagic >> 16;

    /// @param layers  names that elements may refer to; null where elements have no layers
    CElementChecker(CRecordChecker& records, const std::unordered_set<std::string>* layers)
        : mRecords(records), mLayers(layers)
    {}

    /// Checks the records of `count` elements, as far as there are, and what follows them as far as it is elements.
    /// @param endKey  key of the record behind the elements; 0 for the end of the file
    /// @param countOffset  where the record with the count begins
    /// @param countKey     and its key
    void CheckElements(int count, int endKey, size_t countOffset, int countKey);

private:
    void CheckElement();
    void CheckComponents(int count, size_t countOffset);
    void CheckComponent();
    void CheckOwnRecords(int type);
    void CheckPoints();
    bool IsAtElement() const { return mRecords.PeekWord() == ElementFormat::kMagic; }

    CRecordChecker& mRecords;
    const std::unordered_set<std::string>* mLayers;
    int mEndKey = 0; ///< of the record behind the elements; 0 where the file ends
};
