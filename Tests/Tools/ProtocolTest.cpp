#include "protocol/CFrameReader.h"
#include "protocol/Messages.h"
#include "protocol/UTF8.h"

#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

/// One message of each shape.
static std::vector<tAnswer> SampleAnswers()
{
    tAnswer attributes;
    attributes.ok = true;
    attributes.attributes = {{"kMDItemAuthors", true, {"J\u00E4ger", ""}},
                             {"kMDItemDescription", false, {std::string("a\0b", 3)}},
                             {"kMDItemLayerNames", true, {}}};
    tAnswer schema;
    schema.ok = true;
    schema.verb = eVerb::kSchema;
    schema.schema.attributes = {{"kMDItemAuthors", "array of strings", "who"}};
    schema.schema.types = {{"com.example.type", "Type", {"a", "b"}, {"x/y"}, "WkSt"}};
    tAnswer loader = MakeFailure(eFailure::kLoader, "element 17 is damaged");
    loader.failure.loaderCode = 4;
    loader.failure.element = 17;
    tAnswer report;
    report.ok = true;
    report.verb = eVerb::kCheck;
    report.report = R"({"kind":"layout"})";
    tAnswer picture = report;
    picture.verb = eVerb::kRender;
    picture.picture = std::string("\x89PNG\r\n\0\xFF", 8); // bytes of any kind, unlike texts
    tAnswer index = attributes;
    index.verb = eVerb::kIndex;
    index.libraries = {"Library"};
    index.articles = {"3601", "Q 1"};
    return {attributes, schema, report, picture, index, loader, MakeFailure(eFailure::kPlugIn, "none")};
}

TEST(Messages, ComeBackAsTheyWere)
{
    for (const tAnswer& sample : SampleAnswers()) {
        tAnswer answer;
        ASSERT_TRUE(Decode(Encode(sample), answer));
        EXPECT_EQ(Encode(answer), Encode(sample));
        EXPECT_EQ(answer.ok, sample.ok);
        EXPECT_EQ(answer.report, sample.report);
        EXPECT_EQ(answer.picture, sample.picture);
        EXPECT_EQ(answer.failure.message, sample.failure.message);
        EXPECT_EQ(answer.failure.element, sample.failure.element);
        ASSERT_EQ(answer.attributes.size(), sample.attributes.size());
        for (size_t i = 0; i < answer.attributes.size(); ++i) {
            EXPECT_EQ(answer.attributes[i].texts, sample.attributes[i].texts);
        }
    }
    tRequest request;
    ASSERT_TRUE(Decode(Encode(tRequest{eVerb::kSchema, "com.example.type"}), request));
    EXPECT_EQ(request.verb, eVerb::kSchema);
    EXPECT_EQ(request.contentType, "com.example.type");
    tRequest wish;
    wish.verb = eVerb::kRender;
    wish.picture = {ePictureKind::kPDF, 640, 480, true, false, true, "plan", {"one", "two"}};
    const std::string encoded = Encode(wish);
    ASSERT_TRUE(Decode(encoded, request));
    EXPECT_EQ(Encode(request), encoded);
    EXPECT_EQ(request.picture.height, 480u);
    EXPECT_EQ(request.picture.layers, wish.picture.layers);
    for (size_t size = 0; size < encoded.size(); ++size) {
        EXPECT_FALSE(Decode(encoded.substr(0, size), request)) << size;
    }
}

TEST(Messages, AreRefusedWhenCutOrLongerOrDamaged)
{
    for (const tAnswer& sample : SampleAnswers()) {
        const std::string whole = Encode(sample);
        tAnswer answer;
        for (size_t size = 0; size < whole.size(); ++size) {
            EXPECT_FALSE(Decode(whole.substr(0, size), answer)) << size;
        }
        EXPECT_FALSE(Decode(whole + '\0', answer));
        // Any single damaged byte: refused, or understood as another well-formed message; never more than it holds.
        for (size_t i = 0; i < whole.size(); ++i) {
            for (const int bit : {0, 3, 7}) {
                std::string damaged = whole;
                damaged[i] = static_cast<char>(damaged[i] ^ 1 << bit);
                tAnswer other;
                if (Decode(damaged, other)) {
                    EXPECT_EQ(Encode(other), damaged) << i;
                }
            }
        }
    }
    const std::string request = Encode(tRequest{eVerb::kImport, "t"});
    tRequest other;
    EXPECT_FALSE(Decode(request.substr(1), other));
    EXPECT_FALSE(Decode('\x7F' + request.substr(1), other)) << "an unknown verb";
}

TEST(Messages, CannotClaimMoreEntriesThanAllowed)
{
    tAnswer sample;
    sample.ok = true;
    sample.attributes = {{"a", true, std::vector<std::string>(kMaxListEntries / 2)},
                         {"b", true, std::vector<std::string>(kMaxListEntries / 2 - 2)}};
    tAnswer answer;
    EXPECT_TRUE(Decode(Encode(sample), answer));
    sample.attributes[1].texts.emplace_back();
    EXPECT_FALSE(Decode(Encode(sample), answer));
}

