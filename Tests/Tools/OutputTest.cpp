// What output is made of; the writers are tested with the commands.
#include "output/CProgress.h"
#include "output/CTable.h"
#include "output/Escapes.h"
#include "output/Money.h"

#include <algorithm>
#include <gtest/gtest.h>

TEST(Escapes, MakeTextsHarmless)
{
    const struct {
        std::string text;
        const char* forTerminal;
        const char* forXML;
    } cases[] = {
        {"plain \u00E4\u20AC\U0001F682", "plain \u00E4\u20AC\U0001F682", "plain \u00E4\u20AC\U0001F682"},
        {"a\nb\tc\rd", "a\\nb\\tc\\rd", "a\nb\tc&#13;d"},
        {std::string("\0\x1B[31m\x7F", 7), "\\x00\\x1B[31m\\x7F", "[31m\x7F"},
        {"\u0085\u009B|", "\\u{85}\\u{9B}|", "\u0085\u009B|"},
        {"\u061C\u200E\u200F\u2028\u2029\u202A\u202E\u2066\u2069",
         "\\u{61C}\\u{200E}\\u{200F}\\u{2028}\\u{2029}\\u{202A}\\u{202E}\\u{2066}\\u{2069}",
         "\u061C\u200E\u200F\u2028\u2029\u202A\u202E\u2066\u2069"},
        {"<&>\"'\uFFFE\uFFFF", "<&>\"'\uFFFE\uFFFF", "&lt;&amp;&gt;\"'"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Escapes::ForTerminal(c.text), c.forTerminal);
        EXPECT_EQ(Escapes::ForXML(c.text), c.forXML);
    }
    EXPECT_EQ(Escapes::ForTerminal("a\xFF"), "a\\xFF");
    EXPECT_EQ(Escapes::Base64("\xFF\xFE\xFD"), "//79");
    std::string bytes;
    EXPECT_TRUE(Escapes::FromBase64("Zm8=", bytes));
    EXPECT_EQ(bytes, "fo");
    for (const char* wrong : {"Z", "Zg", "Zg=", "Zh==", "Z===", "====", "Zm 8", "Zg==Zg=="}) {
        EXPECT_FALSE(Escapes::FromBase64(wrong, bytes)) << wrong;
    }
}

TEST(Terminal, BreaksAndCutsTextsOfAnyScript)
{
    EXPECT_EQ(Terminal::CountColumns("Zu\u0308g \u65E5\u672C \u00A7"), 10U); // combining, wide, ambiguous
    EXPECT_EQ(Terminal::Wrap("one two  three\r\n\nfour\rfive\t\n", 8),
              (std::vector<std::string>{"one two", "three", "", "four", "five\\t"}));
    for (const std::string text :
         {"a\u65E5\u672Cb u\u0308\u0308\u0308 ", "ein \u00DCberholgleis/\u5BD2\u5BD2 \x1B[m"}) {
        for (size_t width = 2; width < 30; ++width) {
            std::string joined;
            for (const std::string& line : Terminal::Wrap(text, width)) {
                EXPECT_LE(Terminal::CountColumns(line), width);
                joined += line;
            }
            std::string plain = Escapes::ForTerminal(text);
            for (std::string* one : {&plain, &joined}) {
                one->erase(std::remove(one->begin(), one->end(), ' '), one->end());
            }
            EXPECT_EQ(joined, plain);
            EXPECT_LE(Terminal::CountColumns(Terminal::CutMiddle(Escapes::ForTerminal(text), width)), width);
        }
    }
    EXPECT_EQ(Terminal::Fit(
                  "Examples:\n  velmora import 'a b' --format json plan.velmora\n\n  --name X    One or two words\n",
                  {26, true, false}),
              "Examples:\n  velmora import 'a b' \\\n    --format json \\\n    plan.velmora\n\n"
              "  --name X\n      One or two words\n");
}

