#include "support/DocumentBuilder.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <stdexcept>

namespace {
constexpr int64_t kUnits = 10000000; ///< of a stored double's fraction
constexpr std::string_view kElementMagic = "RCig";
} // namespace

std::string Bytes16(unsigned value)
{
    return {static_cast<char>(value >> 8 & 0xFF), static_cast<char>(value & 0xFF)};
}

std::string Bytes32(uint32_t value)
{
    return Bytes16(value >> 16) + Bytes16(value & 0xFFFF);
}

std::string BytesOfDouble(double value)
{
    // In units, by rounding: the only way to the decimal that was meant which never is one unit off.
    const int64_t units = std::llround(value * static_cast<double>(kUnits));
    return Bytes32(static_cast<uint32_t>(units / kUnits)) + Bytes32(static_cast<uint32_t>(units % kUnits));
}

int32_t IntOfBytes(std::string_view bytes)
{
    if (bytes.size() != 4) {
        throw std::runtime_error("not an int record");
    }
    uint32_t value = 0;
    for (const char byte : bytes) {
        value = value << 8 | static_cast<unsigned char>(byte);
    }
    return static_cast<int32_t>(value);
}

double DoubleOfBytes(std::string_view bytes)
{
    return IntOfBytes(bytes.substr(0, 4)) + IntOfBytes(bytes.substr(4)) / static_cast<double>(kUnits);
}

std::string BytesOfColour(const tColour& colour)
{
    return Bytes16(colour[0]) + Bytes16(colour[1]) + Bytes16(colour[2]);
}

std::string CRecords::tPiece::Bytes() const
{
    if (key == kRaw) {
        return data;
    }
    return Bytes16(static_cast<unsigned>(key)) + Bytes16(static_cast<unsigned>(data.size())) + data;
}

CRecords& CRecords::Raw(std::string bytes)
{
    mPieces.push_back({kRaw, std::move(bytes)});
    return *this;
}

CRecords& CRecords::Record(int key, std::string data)
{
    mPieces.push_back({key, std::move(data)});
    return *this;
}

CRecords& CRecords::Append(const CRecords& other)
{
    mPieces.insert(mPieces.end(), other.mPieces.begin(), other.mPieces.end());
    return *this;
}

size_t CRecords::IndexOf(int key, size_t nth) const
{
    for (size_t i = 0; i < mPieces.size(); ++i) {
        if (mPieces[i].key == key && nth-- == 0) {
            return i;
        }
    }
    return mPieces.size();
}

CRecords& CRecords::Replace(int key, std::string data, size_t nth)
{
    mPieces.at(IndexOf(key, nth)).data = std::move(data);
    return *this;
}

CRecords& CRecords::Remove(int key, size_t nth)
{
    const size_t index = IndexOf(key, nth);
    mPieces.at(index);
    mPieces.erase(mPieces.begin() + static_cast<std::ptrdiff_t>(index));
    return *this;
}

size_t CRecords::CountOf(int key) const
{
    return static_cast<size_t>(
        std::count_if(mPieces.begin(), mPieces.end(), [key](const tPiece& piece) { return piece.key == key; }));
}

std::string CRecords::DataOf(int key, size_t nth) const
{
    const size_t index = IndexOf(key, nth);
    return index < mPieces.size() ? mPieces[index].data : std::string();
}

std::string CRecords::TextOf(int key, size_t nth) const
{
    const std::string data = DataOf(key, nth);
    return data.substr(0, data.find('\0'));
}

std::string CRecords::Bytes() const
{
    std::string bytes;
    for (const tPiece& piece : mPieces) {
        bytes += piece.Bytes();
    }
    return bytes;
}

