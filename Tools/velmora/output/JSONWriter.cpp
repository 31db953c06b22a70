#include "output/CJSONLines.h"
#include "output/CRecordWriter.h"
#include "output/Escapes.h"

static const char* FailureWord(eFailure kind)
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
    case eFailure::kDamaged:
        return "damaged";
    case eFailure::kOutput:
        return "output";
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

JSON::tRecord DescribeFailure(const tFailure& failure)
{
    return JSON::DescribeFailure(FailureCode(failure), failure.message, failure.element);
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

void AppendJSONRecord(std::string& json, const std::string& path, const tAnswer& answer, const tRecordDetails& details,
                      const JSON::tRecord& id)
{
    JSON::tRecord record;
    if (!id.is_null()) {
        record["id"] = id;
    }
    JSON::PutPath(record, "path", path);
    record["ok"] = answer.ok;
    if (answer.ok && !details.type.empty()) {
        record["type"] = details.type;
    }
    if (answer.ok && !details.importer.empty()) {
        JSON::PutPath(record, "importer", details.importer);
    }
    if (!answer.ok) {
        record["error"] = DescribeFailure(answer.failure);
    }
    json += JSON::ToLine(record);
    if (answer.ok) { // long texts are written directly, not copied into the record first
        json.resize(json.size() - 2);
        AppendAttributes(json, answer.attributes);
        json += "}\n";
    }
}

namespace {
class CJSONWriter : public CRecordWriter {
public:
    explicit CJSONWriter(COutput& output) : CRecordWriter(output), mLines(output) {}

    void Write(const std::string& path, const tAnswer& answer) override
    {
        mRecord.clear();
        AppendJSONRecord(mRecord, path, answer, mDetails);
        mLines.WriteLine(mRecord);
    }

private:
    CJSONLines mLines;
    std::string mRecord; ///< kept for its memory
};
} // namespace

std::unique_ptr<CRecordWriter> MakeJSONWriter(COutput& output)
{
    return std::make_unique<CJSONWriter>(output);
}
