#include "Bounds.h"
#include "protocol/CFrameReader.h"
#include "protocol/Messages.h"
#include "protocol/UTF8.h"

#include <fcntl.h>
#include <gtest/gtest.h>
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
    index.figures = {1, 0x12345678, 0xFFFFFFFF, {{"H0", 1650}}};
    return {attributes, schema, report, picture, index, loader, MakeFailure(eFailure::kPlugIn, "none")};
}

TEST(Messages, ComeBackAsTheyWereOrAreRefused)
{
    for (const tAnswer& sample : SampleAnswers()) {
        const std::string whole = Encode(sample);
        tAnswer answer;
        ASSERT_TRUE(Decode(whole, answer));
        EXPECT_EQ(Encode(answer), whole);
        EXPECT_EQ(answer.ok, sample.ok);
        EXPECT_EQ(answer.report + answer.picture, sample.report + sample.picture);
        EXPECT_EQ(answer.failure.message, sample.failure.message);
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
    tAnswer code = MakeFailure(eFailure::kCrash, "a code that only loaders give");
    code.failure.loaderCode = 4;
    EXPECT_FALSE(Decode(Encode(code), code));
    tRequest wish = {eVerb::kRender, "com.example.type"};
    wish.picture = {ePictureKind::kPDF, 640, 480, true, false, true, "plan", {"one", "two"}};
    const std::string encoded = Encode(wish);
    tRequest request;
    ASSERT_TRUE(Decode(encoded, request));
    EXPECT_EQ(Encode(request), encoded);
    EXPECT_EQ(request.picture.height, 480u);
    EXPECT_EQ(request.picture.layers, wish.picture.layers);
    for (size_t size = 0; size < encoded.size(); ++size) {
        EXPECT_FALSE(Decode(encoded.substr(0, size), request)) << size;
    }
    EXPECT_FALSE(Decode('\x7F' + encoded.substr(1), request)) << "an unknown verb";
}

TEST(Messages, CannotClaimMoreEntriesThanAllowed)
{
    tAnswer sample;
    sample.ok = true;
    sample.attributes = {{"a", true, std::vector<std::string>(Bounds::kMostListEntries / 2)},
                         {"b", true, std::vector<std::string>(Bounds::kMostListEntries / 2 - 2)}};
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
    const std::pair<const char*, const char*> invalid[] = {{"\x80", "\uFFFD"},
                                                           {"\xC1\xBF", "\uFFFD\uFFFD"},
                                                           {"a\xE2\x82", "a\uFFFD\uFFFD"},
                                                           {"\xE0\x9F\xBF", "\uFFFD\uFFFD\uFFFD"},
                                                           {"\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},
                                                           {"\xF4\x90\x80\x80z", "\uFFFD\uFFFD\uFFFD\uFFFDz"}};
    for (const auto& [bytes, repaired] : invalid) {
        EXPECT_FALSE(UTF8::IsValid(bytes));
        EXPECT_EQ(UTF8::MakeValid(bytes), repaired);
    }
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

TEST(FrameReader, GivesADescriptorToItsFrame)
{
    CDescriptor sender;
    CDescriptor receiver;
    ASSERT_TRUE(MakeSocketPair(sender, receiver));
    ASSERT_EQ(fcntl(receiver.Get(), F_SETFL, O_NONBLOCK), 0);
    CFrameReader reader(receiver.Get(), 1000);
    tFrame frame;
    int file[2];
    ASSERT_EQ(pipe(file), 0);
    const CDescriptor one(file[0]);
    const CDescriptor other(file[1]);
    ASSERT_TRUE(SendFrame(sender.Get(), eFrameKind::kRequest, 1, "y"));
    ASSERT_TRUE(SendFrame(sender.Get(), eFrameKind::kRequest, 2, {}, one.Get()));
    ASSERT_TRUE(SendFrame(sender.Get(), eFrameKind::kRequest, 3, "x"));
    ASSERT_EQ(ReadAll(reader, frame), CFrameReader::eResult::kFrame);
    EXPECT_FALSE(frame.descriptor.IsOpen()) << "that is the next one's";
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
    sender.Reset();
    EXPECT_EQ(ReadAll(reader, frame), CFrameReader::eResult::kClosed);
}
