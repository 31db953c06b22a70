#include "BuildingBlocks/CElementImages.h"

#include "BuildingBlocks/CCountedCIG.h"
#include "BuildingBlocks/CFieldStream.h"

#include <algorithm>
#include <cstring>

namespace {
constexpr size_t kWord = sizeof(uint64_t);
/// Words of the first element that others are compared with: attributes and a component or two. (It may have millions
/// of points.)
constexpr size_t kMostCompared = 128;
/// Room for an image that is held for the next one.
constexpr size_t kMostHeld = 1 << 16;

size_t MaskSize(uint32_t words)
{
    return (size_t{words} + 7) / 8;
}
} // namespace

// An image: the name with its zero, number of words (32 bits), a bit for each word whether it differs, the differences.
CElementImages::tImage CElementImages::Keep(CCompositeGeometry& element)
{
    CFieldStream fields(mBytes, CFieldStream::eDirection::kTake);
    uint32_t uniqueID = CCompositeGeometry::sNextUniqueID++;
    fields.Pass(uniqueID);
    fields.Align();
    element.TransferFields(fields);
    fields.Align();
    const uint32_t words = static_cast<uint32_t>(fields.GetSize() / kWord);
    if (mFirst.empty()) {
        mFirst.resize(std::min<size_t>(words, kMostCompared));
        std::memcpy(mFirst.data(), mBytes.data(), mFirst.size() * kWord);
    }
    // The differences move up to the front. Without branches: which words differ follows no pattern.
    mMask.assign(MaskSize(words), 0);
    unsigned char* const mask = mMask.data();
    unsigned char* const bytes = mBytes.data();
    const uint64_t* const first = mFirst.data();
    const size_t compared = mFirst.size();
    size_t differing = 0;
    for (size_t i = 0; i < words; ++i) {
        uint64_t difference = 0;
        std::memcpy(&difference, bytes + i * kWord, kWord);
        difference ^= i < compared ? first[i] : 0;
        std::memcpy(bytes + differing * kWord, &difference, kWord);
        const unsigned differs = difference != 0 ? 1 : 0;
        mask[i / 8] |= static_cast<unsigned char>(differs << i % 8);
        differing += differs;
    }
    const size_t nameSize = std::strlen(element.GetName()) + 1;
    const size_t size = nameSize + sizeof words + mMask.size() + differing * kWord;
    tImage image(static_cast<unsigned char*>(CBlockPool::Allocate(size)), {size});
    unsigned char* next = image.get();
    const auto append = [&next](const void* data, size_t count) {
        std::memcpy(next, data, count);
        next += count;
    };
    append(element.GetName(), nameSize);
    append(&words, sizeof words);
    append(mMask.data(), mMask.size());
    append(mBytes.data(), differing * kWord);
    if (mBytes.capacity() > kMostHeld) {
        mBytes = {};
    }
    return image;
}

std::unique_ptr<CCountedCIG> CElementImages::Restore(const tImage& image, int count)
{
    uint32_t words = 0;
    const unsigned char* const behindName = image.get() + std::strlen(NameOf(image)) + 1;
    std::memcpy(&words, behindName, sizeof words);
    const unsigned char* const mask = behindName + sizeof words;
    const unsigned char* next = mask + MaskSize(words);
    mBytes.resize(words * kWord);
    for (size_t i = 0; i < words; ++i) {
        uint64_t difference = 0;
        if ((mask[i / 8] >> i % 8 & 1) != 0) {
            std::memcpy(&difference, next, kWord);
            next += kWord;
        }
        const uint64_t word = (i < mFirst.size() ? mFirst[i] : 0) ^ difference;
        std::memcpy(&mBytes[i * kWord], &word, kWord);
    }
    CFieldStream fields(mBytes, CFieldStream::eDirection::kGive);
    uint32_t uniqueID = 0;
    fields.Pass(uniqueID);
    fields.Align();
    const uint32_t nextID = CCompositeGeometry::sNextUniqueID;
    CCompositeGeometry element;
    element.TransferFields(fields);
    std::unique_ptr<CCountedCIG> copy(new CCountedCIG(&element, count));
    copy->GetLayoutItemAttributes().uniqueID = uniqueID;
    CCompositeGeometry::sNextUniqueID = nextID;
    mBytes = {};
    return copy;
}
