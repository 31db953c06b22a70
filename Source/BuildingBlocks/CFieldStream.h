// The fields of objects as bytes in memory.
#pragma once

#include "CPoint/CPoint.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

/// Takes fields down as bytes, or gives them back: a class lists its fields once, for both ways. Host byte order, every
/// value exactly as it was; not a form for files.
class CFieldStream {
public:
    enum class eDirection { kTake, kGive };

    /// @param bytes  overwritten and grown as needed, or read; not owned. Read are bytes that the same list of
    ///               fields has taken.
    CFieldStream(std::vector<unsigned char>& bytes, eDirection direction)
        : mBytes(bytes), mGives(direction == eDirection::kGive)
    {}

    bool Gives() const { return mGives; }
    /// How many of the bytes are in use so far.
    size_t GetSize() const { return mAt; }

    template <typename... tFields>
    void Pass(tFields&... fields)
    {
        (PassOne(fields), ...);
    }

    /// Goes on at the next multiple of eight bytes, so that equal fields of two objects lie alike.
    void Align()
    {
        uint64_t filler = 0;
        PassBytes(&filler, (kAlignment - mAt % kAlignment) % kAlignment);
    }

private:
    static constexpr size_t kAlignment = sizeof(uint64_t);

    template <typename tField>
    void PassOne(tField& field)
    {
        static_assert(std::is_trivially_copyable_v<tField>);
        // A pointer, to the layer, passes as it is.
        PassBytes(&field, sizeof field); // NOLINT(bugprone-sizeof-expression)
    }
    void PassOne(CPoint& point) { Pass(point.x, point.y, point.z); }
    void PassOne(std::string& text)
    {
        size_t size = text.size();
        PassOne(size);
        text.resize(size);
        PassBytes(text.data(), size);
    }
    void PassOne(std::vector<CPoint>& points)
    {
        size_t size = points.size();
        PassOne(size);
        points.resize(size);
        MakeRoom(size * 3 * sizeof(double));
        for (CPoint& point : points) {
            PassOne(point);
        }
    }

    void MakeRoom(size_t size)
    {
        constexpr size_t kMore = 1024; // for what comes behind it
        if (size > mBytes.size() - mAt) {
            mBytes.resize(std::max(mAt + size + kMore, mAt + mAt / 2));
        }
    }

    void PassBytes(void* field, size_t size)
    {
        if (mGives) {
            std::memcpy(field, mBytes.data() + mAt, size);
        } else {
            MakeRoom(size);
            std::memcpy(mBytes.data() + mAt, field, size);
        }
        mAt += size;
    }

    std::vector<unsigned char>& mBytes;
    bool mGives;
    size_t mAt = 0;
};
