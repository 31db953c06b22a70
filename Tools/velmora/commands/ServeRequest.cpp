#include "commands/ServeRequest.h"

#include "Bounds.h"
#include "commands/Parts.h"
#include "commands/PictureWish.h"
#include "commands/Reports.h"
#include "commands/Suggestion.h"
#include "output/CRecordWriter.h"
#include "output/Escapes.h"

#include <algorithm>

using nlohmann::json;

const std::vector<std::string>& ServeRequest::GetVerbs()
{
    static const std::vector<std::string> sVerbs = {"import", "check", "parts", "render", "thumbnail", "search"};
    return sVerbs;
}

static std::string Join(const std::vector<std::string>& words)
{
    std::string list;
    for (const std::string& word : words) {
        list += (list.empty() ? "" : ", ") + word;
    }
    return list;
}

/// Takes a member that need not be there. @return what is wrong with it, or empty
template <typename tValue>
static std::string Take(const json& object, const char* name, bool (json::*isRight)() const noexcept, const char* kind,
                        tValue& value)
{
    const auto found = object.find(name);
    if (found == object.end()) {
        return {};
    }
    if (!(*found.*isRight)()) {
        return std::string("\"") + name + "\" must be " + kind;
    }
    value = found->get<tValue>();
    return {};
}

static std::string TakeText(const json& object, const char* name, std::string& text)
{
    return Take(object, name, &json::is_string, "a string", text);
}

static std::string TakeFlag(const json& object, const char* name, bool& flag)
{
    return Take(object, name, &json::is_boolean, "true or false", flag);
}

static std::string TakeVerb(const json& object, eServed& verb)
{
    const std::vector<std::string>& verbs = ServeRequest::GetVerbs();
    std::string word = verbs.front();
    if (std::string problem = TakeText(object, "verb", word); !problem.empty()) {
        return problem;
    }
    const auto found = std::find(verbs.begin(), verbs.end(), word);
    verb = static_cast<eServed>(found == verbs.end() ? 0 : found - verbs.begin());
    return found != verbs.end() ? ""
                                : "there is no verb '" + word + "', but " + Join(verbs) + Suggestion::Ask(word, verbs);
}

static std::string TakePath(const json& object, std::string& path)
{
    const bool isEncoded = object.contains("path_base64");
    const char* const member = isEncoded ? "path_base64" : "path";
    if (!object.contains(member) || !object[member].is_string()) {
        return "there is no \"path\", or it is no string";
    }
    const std::string text = object[member].get<std::string>();
    if (!isEncoded) {
        path = text;
    } else if (!Escapes::FromBase64(text, path)) {
        return "\"path_base64\" is not in base 64";
    }
    return {};
}

static std::string TakeOutput(const json& object, tServeRequest& request)
{
    std::string problem = TakeText(object, "output", request.output);
    problem = problem.empty() ? TakeFlag(object, "force", request.force) : problem;
    if (problem.empty() && !request.output.empty() &&
        (request.output[0] != '/' || request.output.find('\0') != std::string::npos)) {
        return "\"output\" must be an absolute path";
    }
    return problem;
}

static std::string TakeLayers(const json& object, std::vector<std::string>& layers)
{
    const auto found = object.find("layers");
    size_t bytes = 0;
    if (found == object.end()) {
        return {};
    }
    if (!found->is_array() ||
        !std::all_of(found->begin(), found->end(), [](const json& name) { return name.is_string(); })) {
        return "\"layers\" must be a list of strings";
    }
    for (const json& name : *found) {
        layers.push_back(name.get<std::string>());
        bytes += layers.back().size() + sizeof(uint32_t);
    }
    return bytes <= Bounds::kMostRequestBytes / 2 ? "" : "\"layers\" is too long";
}

static std::string TakeThumbnail(const json& object, tServeRequest& request)
{
    int64_t side = 256;
    std::string problem = Take(object, "size", &json::is_number_integer, "a number of pixels", side);
    if (problem.empty() && !PictureWish::ParseSide(std::to_string(side), request.picture)) {
        problem = "\"size\": " + std::to_string(side) + " " + PictureWish::kNoSide;
    }
    return problem.empty() ? TakeOutput(object, request) : problem;
}

static std::string TakeRendering(const json& object, tServeRequest& request)
{
    tPictureWish& wish = request.picture;
    std::string size;
    std::string format;
    for (const std::string& problem :
         {TakeText(object, "size", size), TakeText(object, "format", format), TakeText(object, "style", wish.style),
          TakeFlag(object, "labels", wish.hasLabels), TakeFlag(object, "grid", wish.hasGrid),
          TakeLayers(object, wish.layers), TakeOutput(object, request)}) {
        if (!problem.empty()) {
            return problem;
        }
    }
    if (!size.empty() && !PictureWish::ParseSize(size, wish)) {
        return "\"size\": '" + size + "' " + PictureWish::kNoSize;
    }
    const std::vector<std::string>& styles = PictureWish::GetStyles();
    if (!wish.style.empty() && std::find(styles.begin(), styles.end(), wish.style) == styles.end()) {
        return "\"style\": '" + wish.style + "' is none of " + Join(styles) + Suggestion::Ask(wish.style, styles);
    }
    const std::optional<ePictureKind> kind = PictureWish::FindKind(format, request.output);
    if (!kind && !(format.empty() && request.output.empty())) {
        return "\"format\" must be svg, png or pdf, or \"output\" end like one of them";
    }
    wish.kind = kind.value_or(ePictureKind::kSVG);
    return {};
}