TEST(UTF8, TellsValidTextFromOther)
{
    for (const char* valid : {"", "a\x7F", "\u0080\u07FF", "\u0800\uD7FF\uE000\uFFFF", "\U00010000\U0010FFFF"}) {
        EXPECT_TRUE(UTF8::IsValid(valid)) << valid;
        EXPECT_EQ(UTF8::MakeValid(valid), valid);
    }
    const struct {
        const char* bytes;
        const char* repaired;
    } invalid[] = {{"\x80", "\uFFFD"},
                   {"\xC1\xBF", "\uFFFD\uFFFD"},
                   {"a\xE2\x82", "a\uFFFD\uFFFD"},
                   {"\xE0\x9F\xBF", "\uFFFD\uFFFD\uFFFD"},
                   {"\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},
                   {"\xF4\x90\x80\x80z", "\uFFFD\uFFFD\uFFFD\uFFFDz"},
                   {"\xF8", "\uFFFD"}};
    for (const auto& c : invalid) {
        EXPECT_FALSE(UTF8::IsValid(c.bytes));
        EXPECT_EQ(UTF8::MakeValid(c.bytes), c.repaired);
    }
}

class FrameReader : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(MakeSocketPair(mSender, mReceiver));
        ASSERT_EQ(fcntl(mReceiver.Get(), F_SETFL, O_NONBLOCK), 0);
    }

    /// Reads until there is a result other than "more", or nothing more to read.
    static CFrameReader::eResult ReadAll(CFrameReader& reader, tFrame& frame)
    {
        CFrameReader::eResult result = CFrameReader::eResult::kMore;
        for (int i = 0; i < 100 && result == CFrameReader::eResult::kMore; ++i) {
            result = reader.Read(frame);
        }
        return result;
    }

    CDescriptor mSender;
    CDescriptor mReceiver;
};

TEST_F(FrameReader, PutsFramesTogetherHoweverTheyArrive)
{
    CFrameReader reader(mReceiver.Get(), 1000);
    unsigned char header[kFrameHeaderSize];
    EncodeHeader(eFrameKind::kAnswer, 0x01020304, 5, header);
    const std::string bytes = std::string(reinterpret_cast<char*>(header), sizeof header) + "hello";
    tFrame frame;
    for (size_t i = 0; i < bytes.size(); ++i) {
        ASSERT_EQ(ReadAll(reader, frame), CFrameReader::eResult::kMore) << i;
        ASSERT_EQ(write(mSender.Get(), &bytes[i], 1), 1);
    }
    ASSERT_EQ(ReadAll(reader, frame), CFrameReader::eResult::kFrame);
    EXPECT_EQ(frame.kind, eFrameKind::kAnswer);
    EXPECT_EQ(frame.sequence, 0x01020304U);
    EXPECT_EQ(frame.payload, "hello");

    int file[2];
    ASSERT_EQ(pipe(file), 0);
    const CDescriptor one(file[0]);
    const CDescriptor other(file[1]);
    ASSERT_TRUE(SendFrame(mSender.Get(), eFrameKind::kRequest, 2, {}, one.Get()));
    ASSERT_TRUE(SendFrame(mSender.Get(), eFrameKind::kRequest, 3, "x"));
    ASSERT_EQ(ReadAll(reader, frame), CFrameReader::eResult::kFrame);
    EXPECT_EQ(frame.payload, "");
    ASSERT_TRUE(frame.descriptor.IsOpen());
    EXPECT_EQ(write(other.Get(), "!", 1), 1);
    char byte = 0;
    EXPECT_EQ(read(frame.descriptor.Get(), &byte, 1), 1);
    EXPECT_EQ(fcntl(frame.descriptor.Get(), F_GETFD), FD_CLOEXEC);
    ASSERT_EQ(ReadAll(reader, frame), CFrameReader::eResult::kFrame);
    EXPECT_EQ(frame.sequence, 3U);
    EXPECT_FALSE(frame.descriptor.IsOpen());
    mSender.Reset();
    EXPECT_EQ(ReadAll(reader, frame), CFrameReader::eResult::kClosed);
}

TEST_F(FrameReader, TakesFramesLongerThanTheSocketsBuffer)
{
    const std::string payload(3000000, 'p');
    std::thread sender([&] { SendFrame(mSender.Get(), eFrameKind::kAnswer, 1, payload); });
    CFrameReader reader(mReceiver.Get(), kMaxAnswerSize);
    tFrame frame;
    CFrameReader::eResult result = CFrameReader::eResult::kMore;
    while (result == CFrameReader::eResult::kMore) {
        result = reader.Read(frame);
    }
    sender.join();
    ASSERT_EQ(result, CFrameReader::eResult::kFrame);
    EXPECT_EQ(frame.payload, payload);
}

TEST_F(FrameReader, RefusesWhatIsNoFrame)
{
    const struct {
        const char* what;
        uint32_t words[4];
    } cases[] = {{"magic", {kFrameMagic + 1, 3, 0, 0}},
                 {"kind 0", {kFrameMagic, 0, 0, 0}},
                 {"kind 6", {kFrameMagic, 6, 0, 0}},
                 {"length", {kFrameMagic, 3, 0, 1001}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        SetUp();
        CFrameReader reader(mReceiver.Get(), 1000);
        unsigned char bytes[kFrameHeaderSize];
        EncodeHeader(static_cast<eFrameKind>(c.words[1]), c.words[2], c.words[3], bytes);
        memcpy(bytes, c.words, 4);
        ASSERT_EQ(write(mSender.Get(), bytes, sizeof bytes), static_cast<ssize_t>(sizeof bytes));
        tFrame frame;
        EXPECT_EQ(ReadAll(reader, frame), CFrameReader::eResult::kMalformed);
    }
}
