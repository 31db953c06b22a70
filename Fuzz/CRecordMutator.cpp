#include "CRecordMutator.h"

#include "CTaggedFile/BigEndian.h"
#include "CTaggedFile/DocumentHeader.h"
#include "CTaggedFile/RecordTable.h"
#include "Formats/ComponentFormat.h"
#include "Formats/ElementFormat.h"
#include "Formats/LayoutFormat.h"
#include "Formats/LibraryFormat.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cmath>
#include <iterator>
#include <limits>

namespace {
/// Whole numbers at the edges of what counts, indices, colours and sizes are, and those around the loaders' bounds.
constexpr int kEdges[] = {0,   1,    -1,      2,          3,          INT_MAX,    INT_MIN, INT_MAX - 1, 127,
                          128, 255,  256,     32767,      32768,      65535,      65536,   -32768,      -2,
                          7,   16,   1000000, 0x01000000, 0x00FFFFFF, 4096,       9999999, -9999999,    10000000,
                          360, -360, 180,     90,         100,        1000000000, 46341,   0x7F80,      0x40000000};
/// And of the numbers that hold fractions, which only some records do.
constexpr float kFractions[] = {0.0F,
                                -0.0F,
                                1.0F,
                                0.5F,
                                std::numeric_limits<float>::quiet_NaN(),
                                std::numeric_limits<float>::infinity(),
                                -std::numeric_limits<float>::infinity(),
                                std::numeric_limits<float>::max(),
                                std::numeric_limits<float>::denorm_min()};

std::string Word(uint32_t value)
{
    unsigned char bytes[4];
    BigEndian::StoreUnsigned32(value, bytes);
    return {std::begin(bytes), std::end(bytes)};
}

uint32_t WordAt(std::string_view bytes)
{
    return BigEndian::Unsigned32(reinterpret_cast<const unsigned char*>(bytes.data()));
}

bool IsHeader(std::string_view bytes)
{
    if (bytes.size() < tDocumentHeader::kSize) {
        return false;
    }
    const uint32_t magic = WordAt(bytes);
    return magic == ElementFormat::kMagic || magic == LayoutFormat::kMagic || magic == LibraryFormat::kMagic;
}
} // namespace

CRecordMutator::tPieces CRecordMutator::Split(std::string_view bytes)
{
    tPieces pieces;
    while (!bytes.empty()) {
        tPiece piece = {tPiece::eKind::kRest, 0, {}};
        size_t size = bytes.size();
        if (IsHeader(bytes)) {
            piece.kind = tPiece::eKind::kHeader;
            size = tDocumentHeader::kSize;
        } else if (size >= kRecordHeader && kRecordHeader + (WordAt(bytes) & 0xFFFF) <= size) {
            piece.kind = tPiece::eKind::kRecord;
            piece.key = static_cast<int>(WordAt(bytes) >> 16);
            size = kRecordHeader + (WordAt(bytes) & 0xFFFF);
        }
        piece.bytes = bytes.substr(0, size);
        pieces.push_back(std::move(piece));
        bytes.remove_prefix(size);
    }
    return pieces;
}

std::string CRecordMutator::Join(const tPieces& pieces)
{
    std::string bytes;
    for (const tPiece& piece : pieces) {
        bytes += piece.bytes;
    }
    return bytes;
}