CRecords CRecords::OfDocument(std::string_view bytes)
{
    CRecords records;
    const auto number = [&bytes](size_t at) {
        return static_cast<size_t>(IntOfBytes(std::string(2, '\0').append(bytes.substr(at, 2))));
    };
    size_t at = std::min<size_t>(bytes.size(), 8);
    records.Raw(std::string(bytes.substr(0, at)));
    while (at < bytes.size()) {
        const bool isElement = bytes.substr(at, 4) == kElementMagic;
        if (bytes.size() - at < 4 || bytes.size() - at < (isElement ? 8 : 4 + number(at + 2))) {
            records.Raw(std::string(bytes.substr(at)));
            break;
        }
        if (isElement) {
            records.Raw(std::string(bytes.substr(at, 8)));
            at += 8;
        } else {
            const size_t size = number(at + 2);
            records.Record(static_cast<int>(number(at)), std::string(bytes.substr(at + 4, size)));
            at += 4 + size;
        }
    }
    return records;
}

/// Keys 300 to 310.
static CRecords Component(int type, const tCommon& common)
{
    CRecords records;
    records.Int(300, type).Double(301, common.x).Double(302, common.y).Double(303, common.gauge);
    records.Double(304, common.angle).Bool(305, common.joint0).Bool(306, common.joint1);
    records.Double(307, common.trackbedWidth).Double(308, common.railWidth).Int(309, common.midRail);
    return records.Colour(310, common.colour);
}

CRecords Straight(const tCommon& common, double length)
{
    return Component(1, common).Double(311, length);
}

CRecords Curve(const tCommon& common, double radius, double arcAngle)
{
    return Component(2, common).Double(312, radius).Double(313, arcAngle);
}

CRecords Polygon(const tCommon& common, const std::vector<tXY>& points, bool close, int subType, int thickness)
{
    CRecords records = Component(3, common).Int(318, std::ssize(points));
    for (const tXY& point : points) {
        records.Double(319, point.x).Double(320, point.y);
    }
    return records.Bool(321, close).Int(322, subType).Int(323, thickness);
}

CRecords Text(const tCommon& common, const std::string& text, int size, int style, const std::string& font)
{
    std::string block(256, '\0');
    block[0] = static_cast<char>(font.size());
    block.replace(1, font.size(), font);
    return Component(4, common).Int(324, size).Int(325, style).Record(326, block).Text(327, text);
}

CRecords Oval(const tCommon& common, double radiusX, double radiusY, int thickness)
{
    return Component(5, common).Double(315, radiusX).Double(316, radiusY).Int(317, thickness);
}

CRecords Flexible(const tCommon& common, const std::vector<tXY>& points, double maxLength)
{
    return CRecords().Int(300, 6).Append(Polygon(common, points)).Double(314, maxLength);
}

std::string SavedFontBlock()
{
    return "Arial" + std::string(251, '\0');
}

CRecords Element(const tElement& element)
{
    CRecords records;
    records.Raw(std::string(kElementMagic) + Bytes32(element.version));
    int key = 207;
    for (const std::string* text :
         {&element.name, &element.description, &element.manufacturer, &element.library, &element.prefix}) {
        records.Text(key++, *text);
    }
    for (const int number : {element.libraryNumber, element.price, element.currency, element.scale}) {
        records.Int(key++, number);
    }
    records.Bool(216, element.libraryFlag).Double(200, element.x).Double(201, element.y);
    if (element.version == 4) {
        records.Double(218, element.z);
        key = 219;
        for (const double number : element.grade) {
            records.Double(key++, number);
        }
    }
    records.Double(202, element.angle).Colour(203, element.fill).Colour(204, element.second);
    records.Bool(205, element.fillMode);
    if (element.version == 4) {
        records.Text(217, element.layer);
    }
    records.Int(206, std::ssize(element.components));
    for (const CRecords& component : element.components) {
        records.Append(component);
    }
    return records;
}

CRecords LayoutHeader(int version)
{
    return CRecords().Raw("WkSt" + Bytes32(static_cast<uint32_t>(version)));
}

