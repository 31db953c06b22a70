#include "Properties.h"
#include "commands/ServeRequest.h"
#include "input/CLineReader.h"
#include "output/Escapes.h"
#include "protocol/UTF8.h"

#include <algorithm>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {
/// The lines of a stream that comes in pieces of at most so many bytes.
std::vector<std::string> Lines(std::string_view text, size_t piece)
{
    int ends[2];
    if (pipe(ends) != 0) {
        return {};
    }
    CDescriptor stream(ends[0]);
    CLineReader reader(std::move(stream), '\n');
    CDescriptor writer(ends[1]);
    std::vector<std::string> lines;
    std::string line;
    for (CLineReader::eResult result = CLineReader::eResult::kNotYet; result != CLineReader::eResult::kEnd;) {
        const ssize_t written = writer.IsOpen() ? write(writer.Get(), text.data(), std::min(piece, text.size())) : 0;
        text.remove_prefix(written > 0 ? static_cast<size_t>(written) : 0);
        if (text.empty()) {
            writer.Reset();
        }
        for (result = reader.Next(line); result == CLineReader::eResult::kLine; result = reader.Next(line)) {
            lines.push_back(line);
        }
    }
    return lines;
}

/// An answer to a request, as good as none of its kind can be.
tAnswer MakeAnswer(const tServeRequest& request, const std::string& line)
{
    tAnswer answer = MakeFailure(eFailure::kPath, "there is none");
    answer.ok = line.size() % 2 == 0;
    answer.report = line.size() % 3 == 0 ? "{}" : line; // a caller's line is as good a report as a bad worker's
    answer.picture = request.path;
    return answer;
}

std::string OfLine(const std::string& line)
{
    tServeRequest request;
    const std::string problem = ServeRequest::Parse(line, request);
    const std::string text = problem.empty() ? ServeRequest::Answer(request, MakeAnswer(request, line))
                                             : ServeRequest::Refuse(request.id, problem);
    const JSON::tRecord record = JSON::tRecord::parse(text, nullptr, false);
    if (!record.is_object() || text.find('\n') != text.size() - 1) {
        return "the answer is no line of JSON: " + text;
    }
    const bool isSame = request.id.is_null() ? !record.contains("id") : record.begin().value() == request.id;
    const bool isPath = !problem.empty() || record["path"] == request.path || !UTF8::IsValid(request.path);
    const bool isWhole = record.value("ok", true) != record.contains("error");
    std::string picture;
    const bool isPicture = !record.contains("data") ||
                           (Escapes::FromBase64(record["data"].get<std::string>(), picture) && picture == request.path);
    return isSame && isPath && isWhole && isPicture ? "" : "the answer is to another request: " + text;
}
} // namespace

std::string Properties::Serve(std::string_view input)
{
    const std::vector<std::string> lines = Lines(input, 4096);
    if (lines != Lines(input, input.size() % 7 + 1)) {
        return "lines depend on how they arrive";
    }
    for (const std::string& line : lines) {
        if (const std::string problem = OfLine(line); !problem.empty()) {
            return problem;
        }
    }
    return {};
}