void CRecordMutator::PutCountsRight(tPieces& pieces)
{
    const struct {
        int count;   ///< key of the record that counts
        int counted; ///< key of those that it counts; 0 for elements
        int end;     ///< what ends the counting: a key, 0 for the next element
    } kCounts[] = {{LayoutFormat::kNumElements.key, 0, LayoutFormat::kNumGroupEntries.key},
                   {LibraryFormat::kNumElements.key, 0, LayoutFormat::kNumGroupEntries.key},
                   {LayoutFormat::kNumLayers.key, LayoutFormat::kLayerName.key, LayoutFormat::kNumElements.key},
                   {LayoutFormat::kNumGroupEntries.key, LayoutFormat::kGroupEntry.key, INT_MAX},
                   {ElementFormat::kNumComponents.key, ComponentFormat::kType.key, 0},
                   {ComponentFormat::kNumPoints.key, ComponentFormat::kPoint[0].key, ComponentFormat::kType.key}};
    constexpr size_t kNone = SIZE_MAX;
    size_t place[std::size(kCounts)];
    uint32_t count[std::size(kCounts)] = {};
    std::fill(std::begin(place), std::end(place), kNone);
    const auto close = [&](size_t i) {
        if (place[i] != kNone) {
            pieces[place[i]].bytes = pieces[place[i]].bytes.substr(0, kRecordHeader) + Word(count[i]);
        }
        place[i] = kNone;
        count[i] = 0;
    };
    int previous = -1;
    for (size_t at = 0; at < pieces.size(); ++at) {
        const int key = pieces[at].key; // 0 for the header of an element, and of a document, which nothing precedes
        for (size_t i = 0; i < std::size(kCounts); ++i) {
            if (key == kCounts[i].end || key == LayoutFormat::kNumGroupEntries.key) {
                close(i);
            }
            if (key == kCounts[i].count && pieces[at].bytes.size() == kRecordHeader + 4) {
                close(i);
                place[i] = at;
            } else if (key == kCounts[i].counted && (key != ComponentFormat::kType.key || previous != key)) {
                ++count[i]; // not for the second type of a flexible track, its polygon's
            }
        }
        previous = key;
    }
    for (size_t i = 0; i < std::size(kCounts); ++i) {
        close(i);
    }
}

CRecordMutator::tRange CRecordMutator::ChooseRange(const tPieces& pieces)
{
    size_t begin = Below(pieces.size());
    size_t end = begin + 1;
    const auto isHeader = [&](size_t at) { return pieces[at].kind == tPiece::eKind::kHeader; };
    switch (Below(4)) {
    case 0:
        return {begin, end};
    case 1:
        return {begin, std::min(end + Below(8), pieces.size())};
    case 2: // a component: from its type to the next, without the second type of a flexible track
        while (begin > 0 && (pieces[begin].key != ComponentFormat::kType.key ||
                             pieces[begin - 1].key == ComponentFormat::kType.key)) {
            --begin;
        }
        for (end = begin + 1; end < pieces.size(); ++end) {
            if (isHeader(end) || pieces[end].key == LayoutFormat::kNumGroupEntries.key ||
                (pieces[end].key == ComponentFormat::kType.key && end > begin + 1)) {
                break;
            }
        }
        return {begin, end};
    default: // an element
        while (begin > 0 && !isHeader(begin)) {
            --begin;
        }
        for (end = begin + 1; end < pieces.size(); ++end) {
            if (isHeader(end) || pieces[end].key == LayoutFormat::kNumGroupEntries.key) {
                break;
            }
        }
        return {begin, end};
    }
}

void CRecordMutator::PutEdge(std::string& data)
{
    const auto number = [this] {
        return OneIn(8) ? std::bit_cast<uint32_t>(kFractions[Below(std::size(kFractions))])
                        : static_cast<uint32_t>(kEdges[Below(std::size(kEdges))]);
    };
    const std::string word = Word(OneIn(16) ? static_cast<uint32_t>(mRandom()) : number());
    if (data.size() < word.size()) {
        for (char& byte : data) {
            byte = word[Below(word.size())];
        }
        return;
    }
    const size_t at = Below(data.size() / word.size()) * word.size();
    data.replace(at, word.size(), word);
}

void CRecordMutator::ChangeText(std::string& text)
{
    switch (Below(6)) {
    case 0:
        text.resize(Below(text.size() + 1));
        break;
    case 1:
        text.resize(std::min<size_t>(text.size() * 2 + Below(300), kLargestRecord), static_cast<char>(Below(256)));
        break;
    case 2: // without its zero
        text.resize(text.empty() ? 0 : text.size() - 1);
        break;
    case 3:
        std::fill(text.begin(), text.end(), static_cast<char>(Below(256)));
        break;
    default:
        if (!text.empty()) {
            static constexpr char kSpecial[] = "\0\n\r\t*?#/%<&\"\x7F\x80\xC6\xF0\xFF";
            text[Below(text.size())] = kSpecial[Below(sizeof kSpecial)];
        }
    }
}

