#include "output/CRecordWriter.h"
#include "output/Escapes.h"
#include "protocol/UTF8.h"

const char* FailureWord(eFailure kind)
{
    switch (kind) {
    case eFailure::kTimeout:
        return "timeout";
    case eFailure::kMemory:
        return "memory";
    case eFailure::kPath:
        return "path";
    case eFailure::kPlugIn:
        return "plugin";
    case eFailure::kSandbox:
        return "sandbox";
    case eFailure::kLoader: // has a number
    case eFailure::kCrash:
        break;
    }
    return "crash";
}

std::string FailureCode(const tFailure& failure)
{
    return failure.kind == eFailure::kLoader ? std::to_string(failure.loaderCode) : FailureWord(failure.kind);
}

static void AppendMember(std::string& json, std::string_view key, std::string_view text)
{
    Escapes::AppendJSON(json, key);
    json += ':';
    Escapes::AppendJSON(json, text);
}

/// A text of any bytes, and a second member with the exact ones where the first cannot have them.
static void AppendBytes(std::string& json, const std::string& key, const std::string& bytes)
{
    if (UTF8::IsValid(bytes)) {
        AppendMember(json, key, bytes);
        return;
    }
    AppendMember(json, key, UTF8::MakeValid(bytes));
    json += ',';
    AppendMember(json, key + "_base64", Escapes::Base64(bytes));
}

static void AppendAttributes(std::string& json, const std::vector<tAttribute>& attributes)
{
    json += ",\"attributes\":{";
    bool first = true;
    for (const tAttribute& attribute : attributes) {
        json += first ? "" : ",";
        first = false;
        Escapes::AppendJSON(json, attribute.key);
        json += ':';
        if (!attribute.isList) {
            Escapes::AppendJSON(json, attribute.texts.front());
            continue;
        }
        json += '[';
        for (size_t i = 0; i < attribute.texts.size(); ++i) {
            json += i > 0 ? "," : "";
            Escapes::AppendJSON(json, attribute.texts[i]);
        }
        json += ']';
    }
    json += '}';
}

static void AppendFailure(std::string& json, const tFailure& failure)
{
    json += ",\"error\":{\"code\":";
    if (failure.kind == eFailure::kLoader) {
        json += std::to_string(failure.loaderCode);
    } else {
        Escapes::AppendJSON(json, FailureWord(failure.kind));
    }
    if (failure.element > 0) {
        json += ",\"element\":" + std::to_string(failure.element);
    }
    json += ',';
    AppendMember(json, "message", UTF8::MakeValid(failure.message));
    json += '}';
}

void AppendJSONRecord(std::string& json, const std::string& path, const tAnswer& answer, const tRecordDetails& details,
                      const std::string& id)
{
    json += id.empty() ? "{" : "{\"id\":" + id + ",";
    AppendBytes(json, "path", path);
    json += answer.ok ? ",\"ok\":true" : ",\"ok\":false";
    if (answer.ok && !details.type.empty()) {
        json += ',';
        AppendMember(json, "type", details.type);
    }
    if (answer.ok && !details.importer.empty()) {
        json += ',';
        AppendBytes(json, "importer", details.importer);
    }
    if (answer.ok) {
        AppendAttributes(json, answer.attributes);
    } else {
        AppendFailure(json, answer.failure);
    }
    json += "}\n";
}

namespace {
class CJSONWriter : public CRecordWriter {
public:
    using CRecordWriter::CRecordWriter;

    void Write(const std::string& path, const tAnswer& answer) override
    {
        mRecord.clear();
        AppendJSONRecord(mRecord, path, answer, mDetails);
        mOutput.Write(mRecord);
    }

private:
    std::string mRecord; ///< kept for its memory
};
} // namespace

std::unique_ptr<CRecordWriter> MakeJSONWriter(COutput& output)
{
    return std::make_unique<CJSONWriter>(output);
}
