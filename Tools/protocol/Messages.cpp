#include "protocol/Messages.h"

#include "Bounds.h"
#include "protocol/Frames.h"
#include "protocol/UTF8.h"

#include <algorithm>
#include <utility>

namespace {
/// Appends values to a message.
class CMessageWriter {
public:
    void Put(uint8_t byte) { mMessage.push_back(static_cast<char>(byte)); }

    void Put(uint32_t number)
    {
        for (unsigned shift = 0; shift < 32; shift += 8) {
            Put(static_cast<uint8_t>(number >> shift));
        }
    }

    void Put(bool flag) { Put(static_cast<uint8_t>(flag ? 1 : 0)); }

    void Put(std::string_view text)
    {
        Put(static_cast<uint32_t>(text.size()));
        mMessage.append(text);
    }

    template <typename tEntry, typename tPut>
    void PutList(const std::vector<tEntry>& list, tPut put)
    {
        Put(static_cast<uint32_t>(list.size()));
        for (const tEntry& entry : list) {
            put(entry);
        }
    }

    void PutTexts(const std::vector<std::string>& texts)
    {
        PutList(texts, [this](const std::string& text) { Put(std::string_view(text)); });
    }

    std::string Take() { return std::move(mMessage); }

private:
    std::string mMessage;
};

/// Takes values from a message. After the first one that is not there, nothing more is given.
class CMessageReader {
public:
    explicit CMessageReader(std::string_view message) : mRest(message) {}

    uint8_t GetByte()
    {
        const std::string_view bytes = Take(1);
        return bytes.empty() ? uint8_t{0} : static_cast<uint8_t>(bytes[0]);
    }

    uint32_t GetNumber()
    {
        uint32_t number = 0;
        unsigned shift = 0;
        for (const char byte : Take(4)) {
            number |= static_cast<uint32_t>(static_cast<unsigned char>(byte)) << shift;
            shift += 8;
        }
        return number;
    }

    bool GetFlag()
    {
        const uint8_t byte = GetByte();
        mGood = mGood && byte <= 1;
        return byte == 1;
    }

    /// One of the values from `first` to `last`.
    template <typename tEnum>
    tEnum GetEnum(tEnum first, tEnum last)
    {
        const uint8_t byte = GetByte();
        if (byte < static_cast<uint8_t>(first) || byte > static_cast<uint8_t>(last)) {
            mGood = false;
            return first;
        }
        return static_cast<tEnum>(byte);
    }

    std::string GetText()
    {
        const std::string_view text = Take(GetNumber());
        mGood = mGood && UTF8::IsValid(text);
        return mGood ? std::string(text) : std::string();
    }

    std::string GetBytes() { return std::string(Take(GetNumber())); }

    template <typename tEntry, typename tGet>
    void GetList(std::vector<tEntry>& list, tGet get)
    {
        const uint32_t count = GetNumber();
        mGood = mGood && count <= mEntriesLeft;
        mEntriesLeft -= mGood ? count : 0;
        for (uint32_t i = 0; mGood && i < count; ++i) {
            list.push_back(get());
        }
    }

    void GetTexts(std::vector<std::string>& texts)
    {
        GetList(texts, [this] { return GetText(); });
    }

    void Refuse() { mGood = false; }

    /// Whether everything was there, and nothing is left.
    bool IsWhole() const { return mGood && mRest.empty(); }

private:
    std::string_view Take(size_t count)
    {
        mGood = mGood && mRest.size() >= count;
        if (!mGood) {
            return {};
        }
        const std::string_view taken = mRest.substr(0, count);
        mRest.remove_prefix(count);
        return taken;
    }

    std::string_view mRest;
    uint32_t mEntriesLeft = Bounds::kMostListEntries;
    bool mGood = true;
};
} // namespace

size_t MaxAnswerSize(eVerb verb, uint64_t documentSize)
{
    // A picture has as many pixels as were asked for. The comparison is made so that nothing overflows.
    const bool grows = verb != eVerb::kRender && documentSize < (Bounds::kMostAnswerBytes - Bounds::kBaseAnswerBytes) /
                                                                    Bounds::kAnswerBytesPerByte;
    return grows ? static_cast<size_t>(Bounds::kBaseAnswerBytes + Bounds::kAnswerBytesPerByte * documentSize)
                 : Bounds::kMostAnswerBytes;
}

