// How much is read and made: at each bound everything is taken, and nothing one beyond.
#include "Bounds.h"
#include "Checks/CDocumentChecker.h"
#include "ExitCodes.h"
#include "Platform/Drawing.h"
#include "ProgramRun.h"
#include "index/CQuery.h"
#include "input/CLineReader.h"
#include "protocol/CFrameReader.h"
#include "protocol/Messages.h"
#include "protocol/NamelessFile.h"
#include "support/DocumentBuilder.h"

#include <functional>
#include <unistd.h>

namespace {
std::string Repeat(const char* text, size_t count)
{
    return ::Repeat(count, [text](size_t) { return text; });
}

bool IsQuery(const std::string& text)
{
    return CQuery(text, [](std::string_view) { return size_t{1}; }).IsGood();
}

bool IsLine(size_t length)
{
    CDescriptor file = MakeNamelessFile();
    const std::string text = std::string(length, 'x') + "\n";
    EXPECT_EQ(pwrite(file.Get(), text.data(), text.size(), 0), std::ssize(text));
    CLineReader lines(std::move(file), '\n');
    std::string line;
    return lines.Next(line) == CLineReader::eResult::kLine;
}

/// Whether a frame may claim so many bytes.
bool IsFrame(size_t most, size_t size)
{
    CDescriptor one;
    CDescriptor other;
    unsigned char header[kFrameHeaderSize];
    EncodeHeader(eFrameKind::kAnswer, 1, size, header);
    EXPECT_TRUE(MakeSocketPair(one, other));
    EXPECT_EQ(write(one.Get(), header, sizeof header), std::ssize(header));
    tFrame frame;
    return CFrameReader(other.Get(), most).Read(frame) == CFrameReader::eResult::kMore;
}

bool IsReport(const std::string& text)
{
    tAnswer answer;
    answer.report = text;
    return IsAffordable(answer, 0);
}

/// Whether all is said about a layout that has so many things to say about.
bool IsSaid(size_t findings)
{
    tLayout layout;
    layout.layers.assign(findings + 1, {"twice"});
    const std::string bytes = Layout(layout).Bytes();
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
    return CDocumentChecker::CheckLayout({data, data + bytes.size()}).size() == findings;
}

bool IsPicture(int width, int height)
{
    return Platform::BeginPicture(Platform::ePictureFormat::kSVG, width, height) != nullptr;
}

/// Whether the host takes an option of that value. It then fails for want of a document.
bool IsOption(std::vector<std::string> command, const std::string& option, size_t value, const std::string& behind = "")
{
    command.insert(command.begin() + 1, {option, std::to_string(value) + behind});
    command.push_back(TestPath("missing"));
    const int status = RunVelmora(command).status;
    EXPECT_TRUE(status == kExitFailed || status == kExitUsage);
    return status == kExitFailed;
}
} // namespace

TEST(Bounds, TakeAllUpToThemAndNothingBeyond)
{
    const struct {
        const char* what;
        size_t most;
        std::function<bool(size_t)> takes;
    } bounds[] = {
        {"levels of a query", Bounds::kDeepestQuery,
         [](size_t n) { return IsQuery(Repeat("(", n) + "a" + Repeat(")", n)); }},
        {"terms of a query", Bounds::kMostQueryTerms, [](size_t n) { return IsQuery(Repeat("a ", n)); }},
        {"bytes of a query", Bounds::kMostQueryBytes, [](size_t n) { return IsQuery(std::string(n, 'a')); }},
        {"bytes of a line", Bounds::kMostLineBytes, IsLine},
        {"bytes of a request", Bounds::kMostRequestBytes,
         [](size_t n) { return IsFrame(Bounds::kMostRequestBytes, n); }},
        {"bytes of an answer", Bounds::kMostAnswerBytes, [](size_t n) { return IsFrame(Bounds::kMostAnswerBytes, n); }},
        {"levels of a report", Bounds::kDeepestReport,
         [](size_t n) { return IsReport(Repeat("[", n) + Repeat("]", n)); }},
        {"values of a report", Bounds::kBaseValues, [](size_t n) { return IsReport("[" + Repeat(",", n - 1) + "]"); }},
        {"findings", Bounds::kMostFindings, IsSaid},
        {"side of a picture", Bounds::kMostPictureSide, [](size_t n) { return IsPicture(1, static_cast<int>(n)); }},
        {"pixels of a picture", 8000, [](size_t n) { return IsPicture(6250, static_cast<int>(n)); }},
        {"side to be drawn", Bounds::kMostPictureSide,
         [](size_t n) { return IsOption({"render"}, "--size", n, "x1"); }},
        {"side of a thumbnail", Bounds::kMostThumbnailSide,
         [](size_t n) {
             return IsOption({"thumbnail", TestPath("missing")}, "--size", n);
         }},
        {"seconds", static_cast<size_t>(Bounds::kMostDocumentSeconds),
         [](size_t n) { return IsOption({"import"}, "--timeout", n); }},
        {"megabytes", Bounds::kMostWorkerMegabytes, [](size_t n) { return IsOption({"import"}, "--memory", n); }},
    };
    EXPECT_EQ(Bounds::kMostPicturePixels, 8000 * 6250);
    for (const auto& bound : bounds) {
        EXPECT_TRUE(bound.takes(bound.most)) << bound.what;
        EXPECT_FALSE(bound.takes(bound.most + 1)) << bound.what;
    }
}
