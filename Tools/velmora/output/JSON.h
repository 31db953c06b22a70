// Records in JSON, as commands print them: an object a line.
#pragma once

#include "protocol/CJSONObject.h"
#include "protocol/Messages.h"

#include <nlohmann/json.hpp>

#include <string>

namespace JSON {
using tRecord = nlohmann::ordered_json;

/// The number of the schema that records follow (docs/cli.schema.json). It changes when a member is renamed, removed or
/// gets another meaning; not when one is added.
inline constexpr int kSchema = 1;

/// A record as a line of its own. Bytes that are not UTF-8 are replaced.
std::string ToLine(const tRecord& record);

/// Puts in a path of any bytes; where it is not UTF-8, also a member KEY_base64 with the exact ones.
void PutPath(tRecord& record, const char* key, const std::string& path);
void PutPath(CJSONObject& object, const char* key, const std::string& path);

/// What a record says of a failure, as its member "error".
/// @param code     "1" to "5", which become numbers, or a word
/// @param element  the failed element, counted from 1; 0 where no element failed
tRecord DescribeFailure(const std::string& code, const std::string& message, uint32_t element = 0);
} // namespace JSON
