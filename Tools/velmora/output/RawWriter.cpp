#include "output/CRecordWriter.h"
#include "output/Escapes.h"

#include <algorithm>

namespace {
class CRawWriter : public CRecordWriter {
public:
    CRawWriter(COutput& output, std::vector<std::string> names, std::string nullMarker)
        : CRecordWriter(output), mNames(std::move(names)), mNullMarker(std::move(nullMarker))
    {}

    void Write(const std::string& path, const tAnswer& answer) override
    {
        if (!answer.ok) {
            mOutput.Flush();
            COutput::PrintMessage(Escapes::ForTerminal(path) + ": " + Escapes::ForTerminal(answer.failure.message));
        }
        for (const std::string& name : mNames) {
            const auto found = std::find_if(answer.attributes.begin(), answer.attributes.end(),
                                            [&](const tAttribute& attribute) { return attribute.key == name; });
            WriteValue(answer.ok && found != answer.attributes.end() ? Join(*found) : mNullMarker);
        }
    }

private:
    static std::string Join(const tAttribute& attribute)
    {
        std::string value;
        for (size_t i = 0; i < attribute.texts.size(); ++i) {
            value += (i > 0 ? "\n" : "") + attribute.texts[i];
        }
        std::replace(value.begin(), value.end(), '\0', ' '); // one within a value would shift all that follow
        return value;
    }

    void WriteValue(const std::string& value)
    {
        mOutput.Write(std::string(mFirst ? 0 : 1, '\0'));
        mOutput.Write(value);
        mFirst = false;
    }

    std::vector<std::string> mNames;
    std::string mNullMarker;
    bool mFirst = true;
};
} // namespace

std::unique_ptr<CRecordWriter> MakeRawWriter(COutput& output, std::vector<std::string> names, std::string nullMarker)
{
    return std::make_unique<CRawWriter>(output, std::move(names), std::move(nullMarker));
}
