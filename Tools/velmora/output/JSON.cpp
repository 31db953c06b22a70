#include "output/JSON.h"

#include "output/Escapes.h"
#include "protocol/UTF8.h"

std::string JSON::ToLine(const tRecord& record)
{
    return record.dump(-1, ' ', false, tRecord::error_handler_t::replace) + "\n";
}

void JSON::PutPath(tRecord& record, const char* key, const std::string& path)
{
    record[key] = UTF8::MakeValid(path);
    if (!UTF8::IsValid(path)) {
        record[std::string(key) + "_base64"] = Escapes::Base64(path);
    }
}

void JSON::PutPath(CJSONObject& object, const char* key, const std::string& path)
{
    tRecord record;
    PutPath(record, key, path);
    object.PutAll(record);
}

JSON::tRecord JSON::DescribeFailure(const std::string& code, const std::string& message, uint32_t element)
{
    tRecord failure;
    const bool isNumber = code.size() == 1 && code[0] >= '1' && code[0] <= '5';
    failure["code"] = isNumber ? tRecord(code[0] - '0') : tRecord(code);
    if (element > 0) {
        failure["element"] = element;
    }
    failure["message"] = UTF8::MakeValid(message);
    return failure;
}