void CRecordMutator::ChangeData(tPiece& piece, const tPieces& pieces)
{
    std::string data = piece.bytes.substr(kRecordHeader);
    const bool isNumber = data.size() == 1 || data.size() == 4 || data.size() == 8;
    if (OneIn(4)) { // what another record says, mostly one of the same kind
        const tPiece& other = pieces[Below(pieces.size())];
        if (other.kind == tPiece::eKind::kRecord) {
            data = other.bytes.substr(kRecordHeader);
        }
    } else if (isNumber && data.size() == 4 && OneIn(3)) { // one more or less
        data = Word(WordAt(data) + (OneIn(2) ? 1U : ~0U));
    } else if (isNumber || OneIn(3)) {
        PutEdge(data);
    } else {
        ChangeText(data);
    }
    piece.bytes = piece.bytes.substr(0, 2);
    piece.bytes += static_cast<char>(data.size() >> 8);
    piece.bytes += static_cast<char>(data.size());
    piece.bytes += data;
}

void CRecordMutator::ChangePiece(tPiece& piece, const tPieces& pieces)
{
    if (piece.kind == tPiece::eKind::kHeader) {
        piece.bytes.replace(
            4, 4,
            Word(OneIn(4) ? static_cast<uint32_t>(kEdges[Below(std::size(kEdges))]) : static_cast<uint32_t>(Below(8))));
        return;
    }
    if (piece.kind == tPiece::eKind::kRest) {
        PutEdge(piece.bytes);
        return;
    }
    switch (Below(8)) {
    case 0: { // another key
        const std::string& other = pieces[Below(pieces.size())].bytes;
        if (OneIn(2) && other.size() >= 2) {
            piece.bytes.replace(0, 2, other, 0, 2);
        } else {
            piece.bytes[1] = static_cast<char>(piece.bytes[1] + (OneIn(2) ? 1 : -1));
        }
        break;
    }
    case 1: { // another size, the data as it is
        static constexpr int kSizes[] = {0, 1, 3, 5, 7, 255, 32768, 65535};
        const int size = OneIn(2) ? kSizes[Below(std::size(kSizes))]
                                  : static_cast<int>(piece.bytes.size() - kRecordHeader) + (OneIn(2) ? 1 : -1);
        piece.bytes[2] = static_cast<char>(size >> 8);
        piece.bytes[3] = static_cast<char>(size);
        break;
    }
    default:
        ChangeData(piece, pieces);
    }
}

std::string CRecordMutator::Mutate(std::string_view bytes)
{
    tPieces pieces = Split(bytes);
    if (pieces.empty()) {
        return {};
    }
    for (size_t changes = 1 + (OneIn(3) ? Below(4) : 0); changes > 0 && !pieces.empty(); --changes) {
        if (!OneIn(3)) {
            ChangePiece(pieces[Below(pieces.size())], pieces);
            continue;
        }
        const auto at = [&pieces](size_t index) { return pieces.begin() + static_cast<std::ptrdiff_t>(index); };
        const tRange range = ChooseRange(pieces);
        const tPieces copy(at(range.begin), at(range.end));
        switch (Below(4)) {
        case 0:
            pieces.erase(at(range.begin), at(range.end));
            break;
        case 1:
            pieces.insert(at(range.end), copy.begin(), copy.end());
            break;
        case 2:
            pieces.insert(at(Below(pieces.size() + 1)), copy.begin(), copy.end());
            break;
        default:
            std::rotate(at(range.begin), at(range.end), at(std::min(range.end + copy.size(), pieces.size())));
        }
        if (!OneIn(4)) {
            PutCountsRight(pieces);
        }
    }
    return Join(pieces);
}

std::string CRecordMutator::CrossOver(std::string_view first, std::string_view second)
{
    tPieces pieces = Split(first);
    const tPieces others = Split(second);
    if (pieces.empty() || others.empty()) {
        return std::string(first);
    }
    // Where a range of the same kind begins, so that an element comes between elements.
    const tRange range = ChooseRange(others);
    size_t place = Below(pieces.size());
    for (size_t tries = 0; tries < pieces.size() && pieces[place].key != others[range.begin].key; ++tries) {
        place = (place + 1) % pieces.size();
    }
    const auto from = others.begin();
    pieces.insert(pieces.begin() + static_cast<std::ptrdiff_t>(place), from + static_cast<std::ptrdiff_t>(range.begin),
                  from + static_cast<std::ptrdiff_t>(range.end));
    if (!OneIn(4)) {
        PutCountsRight(pieces);
    }
    return Join(pieces);
}
