#include "output/AttributeNames.h"
#include "output/CRecordWriter.h"
#include "output/Escapes.h"

#include <algorithm>

namespace {
class CTextWriter : public CRecordWriter {
public:
    CTextWriter(COutput& output, const tLook& look) : CRecordWriter(output), mLook(look) {}

    void Write(const std::string& path, const tAnswer& answer) override
    {
        if (!answer.ok) {
            mOutput.Flush(); // so that on a terminal both stand in the order of the inputs
            COutput::PrintMessage(Escapes::ForTerminal(path) + ": " + Escapes::ForTerminal(answer.failure.message));
            return;
        }
        mOutput.Write(Terminal::Emphasize(Escapes::ForTerminal(path), mLook) + "\n");
        WriteValue("Type", mDetails.type);
        WriteValue("Importer", mDetails.importer);
        for (const tAttribute& attribute : answer.attributes) {
            std::string value;
            for (const std::string& text : attribute.texts) {
                value += (&text == &attribute.texts.front() ? "" : ", ") + text;
            }
            WriteLines(Escapes::ForTerminal(AttributeNames::GetLabel(attribute.key)), value);
        }
    }

private:
    static constexpr size_t kValueColumn = 16;

    /// Writes nothing where there is none.
    void WriteValue(const std::string& label, const std::string& value)
    {
        if (!value.empty()) {
            WriteLines(label, value);
        }
    }

    void WriteLines(const std::string& label, const std::string& value)
    {
        std::string beginning = "  " + label + ":";
        beginning.resize(std::max(beginning.size() + 1, kValueColumn), ' ');
        const bool fits = mLook.width != tLook::kUnlimited && mLook.width > 2 * kValueColumn;
        for (std::string line :
             Terminal::ToLines(value, mLook, fits ? mLook.width - kValueColumn : tLook::kUnlimited)) {
            line.insert(0, beginning);
            line.erase(line.find_last_not_of(' ') + 1);
            mOutput.Write(line + "\n");
            beginning.assign(kValueColumn, ' ');
        }
    }

    tLook mLook;
};
} // namespace

std::unique_ptr<CRecordWriter> MakeTextWriter(COutput& output, const tLook& look)
{
    return std::make_unique<CTextWriter>(output, look);
}
