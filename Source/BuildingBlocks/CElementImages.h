// Elements as they were, in few bytes.
#pragma once

#include "CBlockPool/CBlockPool.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

class CCompositeGeometry;
class CCountedCIG;

/// Keeps what a copy of an element would hold without making the copy, which takes five times the memory. Elements of a
/// layout have much in common, so an image keeps only the words that differ from the first element's.
class CElementImages {
public:
    struct tRelease {
        size_t size = 0;
        void operator()(unsigned char* bytes) const { CBlockPool::Release(bytes, size); }
    };
    /// One image; means something only to the object that made it.
    using tImage = std::unique_ptr<unsigned char[], tRelease>;

    /// Makes an image, with the unique ID that a copy would get now. All components must be of kinds that an element
    /// can load.
    tImage Keep(CCompositeGeometry& element);
    /// The copy that would have been made, with its ID. @return an entry that the caller owns
    std::unique_ptr<CCountedCIG> Restore(const tImage& image, int count);
    /// The element's name.
    static const char* NameOf(const tImage& image) { return reinterpret_cast<const char*>(image.get()); }
    /// Forgets all images: none of them can be restored any more.
    void Clear() { mFirst.clear(); }

private:
    std::vector<uint64_t> mFirst;      ///< words of the first element
    std::vector<unsigned char> mBytes; ///< an image at full length
    std::vector<unsigned char> mMask;  ///< which of its words differ
};