CRecords Settings(const tLayout& layout)
{
    CRecords records;
    int key = 400;
    for (const std::string* text :
         {&layout.author, &layout.privateAuthor, &layout.creationDate, &layout.modificationDate, &layout.description,
          &layout.freeText, &layout.shortFreeText, &layout.revision}) {
        records.Text(key++, *text);
    }
    records.Record(key++, std::string(1, layout.setting408));
    for (const int setting : layout.settings) {
        records.Int(key++, setting);
    }
    std::string rectangle;
    for (const int16_t side : layout.rectangle) {
        rectangle += Bytes16(static_cast<uint16_t>(side));
    }
    std::string view;
    for (const float parameter : layout.view) {
        view += Bytes32(std::bit_cast<uint32_t>(parameter));
    }
    records.Bool(416, layout.showGrid).Int(417, layout.zoom).Int(418, layout.width).Int(419, layout.height);
    records.Colour(420, layout.colour).Record(421, rectangle).Record(422, view);
    if (layout.version >= 4) {
        records.Bool(426, layout.terrain).Bool(427, layout.onlyTracks);
    }
    if (layout.version >= 5) {
        records.Int(428, layout.setting428).Int(429, layout.setting429).Bool(430, layout.flag430);
    }
    return records;
}

CRecords Layout(const tLayout& layout)
{
    CRecords records = LayoutHeader(layout.version).Append(Settings(layout));
    if (layout.version >= 4) {
        records.Int(500, std::ssize(layout.layers));
        for (const tLayer& layer : layout.layers) {
            records.Text(501, layer.name).Bool(502, layer.locked).Bool(503, layer.visible);
        }
    }
    records.Int(423, std::ssize(layout.elements));
    for (const tElement& element : layout.elements) {
        records.Append(Element(element));
    }
    records.Int(424, std::ssize(layout.groups));
    for (const int entry : layout.groups) {
        records.Int(425, entry);
    }
    return records;
}

std::vector<int> GroupList(const std::vector<tGroupEntry>& entries)
{
    std::vector<int> list;
    if (!entries.empty()) {
        list.push_back(static_cast<int>(entries.size()));
    }
    for (const tGroupEntry& entry : entries) {
        list.push_back(entry.parent);
        for (const std::vector<int>* members : {&entry.elements, &entry.groups}) {
            list.push_back(static_cast<int>(members->size()));
            list.insert(list.end(), members->begin(), members->end());
        }
    }
    return list;
}

namespace {
constexpr double kLargest = 900000000.0; ///< doubles up to here come back to within 1e-7
constexpr double kFarthest = 20000.0;    ///< places and lengths of a track plan, mm

tColour RandomColour(CRandom& random)
{
    const auto part = [&random] { return static_cast<uint16_t>(random.Int(0, 65535)); };
    return {part(), part(), part()};
}

int RandomInt(CRandom& random)
{
    return static_cast<int>(random.Int(INT32_MIN, INT32_MAX));
}

template <typename tValue, typename tMake>
void Fill(std::initializer_list<tValue*> values, tMake make)
{
    for (tValue* value : values) {
        *value = make();
    }
}

void FillTexts(CRandom& random, std::initializer_list<std::pair<std::string*, size_t>> texts)
{
    for (const auto& [text, longest] : texts) {
        *text = random.Text(longest);
    }
}

CRecords RandomComponent(CRandom& random, int type)
{
    tCommon common = {.x = random.Fixed(1000), .y = random.Fixed(1000)};
    common.gauge = random.Bool() ? 0.0 : random.Fixed(50);
    common.angle = random.Bool() ? 0.0 : random.Fixed(360);
    common.joint0 = random.Bool();
    common.joint1 = random.Bool();
    common.trackbedWidth = std::fabs(random.Fixed(60));
    common.railWidth = random.Fixed(kLargest);
    common.midRail = RandomInt(random);
    common.colour = RandomColour(random);
    std::vector<tXY> points(static_cast<size_t>(random.Below(13)));
    std::generate(points.begin(), points.end(), [&random] { return tXY{random.Fixed(2000), random.Fixed(2000)}; });
    switch (type) {
    case 1:
        return Straight(common, random.Fixed(kFarthest));
    case 2:
        return Curve(common, random.Fixed(kFarthest), random.Fixed(359));
    case 3:
        return Polygon(common, points, random.Bool(), RandomInt(random), RandomInt(random));
    case 4:
        return Text(common, random.Text(40), static_cast<int>(random.Int(-5, 60)), RandomInt(random));
    case 5:
        return Oval(common, std::fabs(random.Fixed(kFarthest)), random.Fixed(kLargest), RandomInt(random));
    default:
        return Flexible(common, points, random.Fixed(kLargest));
    }
}
} // namespace

