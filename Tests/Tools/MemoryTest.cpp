// How much memory the commands take for documents of the smallest things: host and worker, whichever has more.
#include "ProgramRun.h"
#include "support/DocumentBuilder.h"

namespace {
constexpr size_t kMany = 5000;

/// Four control characters, each of which takes six bytes in a report.
std::string Name(size_t number)
{
    std::string name;
    for (int i = 0; i < 4; ++i, number /= 30) {
        name += static_cast<char>(1 + number % 30);
    }
    return name;
}

std::string Parts(size_t count, bool oneLibrary)
{
    return LayoutHeader(3).Bytes() + EmptyRecords(23) + CRecords().Int(423, static_cast<int64_t>(count)).Bytes() +
           Repeat(count, [&](size_t i) { return SmallElement(Name(i), oneLibrary ? "li" : Name(i)); });
}

std::string Articles(size_t count)
{
    return "RSet" + Bytes32(2) + CRecords().Int(100, static_cast<int64_t>(count)).Bytes() + EmptyRecords(15) +
           Repeat(count, [](size_t i) { return SmallElement(Name(i), "-"); });
}

std::string Stock(size_t count)
{
    const std::string item = "<StockItem><ProductNr>1</ProductNr><Railset>2</Railset></StockItem>";
    return "<Velmora_Stock>" + Repeat(count, [&item](size_t) { return item; }) + "</Velmora_Stock>";
}
} // namespace

TEST(Memory, GrowsByNoMoreThanTwentyBytesForEachOfADocument)
{
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "AddressSanitizer takes memory of its own";
#endif
    const struct {
        std::string name;
        std::string one;
        std::string many;
    } documents[] = {{"parts.velmora", Parts(1, false), Parts(kMany, false)},
                     {"library.velmora", Parts(1, true), Parts(kMany, true)},
                     {"articles", Articles(1), Articles(kMany)},
                     {"stock.xml", Stock(1), Stock(kMany)}};
    const struct {
        size_t document;
        std::vector<std::string> command;
    } cases[] = {{0, {"import"}},
                 {0, {"index", "--database", TestPath("parts.db")}},
                 {0, {"parts", "--no-stock"}},
                 {0, {"parts", "--no-stock", "--format", "json"}},
                 {0, {"parts", "--no-stock", "--format", "html"}},
                 {1, {"import"}},
                 {1, {"parts", "--no-stock"}},
                 {1, {"check"}},
                 {2, {"library"}},
                 {2, {"library", "--format", "json"}},
                 {3, {"stock"}},
                 {3, {"stock", "--format", "json"}},
                 {3, {"check"}}};
    for (const auto& c : cases) {
        const auto& document = documents[c.document];
        const auto peakFor = [&](const std::string& bytes) {
            std::vector<std::string> arguments = c.command;
            arguments.insert(arguments.end(), {"--timeout", "120", TestPath(document.name)});
            WriteFile(arguments.back(), bytes);
            const tProgramResult result = RunVelmora(arguments);
            EXPECT_EQ(result.err.find("velmora: "), std::string::npos) << result.err;
            return result.peakMemory;
        };
        SCOPED_TRACE(c.command.front() + " " + c.command.back() + " " + document.name);
        const size_t least = peakFor(document.one);
        const size_t peak = peakFor(document.many);
        const double factor =
            (static_cast<double>(peak) - static_cast<double>(least)) / static_cast<double>(document.many.size());
        printf("%6.2f bytes for each of %8zu: %s %s\n", factor, document.many.size(), c.command.front().c_str(),
               document.name.c_str());
        EXPECT_LE(factor, 20.0);
    }
}
