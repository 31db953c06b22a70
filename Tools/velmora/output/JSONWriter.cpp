#include "output/CRecordWriter.h"
#include "output/Escapes.h"
#include "protocol/UTF8.h"

#include <nlohmann/json.hpp>

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

namespace {
class CJSONWriter : public CRecordWriter {
public:
    using CRecordWriter::CRecordWriter;

    void Write(const std::string& path, const tAnswer& answer) override
    {
        nlohmann::ordered_json record;
        record["path"] = UTF8::MakeValid(path);
        if (!UTF8::IsValid(path)) {
            record["path_base64"] = Escapes::Base64(path);
        }
        record["ok"] = answer.ok;
        if (answer.ok) {
            nlohmann::ordered_json attributes = nlohmann::ordered_json::object();
            for (const tAttribute& attribute : answer.attributes) {
                if (attribute.isList) {
                    attributes[attribute.key] = attribute.texts;
                } else {
                    attributes[attribute.key] = attribute.texts.front();
                }
            }
            record["attributes"] = std::move(attributes);
        } else {
            nlohmann::ordered_json error;
            if (answer.failure.kind == eFailure::kLoader) {
                error["code"] = answer.failure.loaderCode;
            } else {
                error["code"] = FailureWord(answer.failure.kind);
            }
            if (answer.failure.element > 0) {
                error["element"] = answer.failure.element;
            }
            error["message"] = answer.failure.message;
            record["error"] = std::move(error);
        }
        mOutput.Write(record.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
        mOutput.Write("\n");
    }
};
} // namespace

std::unique_ptr<CRecordWriter> MakeJSONWriter(COutput& output)
{
    return std::make_unique<CJSONWriter>(output);
}
