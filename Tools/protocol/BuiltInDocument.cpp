#include "protocol/BuiltInDocument.h"

#include "protocol/NamelessFile.h"

#include <cstdint>
#include <string_view>
#include <unistd.h>

/// Records as docs/formats/layout.md describes them, all that a reader asks for and in its order.
/// Numbers are big-endian.
namespace {
class CRecordWriter {
public:
    void Raw(std::string_view bytes) { mBytes.append(bytes); }

    void Record(int key, std::string_view data)
    {
        Raw(Number(static_cast<uint32_t>(key) << 16 | static_cast<uint32_t>(data.size())));
        Raw(data);
    }

    /// One record of so many zero bytes for each of the keys: empty texts, numbers 0, false.
    void Zeros(int firstKey, int lastKey, size_t size)
    {
        for (int key = firstKey; key <= lastKey; ++key) {
            Record(key, std::string(size, '\0'));
        }
    }

    void Text(int key, const std::string& text) { Record(key, std::string_view(text.c_str(), text.size() + 1)); }
    void Int(int key, uint32_t value) { Record(key, Number(value)); }
    void Flag(int key, bool value) { Record(key, std::string(1, value ? '\1' : '\0')); }
    /// A stored double without a fraction.
    void Whole(int key, uint32_t value) { Record(key, Number(value) + Number(0)); }

    std::string Take() { return std::move(mBytes); }

    static std::string Number(uint32_t value)
    {
        std::string bytes;
        for (int shift = 24; shift >= 0; shift -= 8) {
            bytes.push_back(static_cast<char>(value >> shift));
        }
        return bytes;
    }

private:
    std::string mBytes;
};

constexpr size_t kInt = 4;
constexpr size_t kDouble = 8;
constexpr size_t kColour = 6;
constexpr size_t kFontBlock = 256;
} // namespace

static void PutSettings(CRecordWriter& writer)
{
    writer.Zeros(400, 403, 1);
    writer.Text(404, BuiltInDocument::kDescription);
    writer.Zeros(405, 408, 1);
    writer.Zeros(409, 415, kInt);
    writer.Flag(416, false);
    writer.Int(417, 100); // zoom, percent
    writer.Zeros(418, 419, kInt);
    writer.Record(420, std::string(kColour, '\0'));
    writer.Record(421, std::string(8, '\0'));
    writer.Record(422, std::string(20, '\0'));
    writer.Zeros(426, 427, 1);
    writer.Zeros(428, 429, kInt);
    writer.Flag(430, false);
    writer.Int(500, 1);
    writer.Text(501, BuiltInDocument::kLayer);
    writer.Flag(502, false);
    writer.Flag(503, true);
}

static void PutElement(CRecordWriter& writer)
{
    writer.Raw("RCig" + CRecordWriter::Number(4));
    writer.Zeros(207, 211, 1);
    writer.Zeros(212, 214, kInt);
    writer.Int(215, 16); // model scale
    writer.Flag(216, false);
    writer.Zeros(200, 201, kDouble);
    writer.Zeros(218, 225, kDouble);
    writer.Whole(202, 30); // turned, so that whoever measures texts measures this one
    writer.Zeros(203, 204, kColour);
    writer.Flag(205, false);
    writer.Text(217, BuiltInDocument::kLayer);
    writer.Int(206, 1);
}

static void PutText(CRecordWriter& writer)
{
    writer.Int(300, 4);
    writer.Zeros(301, 304, kDouble);
    writer.Zeros(305, 306, 1);
    writer.Zeros(307, 308, kDouble);
    writer.Zeros(309, 309, kInt);
    writer.Zeros(310, 310, kColour);
    writer.Int(324, 12); // size, points
    writer.Int(325, 0);
    std::string font = "\4Sans";
    font.resize(kFontBlock);
    writer.Record(326, font);
    writer.Text(327, BuiltInDocument::kText);
}

std::string BuiltInDocument::MakeBytes()
{
    CRecordWriter writer;
    writer.Raw("WkSt" + CRecordWriter::Number(5));
    PutSettings(writer);
    writer.Int(423, 1);
    PutElement(writer);
    PutText(writer);
    writer.Int(424, 0);
    return writer.Take();
}

CDescriptor BuiltInDocument::Open()
{
    CDescriptor file = MakeNamelessFile();
    const std::string bytes = MakeBytes();
    if (file.IsOpen() && write(file.Get(), bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
        file.Reset();
    }
    return file;
}
