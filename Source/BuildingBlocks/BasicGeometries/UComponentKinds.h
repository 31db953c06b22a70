// The kinds of components, one row each.
#pragma once

#include <memory>

class CBasicGeometry;
class CRawWalk;

/// Type codes of components, in files and in raw memory.
enum eComponentType : int {
    kStraightType = 1,
    kCurveType = 2,
    kPolyType = 3,
    kTextType = 4,
    kOvalType = 5,
    kFlexTrackType = 6
};

/// What can be told of a component by its type code alone.
struct tComponentKind {
    eComponentType type;
    const char* name; ///< for people
    bool isTrack;
    bool isPolygon; ///< by its class
    bool hasJoints; ///< that may be connected; otherwise both are disabled by every load
    /// Makes one with its defaults, to be loaded from a file.
    std::unique_ptr<CBasicGeometry> (*makeEmpty)();
    /// Makes one from the raw record behind its type code.
    std::unique_ptr<CBasicGeometry> (*makeFromRaw)(void* raw);
    /// Skips such a record. @return false when it is cut short
    bool (*skipRaw)(CRawWalk& walk);
};

/// The table of all kinds. A new kind is its class, its row here, its renderer (CComponentRenderer::Find) and its
/// records (Formats/ComponentFormat.h).
class UComponentKinds {
public:
    UComponentKinds() = delete;

    static constexpr int kCount = kFlexTrackType;

    /// The row of a type code, or null for a code that no document knows.
    static const tComponentKind* Find(int type)
    {
        const unsigned row = static_cast<unsigned>(type) - 1;
        return row < static_cast<unsigned>(kCount) ? &sKinds[row] : nullptr;
    }

private:
    static const tComponentKind sKinds[kCount]; ///< in the order of their codes, from 1 on
};

/// Whether a component of this type is a polygon by its class; a flexible track is one.
inline bool IsPolygonType(int type)
{
    const tComponentKind* kind = UComponentKinds::Find(type);
    return kind != nullptr && kind->isPolygon;
}

/// Whether a component of this type is track.
inline bool IsTrackType(int type)
{
    const tComponentKind* kind = UComponentKinds::Find(type);
    return kind != nullptr && kind->isTrack;
}