static std::string TakeSearch(const json& object, tSearchQuestion& question)
{
    static const std::vector<std::string> sOrders = {"relevance", "name", "modified", "author"}; // as eSearchOrder
    std::string sort = sOrders.front();
    tSearchWish& wish = question.wish;
    wish.limit = Bounds::kUsualServedHits;
    for (const std::string& problem :
         {TakeText(object, "query", question.query), TakeText(object, "only_in", wish.folder),
          TakeText(object, "sort", sort), TakeFlag(object, "exact", question.wholeWords),
          Take(object, "limit", &json::is_number_unsigned, "a number", wish.limit),
          Take(object, "offset", &json::is_number_unsigned, "a number", wish.offset)}) {
        if (!problem.empty()) {
            return problem;
        }
    }
    const auto order = std::find(sOrders.begin(), sOrders.end(), sort);
    wish.order = static_cast<eSearchOrder>(order == sOrders.end() ? 0 : order - sOrders.begin());
    return !object.contains("query") ? "there is no \"query\""
           : order == sOrders.end()  ? "\"sort\": '" + sort + "' is none of " + Join(sOrders)
           : wish.offset < 0         ? "\"offset\" is too large"
           : wish.limit < 1 || wish.limit > Bounds::kMostServedHits
               ? "\"limit\" must be from 1 to " + std::to_string(Bounds::kMostServedHits)
               : "";
}

std::string ServeRequest::Parse(const std::string& line, tServeRequest& request)
{
    const json object = json::parse(line, nullptr, false);
    if (!object.is_object()) {
        return "the line is no JSON object";
    }
    if (object.contains("id")) {
        if (!object["id"].is_string() && !object["id"].is_number()) {
            return "\"id\" must be a string or a number";
        }
        request.id = object["id"];
    }
    std::string problem = TakeVerb(object, request.verb);
    if (problem.empty() && request.verb == eServed::kSearch) {
        return TakeSearch(object, request.question);
    }
    problem = problem.empty() ? TakePath(object, request.path) : problem;
    if (!problem.empty() || !request.IsPicture()) {
        return problem;
    }
    return request.verb == eServed::kRender ? TakeRendering(object, request) : TakeThumbnail(object, request);
}

/// Puts an object's members behind those of a record. @param object  as text, with at least one member
static std::string Append(const JSON::tRecord& record, std::string_view object)
{
    if (record.empty()) {
        return std::string(object);
    }
    std::string line = JSON::ToLine(record);
    line.resize(line.size() - 2);
    return (line += ',').append(object.substr(1));
}

static std::string DescribePicture(const tServeRequest& request, const JSON::tRecord& front, const tAnswer& answer,
                                   const CReport& report)
{
    std::string line =
        Append(front, JSON::ToLine(PictureWish::Describe(request.path, request.output, request.picture.kind, report)));
    if (request.output.empty()) {
        line.resize(line.size() - 2);
        line += ",\"data\":\"" + Escapes::Base64(answer.picture) + "\"}\n";
    }
    return line;
}

std::string ServeRequest::Answer(const tServeRequest& request, tAnswer answer)
{
    CReport report;
    if (answer.ok && request.IsPicture() && request.output.empty() &&
        answer.picture.size() > Bounds::kMostServedPicture) {
        answer = MakeFailure(eFailure::kOutput, "the picture is too large for an answer: name an \"output\"");
    }
    if (answer.ok && request.verb != eServed::kImport && !CReport::Parse(std::move(answer.report), report)) {
        answer = MakeFailure(eFailure::kCrash, "the worker's report is out of form");
    }
    if (!answer.ok || request.verb == eServed::kImport) {
        std::string line;
        AppendJSONRecord(line, request.path, answer, {}, request.id);
        return line;
    }
    JSON::tRecord front = JSON::tRecord::object();
    if (!request.id.is_null()) {
        front["id"] = request.id;
    }
    if (request.IsPicture()) {
        return DescribePicture(request, front, answer, report);
    }
    if (request.verb == eServed::kCheck) {
        return Append(front, Reports::CheckInJSON(request.path, report));
    }
    JSON::PutPath(front, "path", request.path);
    tPartsReport parts;
    Parts::AddLayout(parts.total, report);
    Parts::Mark(parts.total, {});
    return Append(front, Parts::FormatJSON(parts));
}

std::string ServeRequest::Refuse(const JSON::tRecord& id, const std::string& problem, const char* code)
{
    JSON::tRecord record;
    if (!id.is_null()) {
        record["id"] = id;
    }
    record["ok"] = false;
    record["error"] = JSON::DescribeFailure(code, problem);
    return JSON::ToLine(record);
}
