#include "Properties.h"
#include "commands/Parts.h"
#include "commands/Reports.h"
#include "output/CRecordWriter.h"
#include "output/Escapes.h"
#include "protocol/CDescriptor.h"
#include "protocol/UTF8.h"

#include <algorithm>
#include <cstring>
#include <pugixml.hpp>
#include <sys/mman.h>

namespace {
/// Takes values from the input's bytes; zeros behind its end.
class CBytes {
public:
    explicit CBytes(std::string_view bytes) : mBytes(bytes) {}

    bool IsEmpty() const { return mBytes.empty(); }
    unsigned Byte() { return static_cast<unsigned char>(Take(1)[0]); }
    std::string_view Rest() const { return mBytes; }

    template <typename tNumber>
    tNumber Number()
    {
        tNumber number = 0;
        memcpy(&number, Take(sizeof number).data(), sizeof number);
        return number;
    }

    std::string Text() { return UTF8::MakeValid(Take(Byte() % 24)); }

private:
    std::string Take(size_t count)
    {
        std::string taken(mBytes.substr(0, count));
        mBytes.remove_prefix(taken.size());
        taken.resize(count);
        return taken;
    }

    std::string_view mBytes;
};

constexpr const char* kKeys[] = {
    "findings",     "reader",      "kind",     "offset", "element",         "component", "key",     "damage",
    "text",         "code",        "elements", "lost",   "articles",        "number",    "library", "description",
    "manufacturer", "price",       "currency", "count",  "length",          "radius",    "arc",     "maximum_length",
    "scale",        "content",     "gauge",    "name",   "items",           "parts",     "scales",  "track_length",
    "tracks",       "accessories", "graphics", "texts",  "flexible_tracks", "strays",    "stray",   "labels_left_out",
    "layers",       "layer",       "lengths",  "line",   "author",          "revision",  "entries", "place"};

/// A value with members and entries of the names that the commands ask for.
nlohmann::json MakeValue(CBytes& bytes, int depth)
{
    switch (bytes.Byte() % (depth < 4 ? 10 : 6)) {
    case 0:
        return bytes.Number<int64_t>();
    case 1:
        return bytes.Number<double>(); // what JSON has no number for becomes null
    case 2:
        return bytes.Byte();
    case 3:
        return bytes.Byte() % 2 != 0;
    case 4:
    case 5:
        return bytes.Text();
    case 6: {
        nlohmann::json list = nlohmann::json::array();
        for (unsigned n = bytes.Byte() % 6; n > 0; --n) {
            list.push_back(MakeValue(bytes, depth + 1));
        }
        return list;
    }
    default: {
        nlohmann::json object = nlohmann::json::object();
        for (unsigned n = bytes.Byte() % 12; n > 0; --n) {
            const char* const key = kKeys[bytes.Byte() % std::size(kKeys)];
            object[key] = MakeValue(bytes, depth + 1);
        }
        return object;
    }
    }
}

std::string WrongText(const std::string& text)
{
    size_t at = 0;
    for (size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', at)) {
        const std::string line = text.substr(at, end - at);
        if (Escapes::ForTerminal(line) != line) {
            return "a text with control characters: " + text;
        }
        at = end + 1;
    }
    return at == text.size() ? "" : "a text that ends within a line: " + text;
}

/// A terminal on which hardly anything fits.
const tLook kNarrow = {40, true, false};

/// Numbers are shown whole, so a table may be wider than a terminal; a text alone is not.
std::string WrongTable(const CTable& table)
{
    const std::string text = table.ToText();
    for (const std::string& line : Terminal::Wrap(text, kNarrow.width)) {
        if (Terminal::CountColumns(line) > kNarrow.width || Escapes::ForTerminal(line) != line) {
            return "a line that does not fit: " + line;
        }
    }
    const std::string problem = WrongText(text);
    return problem.empty() ? WrongText(table.ToText(kNarrow)) : problem;
}

std::string WrongJSON(const std::string& text)
{
    size_t at = 0;
    for (size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', at)) {
        if (!nlohmann::json::parse(text.substr(at, end - at), nullptr, false).is_object()) {
            return "a line that is no JSON object: " + text;
        }
        at = end + 1;
    }
    return at == text.size() && UTF8::IsValid(text) ? "" : "JSON that is cut or no UTF-8: " + text;
}

std::string WrongCSV(const CTable& table)
{
    const std::string text = table.ToCSV();
    size_t cells = 1;
    size_t columns = 0;
    bool quoted = false;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '"') {
            quoted = !quoted;
        } else if (!quoted && text[i] == ',') {
            ++cells;
        } else if (!quoted && text.substr(i, 2) == "\r\n") {
            columns = columns == 0 ? cells : columns;
            if (cells != columns) {
                return "a table with rows of different length: " + text;
            }
            cells = 1;
            ++i;
        } else if (!quoted && (text[i] == '\r' || text[i] == '\n')) {
            return "a line break within a row: " + text;
        }
    }
    std::string shown = table.ToCSV(true);
    shown.erase(std::remove(shown.begin(), shown.end(), '\r'), shown.end());
    return quoted || cells != 1 ? "a table that is cut: " + text : WrongText(shown);
}

