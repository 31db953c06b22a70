#include "output/CJSONLines.h"

#include "output/CRecordWriter.h"

void CJSONLines::WriteLine(std::string_view line)
{
    if (mIsFirst) {
        mOutput.Write("{\"schema\":" + std::to_string(JSON::kSchema) + ",");
        line.remove_prefix(1);
        mIsFirst = false;
    }
    mOutput.Write(line);
}

void CJSONLines::WriteFailure(const std::string& path, const tFailure& failure)
{
    tAnswer answer;
    answer.failure = failure;
    std::string line;
    AppendJSONRecord(line, path, answer, {});
    WriteLine(line);
}
