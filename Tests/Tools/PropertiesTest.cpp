// What has to hold for all that the host reads, tried on changes to sound inputs and on all that failed before.
#include "Properties.h"

#include "protocol/Frames.h"
#include "support/Files.h"
#include "support/Random.h"

#include <algorithm>
#include <functional>

namespace fs = std::filesystem;

namespace {
std::string RandomBytes(CRandom& random, size_t size)
{
    std::string bytes(size, '\0');
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random() % 256); });
    return bytes;
}

/// Frames, the last of which may claim anything.
std::string MakeStream(CRandom& random)
{
    std::string stream = {static_cast<char>(Properties::eMessageForm::kStream), static_cast<char>(random())};
    for (size_t n = random() % 6; n > 0; --n) {
        unsigned char header[kFrameHeaderSize];
        const size_t size = random() % 300;
        EncodeHeader(static_cast<eFrameKind>(1 + random() % 5), 7, n == 1 ? random() % 50000 : size, header);
        stream.append(reinterpret_cast<char*>(header), sizeof header) += RandomBytes(random, size);
    }
    return stream;
}

/// A query of what means something, or nothing, to the language or to the index, and a text.
std::string MakeQuery(CRandom& random)
{
    static constexpr const char* kPieces[] = {"a",
                                              "gleis",
                                              "ß",
                                              " ",
                                              " ",
                                              "\"",
                                              "\"\"",
                                              "'",
                                              "(",
                                              ")",
                                              "*",
                                              "-",
                                              "NOT ",
                                              "author:",
                                              "{",
                                              "AND",
                                              "OR",
                                              "NEAR(",
                                              "||",
                                              "&&",
                                              "+",
                                              ",",
                                              "\xFF",
                                              "\xC3",
                                              ";",
                                              "--",
                                              "/*",
                                              "rowid",
                                              "%",
                                              "\x02",
                                              "size:>1",
                                              "gauge:H0",
                                              "created:<2030",
                                              "elements:1..",
                                              "folder:",
                                              "ei"};
    std::string query;
    for (size_t n = random() % 12; n > 0; --n) {
        query += kPieces[random() % std::size(kPieces)];
    }
    return query + "\n" + RandomBytes(random, 30);
}

const struct {
    const char* name; ///< of its folder in Tests/data/found
    std::string (*property)(std::string_view);
    std::function<std::string(CRandom&)> make;
    int tries;
} kForms[] = {{"message", &Properties::Message, MakeStream, 300},
              {"report", &Properties::Report,
               [](CRandom& random) { // made of what the bytes say
                   return static_cast<char>(128 + random() % 128) + RandomBytes(random, 400);
               },
               1000},
              {"serve", &Properties::Serve,
               [](CRandom& random) {
                   static constexpr const char* kVerbs[] = {"import", "check", "parts", "render", "thumbnail", "x"};
                   const std::string path = R"({"id":1,"verb":")" + std::string(kVerbs[random() % 6]) +
                                            R"(","layers":["a"],"path":"\ud83d\ude82"})";
                   return path + "\n" + path.substr(random() % path.size()) + "\n" + RandomBytes(random, 20) + path;
               },
               300},
              {"query", &Properties::Query, MakeQuery, 3000},
              {"index", &Properties::Index,
               [](CRandom& random) {
                   static const std::string sIndex = Properties::MakeIndex();
                   std::string file = sIndex;
                   file[100 + random() % (file.size() - 100)] = static_cast<char>(random());
                   return file;
               },
               30}};
} // namespace

TEST(HostProperties, HoldForChangesAndForWhatFailedBefore)
{
    for (const auto& form : kForms) {
        SCOPED_TRACE(form.name);
        const fs::path found = fs::path(SOURCE_FOLDER "/Tests/data/found") / form.name;
        for (const auto& entry : fs::is_directory(found) ? fs::directory_iterator(found) : fs::directory_iterator()) {
            EXPECT_EQ(form.property(ReadFile(entry.path().string())), "") << entry.path();
        }
        CRandom random(3);
        for (int i = 0; i < form.tries && !HasFailure(); ++i) {
            EXPECT_EQ(form.property(form.make(random)), "") << i;
        }
    }
}
