// Places in a list, by name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

/// Finds the place of a name in a list that keeps the names itself. Small and in one piece: a load asks it for every
/// element, and of some layouts every name is a new one.
class CNameIndex {
public:
    static constexpr size_t kNowhere = SIZE_MAX;

    /// @param nameAt  gives the name at a place
    /// @return the place of that name, or kNowhere
    template <typename tNameAt>
    size_t Find(std::string_view name, tNameAt nameAt) const
    {
        if (mSlots.empty()) {
            return kNowhere;
        }
        const uint32_t hash = HashOf(name);
        for (size_t i = hash; mSlots[i & GetMask()].place != kEmpty; ++i) {
            const tSlot& slot = mSlots[i & GetMask()];
            if (slot.hash == hash && nameAt(slot.place) == name) {
                return slot.place;
            }
        }
        return kNowhere;
    }

    /// Notes the place of a name that is not known yet.
    void Add(std::string_view name, size_t place)
    {
        if ((mUsed + 1) * 4 > mSlots.size() * 3) {
            std::vector<tSlot> old(mSlots.empty() ? kFewestSlots : 2 * mSlots.size());
            old.swap(mSlots);
            for (const tSlot& slot : old) {
                if (slot.place != kEmpty) {
                    Put(slot);
                }
            }
        }
        Put({HashOf(name), static_cast<uint32_t>(place)});
        ++mUsed;
    }

    void Clear()
    {
        mSlots.clear();
        mUsed = 0;
    }

private:
    static constexpr uint32_t kEmpty = UINT32_MAX;
    static constexpr size_t kFewestSlots = 16; ///< a power of two, as all their numbers are

    struct tSlot {
        uint32_t hash = 0;
        uint32_t place = kEmpty;
    };

    static uint32_t HashOf(std::string_view name) { return static_cast<uint32_t>(std::hash<std::string_view>()(name)); }
    size_t GetMask() const { return mSlots.size() - 1; }
    void Put(const tSlot& slot)
    {
        size_t i = slot.hash;
        while (mSlots[i & GetMask()].place != kEmpty) {
            ++i;
        }
        mSlots[i & GetMask()] = slot;
    }

    std::vector<tSlot> mSlots;
    size_t mUsed = 0;
};
