#include "output/CRecordWriter.h"
#include "output/Escapes.h"

#include <algorithm>

namespace {
class CTextWriter : public CRecordWriter {
public:
    using CRecordWriter::CRecordWriter;

    void Write(const std::string& path, const tAnswer& answer) override
    {
        if (!answer.ok) {
            mOutput.Flush(); // so that on a terminal both stand in the order of the inputs
            COutput::PrintMessage(Escapes::ForTerminal(path) + ": " + Escapes::ForTerminal(answer.failure.message));
            return;
        }
        mOutput.Write(Escapes::ForTerminal(path) + "\n");
        if (!mDetails.type.empty()) {
            mOutput.Write(Beginning("Type") + Escapes::ForTerminal(mDetails.type) + "\n");
        }
        if (!mDetails.importer.empty()) {
            mOutput.Write(Beginning("Importer") + Escapes::ForTerminal(mDetails.importer) + "\n");
        }
        for (const tAttribute& attribute : answer.attributes) {
            std::string line = Beginning(Label(attribute.key));
            bool first = true;
            for (const std::string& text : attribute.texts) {
                line += first ? "" : ", ";
                line += Escapes::ForTerminal(text);
                first = false;
            }
            line.erase(line.find_last_not_of(' ') + 1);
            mOutput.Write(line + "\n");
        }
    }

private:
    static constexpr size_t kValueColumn = 16;

    static std::string Beginning(const std::string& label)
    {
        std::string line = "  " + label + ":";
        line.resize(std::max(line.size() + 1, kValueColumn), ' ');
        return line;
    }

    static std::string Label(const std::string& key)
    {
        static constexpr struct {
            const char* key;
            const char* label;
        } kLabels[] = {{"kMDItemAuthors", "Author"},
                       {"kMDItemDescription", "Description"},
                       {"kMDItemLayerNames", "Layers"},
                       {"kMDItemVersion", "Revision"},
                       {"kMDItemTextContent", "Content"}};
        for (const auto& entry : kLabels) {
            if (key == entry.key) {
                return entry.label;
            }
        }
        return Escapes::ForTerminal(key);
    }
};
} // namespace

std::unique_ptr<CRecordWriter> MakeTextWriter(COutput& output)
{
    return std::make_unique<CTextWriter>(output);
}
