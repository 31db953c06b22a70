// One record per input, in one of the formats.
#pragma once

#include "output/COutput.h"
#include "output/JSON.h"
#include "output/Terminal.h"
#include "protocol/Messages.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// What a record says about its document besides the answer.
struct tRecordDetails {
    std::string type;     ///< uniform type identifier; empty to leave it out
    std::string importer; ///< path of the plug-in, any bytes; empty to leave it out
};

/// Writes the answers of an import. What is written becomes visible when the output is flushed.
class CRecordWriter {
public:
    explicit CRecordWriter(COutput& output) : mOutput(output) {}
    virtual ~CRecordWriter() = default;
    CRecordWriter(const CRecordWriter&) = delete;
    CRecordWriter& operator=(const CRecordWriter&) = delete;

    /// What every record of a good document says from now on.
    void SetDetails(tRecordDetails details) { mDetails = std::move(details); }

    /// Before the first record.
    virtual void Begin() {}
    /// @param path  as the user gave it, or as the walk found it; any bytes
    virtual void Write(const std::string& path, const tAnswer& answer) = 0;
    /// After the last record, also when the run was interrupted.
    virtual void End() {}

protected:
    COutput& mOutput;
    tRecordDetails mDetails;
};

/// For people: attributes with labels; failures go to standard error.
std::unique_ptr<CRecordWriter> MakeTextWriter(COutput& output, const tLook& look);
/// For programs: one JSON object a line.
std::unique_ptr<CRecordWriter> MakeJSONWriter(COutput& output);
/// An XML property list: an array of dictionaries with the members of the JSON objects.
std::unique_ptr<CRecordWriter> MakePropertyListWriter(COutput& output);

/// For programs: for every input the values of the named attributes, in their order, with zero bytes between all values
/// of all inputs. The texts of a list have line breaks between them. Failures go to standard error.
/// @param nullMarker  stands for an attribute that a document has not, also for one that failed
std::unique_ptr<CRecordWriter> MakeRawWriter(COutput& output, std::vector<std::string> names, std::string nullMarker);

/// Appends the line that MakeJSONWriter's writer makes of an answer.
/// @param id  a member in front; null for none
void AppendJSONRecord(std::string& json, const std::string& path, const tAnswer& answer, const tRecordDetails& details,
                      const JSON::tRecord& id = {});

/// What a record says of a failure, as its member "error".
JSON::tRecord DescribeFailure(const tFailure& failure);

/// A failure's code in records: the loader's number, "1" to "5", or a word.
std::string FailureCode(const tFailure& failure);
