#include "output/CRecordWriter.h"
#include "output/Escapes.h"
#include "protocol/UTF8.h"

namespace {
class CPropertyListWriter : public CRecordWriter {
public:
    using CRecordWriter::CRecordWriter;

    void Begin() override
    {
        mOutput.Write("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                      "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                      "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                      "<plist version=\"1.0\">\n<array>\n");
    }

    void Write(const std::string& path, const tAnswer& answer) override
    {
        mOutput.Write("\t<dict>\n");
        WriteBytes("path", path);
        mOutput.Write(std::string("\t\t<key>ok</key>\n\t\t") + (answer.ok ? "<true/>\n" : "<false/>\n"));
        if (answer.ok && !mDetails.type.empty()) {
            WriteText(2, "type", mDetails.type);
        }
        if (answer.ok && !mDetails.importer.empty()) {
            WriteBytes("importer", mDetails.importer);
        }
        mOutput.Write(answer.ok ? "\t\t<key>attributes</key>\n" : "\t\t<key>error</key>\n");
        mOutput.Write("\t\t<dict>\n");
        if (answer.ok) {
            WriteAttributes(answer.attributes);
        } else {
            WriteFailure(answer.failure);
        }
        mOutput.Write("\t\t</dict>\n\t</dict>\n");
    }

    void End() override { mOutput.Write("</array>\n</plist>\n"); }

private:
    /// Whether a text comes back from a property list as it was.
    static bool IsExact(const std::string& text)
    {
        for (size_t position = 0; position < text.size();) {
            const char32_t character = UTF8::DecodeNext(text, position);
            const bool carried = (character >= 0x20 && character <= 0x10FFFF && (character & 0xFFFFFFFE) != 0xFFFE) ||
                                 character == '\t' || character == '\n' || character == '\r';
            if (!carried) {
                return false;
            }
        }
        return true;
    }

    void WriteElement(size_t depth, const char* element, const std::string& text)
    {
        mOutput.Write(std::string(depth, '\t') + "<" + element + ">" + Escapes::ForXML(text) + "</" + element + ">\n");
    }

    void WriteText(size_t depth, const std::string& key, const std::string& text)
    {
        WriteElement(depth, "key", key);
        WriteElement(depth, "string", text);
    }

    /// A text of any bytes, and a second member with the exact ones where the first cannot have them.
    void WriteBytes(const std::string& key, const std::string& bytes)
    {
        WriteText(2, key, UTF8::MakeValid(bytes));
        if (!IsExact(bytes)) {
            WriteText(2, key + "_base64", Escapes::Base64(bytes));
        }
    }

    void WriteAttributes(const std::vector<tAttribute>& attributes)
    {
        for (const tAttribute& attribute : attributes) {
            if (!attribute.isList) {
                WriteText(3, attribute.key, attribute.texts.front());
                continue;
            }
            WriteElement(3, "key", attribute.key);
            if (attribute.texts.empty()) {
                mOutput.Write("\t\t\t<array/>\n");
                continue;
            }
            mOutput.Write("\t\t\t<array>\n");
            for (const std::string& text : attribute.texts) {
                WriteElement(4, "string", text);
            }
            mOutput.Write("\t\t\t</array>\n");
        }
    }

    void WriteFailure(const tFailure& failure)
    {
        if (failure.kind == eFailure::kLoader) {
            WriteElement(3, "key", "code");
            WriteElement(3, "integer", std::to_string(failure.loaderCode));
        } else {
            WriteText(3, "code", FailureCode(failure));
        }
        if (failure.element > 0) {
            WriteElement(3, "key", "element");
            WriteElement(3, "integer", std::to_string(failure.element));
        }
        WriteText(3, "message", failure.message);
    }
};
} // namespace

std::unique_ptr<CRecordWriter> MakePropertyListWriter(COutput& output)
{
    return std::make_unique<CPropertyListWriter>(output);
}
