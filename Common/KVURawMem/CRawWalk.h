// Measures raw memory before anything is fetched from it.
#pragma once

#include <cstddef>
#include <cstring>

/// Walks over raw memory of limited size. A step that would leave it answers false and is not taken.
class CRawWalk {
public:
    /// @param raw  the memory; not owned
    CRawWalk(const void* raw, size_t size) : mBegin(static_cast<const char*>(raw)), mSize(size) {}

    bool Skip(size_t count)
    {
        if (count > mSize - mAt) {
            return false;
        }
        mAt += count;
        return true;
    }

    template <typename tNumber>
    bool Read(tNumber& number)
    {
        const size_t at = mAt;
        if (!Skip(sizeof number)) {
            return false;
        }
        std::memcpy(&number, mBegin + at, sizeof number);
        return true;
    }

    /// Skips a count and that many things of `each` bytes.
    template <typename tCount>
    bool SkipCounted(size_t each)
    {
        tCount count = 0;
        return Read(count) && count >= 0 && Skip(static_cast<size_t>(count) * each);
    }

    size_t GetPosition() const { return mAt; }

private:
    const char* mBegin;
    size_t mSize;
    size_t mAt = 0;
};
