// The records that a command prints for programs.
#pragma once

#include "output/COutput.h"
#include "output/JSON.h"
#include "protocol/Messages.h"

#include <string>
#include <string_view>

/// Writes JSON objects, one a line. The first begins with the number of the schema, so that a reader knows what it has
/// before it looks at anything else.
class CJSONLines {
public:
    explicit CJSONLines(COutput& output) : mOutput(output) {}

    /// @param line  an object with at least one member, and the line break behind it
    void WriteLine(std::string_view line);
    void Write(const JSON::tRecord& record) { WriteLine(JSON::ToLine(record)); }

    /// A record of an input that failed. @param path  any bytes
    void WriteFailure(const std::string& path, const tFailure& failure);

private:
    COutput& mOutput;
    bool mIsFirst = true;
};