std::string WrongXML(const std::string& text)
{
    const bool clean = std::none_of(text.begin(), text.end(), [](char character) {
        return static_cast<unsigned char>(character) < 0x20 && character != '\t' && character != '\n';
    });
    pugi::xml_document document;
    return clean && UTF8::IsValid(text) && document.load_buffer(text.data(), text.size()) ? "" : "no XML: " + text;
}

/// A page is XML but for its first line and one element without an end.
std::string WrongHTML(std::string text)
{
    for (const std::string_view part : {"<!DOCTYPE html>", "<meta charset=\"utf-8\">"}) {
        const size_t at = text.find(part);
        text.erase(std::min(at, text.size()), at < text.size() ? part.size() : 0);
    }
    return WrongXML(text);
}

std::string WrongList(const std::string& text)
{
    pugi::xml_document document;
    document.load_buffer(text.data(), text.size());
    for (const pugi::xml_node& entry : document.child("plist").child("array")) {
        bool isKey = true;
        for (const pugi::xml_node& child : entry) {
            if ((strcmp(child.name(), "key") == 0) != isKey) {
                return "a dictionary with a key too many or too few: " + text;
            }
            isKey = !isKey;
        }
    }
    return WrongXML(text);
}

/// What a writer makes of an answer.
template <typename tMake>
std::string Written(tMake make, const std::string& path, const tAnswer& answer)
{
    const CDescriptor file(memfd_create("output", MFD_CLOEXEC));
    COutput output(file.Get());
    const std::unique_ptr<CRecordWriter> writer = make(output);
    writer->SetDetails({"com.velmora.layout", path});
    writer->Begin();
    writer->Write(path, answer);
    writer->End();
    output.Flush();
    std::string text(static_cast<size_t>(lseek(file.Get(), 0, SEEK_END)), '\0');
    const ssize_t count = pread(file.Get(), text.data(), text.size(), 0);
    return count < 0 ? "" : text;
}

std::string First(const std::vector<std::string>& problems)
{
    const auto found = std::find_if(problems.begin(), problems.end(), [](const auto& text) { return !text.empty(); });
    return found == problems.end() ? "" : *found;
}

std::string OfRecord(const std::string& path, std::string_view message)
{
    tAnswer answer;
    if (!Decode(message, answer)) {
        return {};
    }
    if (answer.verb == eVerb::kSchema) {
        return First(
            {WrongText(Reports::SchemaAsText(answer.schema)), WrongJSON(Reports::SchemaInJSON(answer.schema))});
    }
    const auto makeText = [&path](COutput& output) {
        return MakeTextWriter(output, path.size() % 2 == 0 ? tLook() : kNarrow);
    };
    return First({answer.ok ? WrongText(Written(makeText, path, answer)) : "",
                  WrongJSON(Written(MakeJSONWriter, path, answer)),
                  WrongList(Written(MakePropertyListWriter, path, answer))});
}

std::string OfParts(const std::string& path, CBytes& bytes, const CReport& layout)
{
    tPartsReport report;
    const unsigned form = bytes.Byte();
    report.hasStock = form % 2 != 0;
    report.toBuyOnly = form % 4 >= 2;
    report.perLayout = form % 8 >= 4;
    report.grouping = static_cast<eGrouping>(form / 8 % 3);
    report.currencies.Add("129=EUR:" + std::to_string(form / 32));
    const auto add = [&](const CReport& one) {
        Parts::AddLayout(report.total, one, true);
        report.layouts.push_back({path, one.GetText("author"), one.GetText("revision"), "", bytes.Text(), {}});
        Parts::AddLayout(report.layouts.back().list, one, true);
    };
    add(layout);
    for (unsigned n = bytes.Byte() % 3; n > 0; --n) {
        CReport more;
        CReport::Parse(MakeValue(bytes, 0).dump(), more);
        add(more);
    }
    for (auto& [key, part] : report.total.parts) {
        part.inStock = bytes.Number<int64_t>();
        part.toBuy = bytes.Number<int64_t>();
    }
    Parts::Mark(report.total, {{bytes.Text(), {bytes.Text()}}});
    return First({WrongText(Parts::FormatText(report, {})),
                  WrongTable(Parts::MakeTable(report, Parts::GetGroups(report, report.total)[0])),
                  WrongJSON(Parts::FormatJSON(report)), WrongCSV(Parts::MakePlainTable(report)),
                  WrongHTML(Parts::FormatHTML(report))});
}
} // namespace

std::string Properties::Report(std::string_view input)
{
    CBytes bytes(input);
    const unsigned form = bytes.Byte();
    const std::string path = bytes.Text();
    if (form % 4 == 0) {
        return OfRecord(path, bytes.Rest());
    }
    CReport report;
    const bool isMade = form >= 128;
    const std::string text = isMade ? MakeValue(bytes, 0).dump() : std::string(bytes.Rest());
    if (!UTF8::IsValid(text) || !CReport::Parse(text, report)) {
        return {};
    }
    switch (form % 4) {
    case 1:
        return First({WrongText(Reports::CheckAsText(path, report)), WrongJSON(Reports::CheckInJSON(path, report))});
    case 2:
        return First({WrongText(Escapes::ForTerminal(Reports::LibraryHeading(path, report)) + "\n"),
                      WrongJSON(Reports::LibraryInJSON(path, report)), WrongTable(Reports::ArticleTable(path, report)),
                      WrongCSV(Reports::ArticleTable(path, report))});
    default:
        return OfParts(path, bytes, report);
    }
}
