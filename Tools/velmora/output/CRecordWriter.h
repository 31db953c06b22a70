// One record per input, in one of the formats.
#pragma once

#include "output/COutput.h"
#include "protocol/Messages.h"

#include <memory>
#include <string>
#include <string_view>

/// Writes the answers of an import. What is written becomes visible with the output's next Flush.
class CRecordWriter {
public:
    explicit CRecordWriter(COutput& output) : mOutput(output) {}
    virtual ~CRecordWriter() = default;
    CRecordWriter(const CRecordWriter&) = delete;
    CRecordWriter& operator=(const CRecordWriter&) = delete;

    /// Before the first record.
    virtual void Begin() {}
    /// @param path  as the user gave it, or as the walk found it; any bytes
    virtual void Write(const std::string& path, const tAnswer& answer) = 0;
    /// After the last record, also when the run was interrupted.
    virtual void End() {}

protected:
    COutput& mOutput;
};

/// For people: attributes with labels; failures go to standard error.
std::unique_ptr<CRecordWriter> MakeTextWriter(COutput& output);
/// For programs: one JSON object a line.
std::unique_ptr<CRecordWriter> MakeJSONWriter(COutput& output);
/// An XML property list: an array of dictionaries with the members of the JSON objects.
std::unique_ptr<CRecordWriter> MakePropertyListWriter(COutput& output);

/// A failure's code in records: the loader's number as a number, else the word.
const char* FailureWord(eFailure kind);
/// The same as a text: "1" to "5", or the word.
std::string FailureCode(const tFailure& failure);