bool IsAffordable(const tAnswer& answer, uint64_t documentSize)
{
    const uint64_t most = std::min(Bounds::kMostValues, documentSize) + Bounds::kBaseValues;
    uint64_t count =
        answer.attributes.size() + answer.libraries.size() + answer.articles.size() + answer.figures.gauges.size();
    for (const tAttribute& attribute : answer.attributes) {
        count += attribute.texts.size();
    }
    size_t depth = 0;
    bool inText = false;
    const std::string& report = answer.report;
    for (size_t at = 0; at < report.size() && count <= most && depth <= Bounds::kDeepestReport; ++at) {
        const char character = report[at];
        if (inText) {
            at += character == '\\' ? 1 : 0;
            inText = character != '"';
            continue;
        }
        inText = character == '"';
        depth += character == '[' || character == '{' ? 1 : 0;
        depth -= depth > 0 && (character == ']' || character == '}') ? 1 : 0;
        count += character == ',' || character == '[' || character == '{' ? 1 : 0;
    }
    return count <= most && depth <= Bounds::kDeepestReport;
}

tAnswer MakeFailure(eFailure kind, std::string message)
{
    tAnswer answer;
    answer.failure.kind = kind;
    answer.failure.message = std::move(message);
    return answer;
}

std::string Encode(const tHello& hello)
{
    CMessageWriter writer;
    writer.Put(hello.ready);
    writer.Put(static_cast<uint8_t>(hello.reason));
    writer.Put(std::string_view(hello.message));
    writer.PutList(hello.sandbox, [&writer](const tSandboxLayer& layer) {
        writer.Put(std::string_view(layer.name));
        writer.Put(layer.isOn);
        writer.Put(std::string_view(layer.detail));
    });
    writer.Put(std::string_view(hello.sandboxNote));
    writer.Put(std::string_view(hello.stockFile));
    return writer.Take();
}

bool Decode(std::string_view message, tHello& hello)
{
    CMessageReader reader(message);
    hello.ready = reader.GetFlag();
    hello.reason = reader.GetEnum(eFailure::kPlugIn, eFailure::kSandbox);
    hello.message = reader.GetText();
    reader.GetList(hello.sandbox, [&reader] {
        tSandboxLayer layer;
        layer.name = reader.GetText();
        layer.isOn = reader.GetFlag();
        layer.detail = reader.GetText();
        return layer;
    });
    hello.sandboxNote = reader.GetText();
    hello.stockFile = reader.GetText();
    return reader.IsWhole();
}

std::string Encode(const tRequest& request)
{
    CMessageWriter writer;
    writer.Put(static_cast<uint8_t>(request.verb));
    writer.Put(std::string_view(request.contentType));
    if (request.verb == eVerb::kRender) {
        const tPictureWish& wish = request.picture;
        writer.Put(static_cast<uint8_t>(wish.kind));
        writer.Put(wish.width);
        writer.Put(wish.height);
        writer.Put(wish.isThumbnail);
        writer.Put(wish.hasLabels);
        writer.Put(wish.hasGrid);
        writer.Put(std::string_view(wish.style));
        writer.PutTexts(wish.layers);
    } else if (request.verb == eVerb::kLibrary) {
        writer.Put(std::string_view(request.fileName));
    }
    return writer.Take();
}

bool Decode(std::string_view message, tRequest& request)
{
    CMessageReader reader(message);
    request.verb = reader.GetEnum(eVerb::kImport, eVerb::kBalance);
    request.contentType = reader.GetText();
    if (request.verb == eVerb::kRender) {
        tPictureWish& wish = request.picture;
        wish.kind = reader.GetEnum(ePictureKind::kPNG, ePictureKind::kPDF);
        wish.width = reader.GetNumber();
        wish.height = reader.GetNumber();
        wish.isThumbnail = reader.GetFlag();
        wish.hasLabels = reader.GetFlag();
        wish.hasGrid = reader.GetFlag();
        wish.style = reader.GetText();
        reader.GetTexts(wish.layers);
    } else if (request.verb == eVerb::kLibrary) {
        request.fileName = reader.GetBytes();
    }
    return reader.IsWhole();
}

static void EncodeFailure(CMessageWriter& writer, const tFailure& failure)
{
    writer.Put(static_cast<uint8_t>(failure.kind));
    writer.Put(static_cast<uint32_t>(failure.loaderCode));
    writer.Put(failure.element);
    writer.Put(std::string_view(failure.message));
}

