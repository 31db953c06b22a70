// The list of parts as a page to print and to take along.
#include "commands/Parts.h"
#include "input/DocumentNames.h"
#include "output/Escapes.h"

namespace {
/// Nothing on the page may load or run anything, whatever a document has got into it.
constexpr char kHead[] =
    "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
    "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; img-src data:; style-src "
    "'unsafe-inline'\" />\n"
    "<meta name=\"viewport\" content=\"width=device-width\" />\n<title>Parts list</title>\n"
    "<style>\n"
    "body { font: 10pt/1.4 \"DejaVu Sans\", Helvetica, Arial, sans-serif; margin: 2em; color: #222; }\n"
    "h1 { font-size: 16pt; margin: 0 0 0.2em; }\n"
    "h2 { font-size: 12pt; margin: 0.8em 0 0.2em; }\n"
    "h3 { font-size: 10pt; margin: 0.8em 0 0; }\n"
    "h2, h3 { break-after: avoid; }\n"
    "p { margin: 0.2em 0; }\n"
    "img { display: block; max-width: 100%; max-height: 110mm; margin: 0.6em 0; }\n"
    "table { border-collapse: collapse; margin: 0.6em 0 1em; width: 100%; }\n"
    "th { text-align: left; border-bottom: 2px solid #444; }\n"
    "td { border-bottom: 1px solid #ccc; }\n"
    "th, td { padding: 0.25em 0.6em 0.25em 0; vertical-align: top; }\n"
    ".number { text-align: right; white-space: nowrap; }\n"
    "tr, div { break-inside: avoid; }\n"
    "@page { size: A4 landscape; margin: 12mm; }\n"
    "@media print { body { margin: 0; font-size: 8pt; } thead { display: table-header-group; } }\n"
    "</style>\n</head>\n<body>\n<h1>Parts list</h1>\n";

std::string Element(const char* name, const std::string& text)
{
    return std::string("<") + name + ">" + Escapes::ForXML(Escapes::ForTerminal(text)) + "</" + name + ">\n";
}

/// What a layout is, in a few lines.
std::string Describe(const tPartsLayout& layout)
{
    std::string text;
    const auto add = [&text](const char* label, const std::string& value) {
        if (!value.empty()) {
            text += (text.empty() ? "" : " · ") + std::string(label) + value;
        }
    };
    add("", layout.author);
    add("revision ", layout.revision);
    add("", layout.date);
    std::string page = "<div>\n" + Element("h2", DocumentNames::NameOfFile(layout.path));
    if (!text.empty()) {
        page += Element("p", text);
    }
    if (!layout.picture.empty()) { // as an image: nothing in it can run
        page += "<img alt=\"Plan\" src=\"data:image/svg+xml;base64," + Escapes::Base64(layout.picture) + "\" />\n";
    }
    return page + "</div>\n";
}

std::string ListAsPage(const tPartsReport& report, const tPartsList& list)
{
    std::string page;
    const auto addLines = [&page](const std::vector<std::string>& lines) {
        for (const std::string& line : lines) {
            page += Element("p", line);
        }
    };
    for (const tPartsGroup& group : Parts::GetGroups(report, list)) {
        const std::string heading = Parts::GetHeading(report, group);
        page += heading.empty() ? "" : Element("h3", heading);
        page += Parts::MakeTable(report, group, true).ToHTML();
        addLines(Parts::SummarizeGroup(report, group));
    }
    addLines(Parts::Summarize(report, list));
    return page;
}
} // namespace

std::string Parts::FormatHTML(const tPartsReport& report)
{
    std::string page = kHead;
    for (const tPartsLayout& layout : report.layouts) {
        page += Describe(layout);
        page += report.perLayout ? ListAsPage(report, layout.list) : "";
    }
    page += report.perLayout ? Element("h2", "All layouts") : "";
    return page + ListAsPage(report, report.total) + "</body>\n</html>\n";
}
