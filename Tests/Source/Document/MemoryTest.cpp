// How much memory a hostile document can claim. A program of its own: it counts what operator new hands out.
#include "BuildingBlocks/CCompositeGeometry.h"
#include "Layouts/Groups/UGroups.h"
#include "TestLayout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <functional>
#include <malloc.h>
#include <new>

namespace {
size_t sNow = 0;
size_t sPeak = 0;
bool sIsExhausted = false;

void* Allocate(size_t size)
{
    void* block = malloc(size > 0 ? size : 1);
    sNow += malloc_usable_size(block);
    sPeak = std::max(sPeak, sNow);
    return block;
}
} // namespace

// Those for arrays are made of these.
void* operator new(size_t size)
{
    if (void* block = Allocate(size)) {
        return block;
    }
    throw std::bad_alloc();
}
void* operator new(size_t size, const std::nothrow_t&) noexcept
{
    return sIsExhausted ? nullptr : Allocate(size);
}
void operator delete(void* block) noexcept
{
    sNow -= malloc_usable_size(block);
    free(block);
}
void operator delete(void* block, size_t) noexcept
{
    operator delete(block);
}

namespace {
/// The promise: a document takes no more than this and this much for each of its bytes.
constexpr size_t kBase = size_t{64} << 20;
constexpr size_t kFactor = 20;

/// @return how many bytes are in use at most while a document is loaded, above what was before
size_t PeakOf(const std::string& bytes)
{
    const CScratchFile file(bytes);
    const size_t before = sNow;
    sPeak = sNow;
    CTestLayout().Load(file.Path());
    return sPeak - before;
}

/// A name of few bytes, none of them zero, that differs for every number.
std::string Name(size_t number)
{
    std::string name;
    do {
        name += static_cast<char>(1 + number % 255);
        number /= 255;
    } while (number > 0);
    return name;
}

/// Settings of size 0 and no layers, ready for key 423; version 3 has the fewest records.
std::string Begin()
{
    return LayoutHeader(3).Bytes() + EmptyRecords(23);
}

std::string Count(int key, int64_t count)
{
    return CRecords().Int(key, count).Bytes();
}

std::string ElementHeader()
{
    return "RCig" + Bytes32(3);
}

/// An element of empty records; its count of components is given, or stays 0.
std::string BareElement(const std::string& count)
{
    return ElementHeader() + EmptyRecords(16) + (count.empty() ? EmptyRecords(1) : count);
}

std::string Components(int type, size_t emptyRecords, size_t count)
{
    const std::string component = Count(300, type) + EmptyRecords(emptyRecords);
    return Begin() + Count(423, 1) + BareElement(Count(206, INT_MAX)) +
           Repeat(count, [&component](size_t) { return component; });
}

std::string Points(int type, size_t count)
{
    return Begin() + Count(423, 1) + BareElement(Count(206, 1)) + Count(300, type) +
           (type == 6 ? Count(300, 3) : std::string()) + EmptyRecords(10) + Count(318, INT_MAX) +
           EmptyRecords(2 * count);
}
} // namespace