static void DecodeFailure(CMessageReader& reader, tFailure& failure)
{
    failure.kind = reader.GetEnum(eFailure::kLoader, eFailure::kSandbox);
    failure.loaderCode = static_cast<int32_t>(reader.GetNumber());
    failure.element = reader.GetNumber();
    failure.message = reader.GetText();
    const bool hasCode = failure.loaderCode >= 1 && failure.loaderCode <= 5;
    if (failure.kind == eFailure::kLoader ? !hasCode : failure.loaderCode != 0) {
        reader.Refuse();
    }
}

static void EncodeSchema(CMessageWriter& writer, const tSchema& schema)
{
    writer.PutList(schema.attributes, [&](const tSchemaAttribute& attribute) {
        writer.Put(std::string_view(attribute.name));
        writer.Put(std::string_view(attribute.type));
        writer.Put(std::string_view(attribute.description));
    });
    writer.PutList(schema.types, [&](const tSchemaType& type) {
        writer.Put(std::string_view(type.identifier));
        writer.Put(std::string_view(type.description));
        writer.PutTexts(type.extensions);
        writer.PutTexts(type.mimeTypes);
        writer.Put(std::string_view(type.magic));
    });
}

static void DecodeSchema(CMessageReader& reader, tSchema& schema)
{
    reader.GetList(schema.attributes, [&] {
        tSchemaAttribute attribute;
        attribute.name = reader.GetText();
        attribute.type = reader.GetText();
        attribute.description = reader.GetText();
        return attribute;
    });
    reader.GetList(schema.types, [&] {
        tSchemaType type;
        type.identifier = reader.GetText();
        type.description = reader.GetText();
        reader.GetTexts(type.extensions);
        reader.GetTexts(type.mimeTypes);
        type.magic = reader.GetText();
        return type;
    });
}

std::string Encode(const tAnswer& answer)
{
    CMessageWriter writer;
    writer.Put(answer.ok);
    if (!answer.ok) {
        EncodeFailure(writer, answer.failure);
        return writer.Take();
    }
    writer.Put(static_cast<uint8_t>(answer.verb));
    if (answer.verb == eVerb::kSchema) {
        EncodeSchema(writer, answer.schema);
        return writer.Take();
    }
    if (answer.verb != eVerb::kImport && answer.verb != eVerb::kIndex) {
        writer.Put(std::string_view(answer.report));
        if (answer.verb == eVerb::kRender) {
            writer.Put(std::string_view(answer.picture));
        }
        return writer.Take();
    }
    if (answer.verb == eVerb::kIndex) {
        writer.PutTexts(answer.libraries);
        writer.PutTexts(answer.articles);
        writer.Put(answer.figures.created);
        writer.Put(answer.figures.elements);
        writer.Put(answer.figures.tracks);
        writer.PutList(answer.figures.gauges, [&](const tGauge& gauge) {
            writer.Put(std::string_view(gauge.scale));
            writer.Put(gauge.width);
        });
    }
    writer.PutList(answer.attributes, [&](const tAttribute& attribute) {
        writer.Put(std::string_view(attribute.key));
        writer.Put(attribute.isList);
        writer.PutTexts(attribute.texts);
    });
    return writer.Take();
}

bool Decode(std::string_view message, tAnswer& answer)
{
    CMessageReader reader(message);
    answer.ok = reader.GetFlag();
    if (!answer.ok) {
        DecodeFailure(reader, answer.failure);
        return reader.IsWhole();
    }
    answer.verb = reader.GetEnum(eVerb::kImport, eVerb::kBalance);
    if (answer.verb == eVerb::kSchema) {
        DecodeSchema(reader, answer.schema);
        return reader.IsWhole();
    }
    if (answer.verb != eVerb::kImport && answer.verb != eVerb::kIndex) {
        answer.report = reader.GetText();
        if (answer.verb == eVerb::kRender) {
            answer.picture = reader.GetBytes();
        }
        return reader.IsWhole();
    }
    if (answer.verb == eVerb::kIndex) {
        reader.GetTexts(answer.libraries);
        reader.GetTexts(answer.articles);
        answer.figures.created = reader.GetNumber();
        answer.figures.elements = reader.GetNumber();
        answer.figures.tracks = reader.GetNumber();
        reader.GetList(answer.figures.gauges, [&] {
            tGauge gauge;
            gauge.scale = reader.GetText();
            gauge.width = reader.GetNumber();
            return gauge;
        });
    }
    reader.GetList(answer.attributes, [&] {
        tAttribute attribute;
        attribute.key = reader.GetText();
        attribute.isList = reader.GetFlag();
        reader.GetTexts(attribute.texts);
        if (!attribute.isList && attribute.texts.size() != 1) {
            reader.Refuse();
        }
        return attribute;
    });
    return reader.IsWhole();
}
