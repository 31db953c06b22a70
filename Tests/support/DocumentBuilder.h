// Documents byte by byte, made and taken apart without the core's own reader and writer, so that neither hides the
// other's faults.
#pragma once

#include "support/Random.h"

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// Big-endian bytes of an unsigned 16-bit and of a 32-bit number.
std::string Bytes16(unsigned value);
std::string Bytes32(uint32_t value);
/// The two words of a stored double. `value` must be a multiple of 1e-7 small enough to be told from its neighbours.
std::string BytesOfDouble(double value);
/// A double from its two words.
double DoubleOfBytes(std::string_view bytes);
int32_t IntOfBytes(std::string_view bytes);

using tColour = std::array<uint16_t, 3>;
std::string BytesOfColour(const tColour& colour);

/// A run of records and headers that can be changed before it becomes bytes.
class CRecords {
public:
    static constexpr int kRaw = -1;
    struct tPiece {
        int key; ///< kRaw: `data` stands in the file as it is
        std::string data;
        std::string Bytes() const;
    };

    CRecords& Raw(std::string bytes);
    CRecords& Record(int key, std::string data);
    CRecords& Bool(int key, bool value) { return Record(key, std::string(1, value ? '\1' : '\0')); }
    CRecords& Int(int key, int64_t value) { return Record(key, Bytes32(static_cast<uint32_t>(value))); }
    CRecords& Double(int key, double value) { return Record(key, BytesOfDouble(value)); }
    /// The characters and a zero byte.
    CRecords& Text(int key, const std::string& text) { return Record(key, text + '\0'); }
    CRecords& Colour(int key, const tColour& colour) { return Record(key, BytesOfColour(colour)); }
    CRecords& Append(const CRecords& other);

    /// Changes the nth record of that key.
    CRecords& Replace(int key, std::string data, size_t nth = 0);
    CRecords& Remove(int key, size_t nth = 0);

    const std::vector<tPiece>& Pieces() const { return mPieces; }
    size_t CountOf(int key) const;
    /// Data of the nth record of that key; empty when there is none.
    std::string DataOf(int key, size_t nth = 0) const;
    int32_t IntOf(int key, size_t nth = 0) const { return IntOfBytes(DataOf(key, nth)); }
    /// A text without its zero byte.
    std::string TextOf(int key, size_t nth = 0) const;
    double DoubleOf(int key, size_t nth = 0) const { return DoubleOfBytes(DataOf(key, nth)); }
    std::string Bytes() const;

    /// Takes a document apart: its header, then records and element headers. What is left at the end is one raw piece.
    static CRecords OfDocument(std::string_view bytes);

private:
    size_t IndexOf(int key, size_t nth) const;

    std::vector<tPiece> mPieces;
};

/// What every component has. The default is aligned: it starts at (0, 0).
struct tCommon {
    double x = 0.0;
    double y = 0.0;
    double gauge = 0.0;
    double angle = 0.0;
    bool joint0 = true;
    bool joint1 = true;
    double trackbedWidth = 0.0;
    double railWidth = 0.9; ///< of scale 16
    int midRail = 1;
    tColour colour = {0, 0, 0};
};

struct tXY {
    double x;
    double y;
};
CRecords Straight(const tCommon& common, double length);
CRecords Curve(const tCommon& common, double radius, double arcAngle);
CRecords Polygon(const tCommon& common, const std::vector<tXY>& points, bool close = true, int subType = 1,
                 int thickness = 1);
CRecords Text(const tCommon& common, const std::string& text, int size = 24, int style = 0,
              const std::string& font = "Helvetica");
CRecords Oval(const tCommon& common, double radiusX, double radiusY, int thickness = 1);
CRecords Flexible(const tCommon& common, const std::vector<tXY>& points, double maxLength = 500.0);

/// The font block that the core writes for every text: five letters and zeros.
std::string SavedFontBlock();

struct tElement {
    unsigned version = 4;
    std::string name = "-";
    std::string description = "-";
    std::string manufacturer = "-";
    std::string library = "-";
    std::string prefix = {};
    int libraryNumber = 1;
    int price = 0;
    int currency = 129;
    int scale = 16;
    bool libraryFlag = false;
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    std::array<double, 7> grade = {};
    double angle = 0.0;
    tColour fill = {0, 0, 0};
    tColour second = {0, 0, 0};
    bool fillMode = true;
    std::string layer = {};
    std::vector<CRecords> components = {};
};
/// Header, attributes and components; version 4 alone has height, grade and layer.
CRecords Element(const tElement& element);

struct tLayer {
    std::string name;
    bool locked = false;
    bool visible = true;
};

struct tLayout {
    int version = 5;
    std::string author = "An author";
    std::string privateAuthor = "3F3F3F";
    std::string creationDate = "Jan  1. 2001, 00:00:00";
    std::string modificationDate = "Jan  2. 2001, 00:00:00";
    std::string description = "A description";
    std::string freeText = "Free text";
    std::string shortFreeText = "Short free text";
    std::string revision = "1.2";
    char setting408 = 'c';
    /// Keys 409 to 415.
    std::array<int, 7> settings = {4090, 97, 103, 2, 4130, 25, 4150};
    bool showGrid = false;
    int zoom = 75;
    int width = 1234;
    int height = 2345;
    tColour colour = {1, 2, 3};
    std::array<int16_t, 4> rectangle = {-1, -2, 300, 400};
    std::array<float, 5> view = {1.5F, -2.5F, 1000.0F, 0.25F, 9.0F};
    bool terrain = true;
    bool onlyTracks = true;
    int setting428 = 4280;
    int setting429 = 4290;
    bool flag430 = true;
    std::vector<tLayer> layers = {{"Base"}, {"Upper", true, false}};
    std::vector<tElement> elements = {};
    std::vector<int> groups = {}; ///< the integer list
};

/// One entry of the integer list of groups, by indices: its parent, its elements, its member groups.
struct tGroupEntry {
    int parent = -1;
    std::vector<int> elements = {};
    std::vector<int> groups = {};
};
/// Empty for no groups.
std::vector<int> GroupList(const std::vector<tGroupEntry>& entries);

/// Keys 400 to 430 without the layer section and key 423, as far as the version has them.
CRecords Settings(const tLayout& layout);
CRecords LayoutHeader(int version);
CRecords Layout(const tLayout& layout);

/// A track plan of that many elements of all kinds, on several layers, in groups; the same for the same seed. Every
/// text but the layer names is arbitrary.
/// @param turnedTexts  texts may stand in turned elements
tLayout RandomLayout(uint64_t seed, int elements, bool turnedTexts);

/// Pieces for the numbers from 0, one behind the other.
std::string Repeat(size_t times, const std::function<std::string(size_t)>& piece);
/// Records of size 0, which leave what they are asked for as it is.
std::string EmptyRecords(size_t count);
/// An element of as few bytes as one of a library can have, of version 3 and without components.
std::string SmallElement(const std::string& name, const std::string& library);