TEST(Memory, HostileDocumentsStayWithinTheirBound)
{
    // Just behind a power of two the lists that grow by doubling are half empty.
    static constexpr size_t kMany = (size_t{1} << 15) + 1;
    const auto integers = [](const std::vector<int64_t>& list) {
        return Repeat(list.size(), [&list](size_t i) { return Count(425, list[i]); });
    };
    const auto groups = [&integers](const std::function<std::vector<int64_t>(size_t)>& entry) {
        return Begin() + EmptyRecords(1) + Count(424, INT_MAX) + Count(425, kMany) +
               Repeat(kMany, [&](size_t i) { return integers(entry(i)); });
    };
    const auto longText = [](size_t) {
        return Count(300, 4) + EmptyRecords(13) + CRecords().Record(327, std::string(2047, 't')).Bytes();
    };
    const auto bare = [](size_t) { return BareElement({}); };
    const auto flexible = [](size_t i) {
        return ElementHeader() + CRecords().Record(207, Name(i)).Bytes() + EmptyRecords(15) + Count(206, 1) +
               Count(300, 6) + EmptyRecords(16);
    };
    const auto layers = [](bool distinct) {
        return LayoutHeader(4).Bytes() + EmptyRecords(25) + Count(500, INT_MAX) + Repeat(kMany, [distinct](size_t i) {
                   return CRecords().Record(501, distinct ? Name(i) : "n").Bytes() + EmptyRecords(2);
               });
    };
    const struct {
        const char* what;
        std::string bytes;
    } cases[] = {
        {"elements of empty records", Begin() + Count(423, INT_MAX) + Repeat(kMany, bare)},
        {"library elements of distinct names",
         Begin() + Count(423, INT_MAX) + Repeat(kMany, [](size_t i) { return SmallElement(Name(i), "li"); })},
        {"straights", Components(1, 11, kMany)},
        {"polygons", Components(3, 14, kMany)},
        {"long texts", Begin() + Count(423, 1) + BareElement(Count(206, INT_MAX)) + Repeat(kMany / 64, longText)},
        {"circles", Components(5, 13, kMany)},
        {"flexible tracks", Components(6, 16, kMany)},
        {"a flexible track and its copy", Begin() + Count(423, INT_MAX) + Repeat(kMany / 4, flexible)},
        {"points of a polygon", Points(3, kMany * 4)},
        {"points of a flexible track", Points(6, kMany * 4)},
        {"layers of short names", layers(true)},
        {"layers of one name", layers(false)},
        {"group entries",
         Begin() + EmptyRecords(1) + Count(424, INT_MAX) + Repeat(kMany * 4, [](size_t) { return Count(425, -1); })},
        {"groups", groups([](size_t) {
             return std::vector<int64_t>{-1, 0, 0};
         })},
        {"nested groups by members", groups([](size_t i) {
             return std::vector<int64_t>{-1, 0, 1, static_cast<int64_t>(i) + 1};
         })},
        {"a group of all elements", Begin() + Count(423, kMany) + Repeat(kMany, bare) + Count(424, INT_MAX) +
                                        integers({1, -1, kMany}) +
                                        Repeat(kMany, [](size_t i) { return Count(425, static_cast<int64_t>(i)); })},
    };
    double worst = 0.0;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const size_t peak = PeakOf(c.bytes);
        const double factor = static_cast<double>(peak) / static_cast<double>(c.bytes.size());
        printf("%6.2f bytes for each of %8zu: %s\n", factor, c.bytes.size(), c.what);
        worst = std::max(worst, factor);
        EXPECT_LE(peak, kBase + kFactor * c.bytes.size());
        // Where the base does not hide it: a factor that is not kept would break the bound for larger files.
        EXPECT_LE(factor, static_cast<double>(kFactor) + 1.0);
    }
    EXPECT_GT(worst, 1.0) << "nothing was counted";
}

TEST(Memory, CountsAloneClaimNothing)
{
    constexpr size_t kLittle = size_t{1} << 20;
    tLayout source;
    source.elements.resize(1);
    source.elements[0].components = {Polygon({}, {{1, 2}})};
    source.groups = {1, -1, 1, 0, 0};
    for (const int key : {423, 424, 500, 206, 318}) {
        for (const uint32_t count : {0x7FFFFFFFU, 0xFFFFFFFFU, 0x80000000U, 0x00FFFFFFU}) {
            EXPECT_LT(PeakOf(Layout(source).Replace(key, Bytes32(count)).Bytes()), kLittle) << key << " " << count;
        }
    }
    for (size_t entry = 0; entry < source.groups.size(); ++entry) {
        for (const uint32_t count : {0x7FFFFFFFU, 0xFFFFFFFFU}) {
            EXPECT_LT(PeakOf(Layout(source).Replace(425, Bytes32(count), entry).Bytes()), kLittle) << entry;
        }
    }
    // A size that the file does not have.
    EXPECT_LT(PeakOf("WkSt" + Bytes32(5) + Bytes16(404) + Bytes16(0xFFFF) + "abc"), kLittle);
}

TEST(MemoryDeathTest, AGroupForWhichThereIsNoMemoryIsReported)
{
    CTestLayout layout;
    layout.AddItem(new CCompositeGeometry);
    layout.AddItem(new CCompositeGeometry);
    EXPECT_EXIT(sIsExhausted = true; UGroups::NewGroupFromElementVector(&layout, layout.GetElements()),
                                     testing::ExitedWithCode(0),
                                     "NewGroupFromElementVector.*(\n.*)*Failed to create new group");
}