TEST(Progress, FitsTheTerminal)
{
    const tProgress known = {250, 3, 1000, "/home/me/\x1B[2J/a/b/Gr\u00FCn.velmora"};
    const std::pair<size_t, const char*> cases[] = {
        {200, "[#####...............] 250/1000 documents, 125/s, 0:06 left, 3 failed  "
              "/home/me/\\x1B[2J/a/b/Gr\u00FCn.velmora"},
        {90, "[#####...............] 250/1000 documents, 125/s, 0:06 left, 3 failed  /home/…Gr\u00FCn.velmora"},
        {64, "[##........] 250/1000 documents, 125/s, 0:06 left, 3 failed"},
        {40, "250/1000 documents, 0:06 left, 3 failed"},
        {30, "250/1000 documents, 3 failed"},
        {20, "250/1000 documents"}};
    for (const auto& [width, bar] : cases) {
        EXPECT_EQ(CProgress::FormatBar(known, 2, width), bar);
    }
    // A total that was counted before more documents came is none.
    EXPECT_EQ(CProgress::FormatBar({250, 0, 200, ""}, 5000, 80), "250 documents, 0/s");
}

TEST(Table, NarrowsAndLeavesOutColumnsWhereALineIsTooShort)
{
    CTable table({{"Library", false, 2}, {"Text"}, {"Kind", false, 1}, {"Count", true}});
    table.AddRow({"Halvensen", "Gerades Gleis,\nWeichenstra\u00DFe", "straight track", "12"});
    EXPECT_EQ(table.ToText({40, true, false}), "Text            Kind            Count\n"
                                               "Gerades Gleis,  straight track     12\nWeichenstra\u00DFe\n"
                                               "(no room for: Library; --wide shows\n  them)\n");
    EXPECT_EQ(table.ToText({tLook::kUnlimited, true, true}),
              "\x1B[1mLibrary    Text            Kind            Count\x1B[m\n"
              "Halvensen  Gerades Gleis,  straight track     12\n           Weichenstra\u00DFe\n");
}

TEST(Table, GuardsEachKindOfReader)
{
    CTable table({{"Name"}, {"Count", true}});
    table.AddRow({"=1+1", "-3"});
    table.AddRow({"a \"b\", c\n", "12"});
    table.AddRow({"<ü>", "7"});
    EXPECT_EQ(table.ToCSV(), "Name,Count\r\n'=1+1,-3\r\n\"a \"\"b\"\", c\n\",12\r\n<ü>,7\r\n");
    EXPECT_NE(table.ToCSV(true).find("\"a \"\"b\"\", c\\n\",12\r\n"), std::string::npos);
    EXPECT_EQ(table.ToText(), "Name        Count\n=1+1           -3\na \"b\", c\\n     12\n<ü>             7\n");
    EXPECT_NE(table.ToHTML().find("<tr><td>&lt;ü&gt;</td><td class=\"number\">7</td></tr>"), std::string::npos);
}

TEST(Money, IsWrittenAsTheCountryDoes)
{
    CCurrencies currencies;
    EXPECT_EQ(currencies.Add("129=EUR:2") + currencies.Add("-7=XTS:0") + currencies.Add("8=BHD:3:BD"), "");
    const tMoneyForm germany = {",", ".", "\3\3", false, true};
    const tMoneyForm india = {".", ",", "\3\2", true, false};
    const struct {
        long long amount;
        long long currency;
        const tMoneyForm& form;
        const char* text;
    } cases[] = {{649, 129, germany, "6,49 €"},
                 {-5, 129, germany, "-0,05 €"},
                 {100000, 129, germany, "1.000,00 €"},
                 {99999, 129, germany, "999,99 €"},
                 {123456789012, 129, india, "€1,23,45,67,890.12"},
                 {std::numeric_limits<long long>::min(), -7, germany, "-9.223.372.036.854.775.808 XTS"},
                 {1, 8, tMoneyForm(), "0.001 BD"},
                 {-649, 1, germany, "-649"}};
    for (const auto& c : cases) {
        EXPECT_EQ(currencies.Format(c.amount, c.currency, c.form), c.text);
    }
    for (const char* wrong : {"", "129", "129=EUR", "=EUR:2", "129=EURO:2", "129=EUR:7", "129=EUR:2:", "1e2=EUR:2",
                              "129=EUR:-1", "129=EUR:2:12345678901234567", "4294967296=EUR:2"}) {
        EXPECT_NE(currencies.Add(wrong), "") << wrong;
    }
}