tLayout RandomLayout(uint64_t seed, int elements, bool turnedTexts)
{
    CRandom random(seed);
    tLayout layout;
    FillTexts(random, {{&layout.author, 127},
                       {&layout.creationDate, 31},
                       {&layout.description, 4095},
                       {&layout.freeText, 1023},
                       {&layout.shortFreeText, 127},
                       {&layout.revision, 31}});
    layout.setting408 = static_cast<char>(random.Int(0, 255));
    const auto number = [&random] { return RandomInt(random); };
    std::generate(layout.settings.begin(), layout.settings.end(), number);
    layout.zoom = static_cast<int>(random.Int(-1000, 100000));
    layout.colour = RandomColour(random);
    for (int16_t& side : layout.rectangle) {
        side = static_cast<int16_t>(random.Int(INT16_MIN, INT16_MAX));
    }
    for (float& parameter : layout.view) {
        parameter = static_cast<float>(random.Fixed(100000));
    }
    Fill({&layout.width, &layout.height, &layout.setting428, &layout.setting429}, number);
    Fill({&layout.showGrid, &layout.terrain, &layout.onlyTracks, &layout.flag430}, [&random] { return random.Bool(); });
    layout.layers.clear();
    const int64_t numLayers = random.Int(1, 8);
    for (int64_t i = 0; i < numLayers; ++i) {
        layout.layers.push_back({std::to_string(i) + random.Text(62), random.Bool(), random.Bool()});
    }
    for (int i = 0; i < elements; ++i) {
        tElement element = {.name = std::to_string(i) + random.Text(26), .description = random.Text(63)};
        FillTexts(random, {{&element.manufacturer, 31}, {&element.library, 127}, {&element.prefix, 7}});
        Fill({&element.libraryNumber, &element.price, &element.currency}, number);
        element.scale = static_cast<int>(random.Int(10, 23));
        element.libraryFlag = random.Bool();
        Fill({&element.x, &element.y}, [&random] { return random.Fixed(kFarthest); });
        element.z = random.Fixed(kLargest);
        if (random.Int(0, 3) == 0) {
            std::generate(element.grade.begin(), element.grade.end(), [&random] { return random.Fixed(5000); });
        }
        element.angle = random.Bool() ? 0.0 : random.Fixed(360);
        element.fill = RandomColour(random);
        element.second = RandomColour(random);
        element.fillMode = random.Bool();
        if (random.Int(0, 4) != 0) {
            element.layer = layout.layers[static_cast<size_t>(random.Int(0, numLayers - 1))].name;
        }
        const int64_t numComponents = random.Int(0, 9) == 0 ? random.Int(0, 12) : 1;
        for (int64_t component = 0; component < numComponents; ++component) {
            const int type = static_cast<int>(random.Int(1, 6));
            if (type == 4 && !turnedTexts) {
                element.angle = 0.0;
            }
            element.components.push_back(RandomComponent(random, type));
        }
        layout.elements.push_back(element);
    }
    if (elements >= 4) {
        // Three groups; the middle one holds both others, so that one of them stands in front of its parent.
        layout.groups = {3, 1, 2, 0, 2, 0, -1, 1, 1, 2, 0, 2, 1, 1, 3, 0};
    }
    return layout;
}

std::string Repeat(size_t times, const std::function<std::string(size_t)>& piece)
{
    std::string bytes;
    for (size_t i = 0; i < times; ++i) {
        bytes += piece(i);
    }
    return bytes;
}

std::string EmptyRecords(size_t count)
{
    return Repeat(count, [](size_t) { return CRecords().Record(1, "").Bytes(); });
}

std::string SmallElement(const std::string& name, const std::string& library)
{
    return "RCig" + Bytes32(3) + CRecords().Record(207, name).Bytes() + EmptyRecords(2) +
           CRecords().Record(210, library).Bytes() + EmptyRecords(13);
}
