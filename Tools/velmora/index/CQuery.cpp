#include "index/CQuery.h"

#include "Bounds.h"
#include "protocol/UTF8.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace {
/// Fields as people name them, and the columns they are.
constexpr struct {
    std::string_view field;
    std::string_view column;
} kFields[] = {{"name", "name"},         {"author", "author"},     {"description", "description"},
               {"revision", "revision"}, {"layer", "layer"},       {"layers", "layer"},
               {"library", "library"},   {"libraries", "library"}, {"article", "article"},
               {"articles", "article"},  {"text", "text"}};
constexpr const char* kFieldNames = "name, author, description, revision, layer, library, article, text";

/// Ends the parsing where it is; caught in the constructor of CQuery.
struct tMistake {
    size_t at; ///< byte
    std::string message;
};

bool IsBlank(char byte)
{
    return byte == ' ' || (byte >= '\t' && byte <= '\r') || byte == 0;
}

/// What a part of the query wants; all empty when it was passed over.
struct tPart {
    std::string wanted;
    std::string unwanted; ///< alternatives, joined by OR
    bool IsEmpty() const { return wanted.empty() && unwanted.empty(); }
};

class CParser {
public:
    CParser(std::string_view text, const CQuery::tHasWords& hasWords) : mText(text), mHasWords(hasWords) {}

    std::string Parse()
    {
        const tPart part = ParseAlternatives({});
        if (mAt < mText.size()) {
            throw tMistake{mAt, "this parenthesis was never opened"};
        }
        if (part.IsEmpty()) {
            throw tMistake{0, "there is no word to search for"};
        }
        return Combine(part, 0);
    }

private:
    static std::string Combine(const tPart& part, size_t at)
    {
        if (part.wanted.empty()) {
            throw tMistake{at, "only exclusions: there must be something to find, too"};
        }
        return part.unwanted.empty() ? part.wanted : "(" + part.wanted + " NOT (" + part.unwanted + "))";
    }

    void SkipBlanks()
    {
        while (mAt < mText.size() && IsBlank(mText[mAt])) {
            ++mAt;
        }
    }

    /// Where the bare word that starts at `at` ends.
    size_t EndOfWord(size_t at) const
    {
        while (at < mText.size() && !IsBlank(mText[at]) && mText[at] != '"' && mText[at] != '(' && mText[at] != ')') {
            ++at;
        }
        return at;
    }

    /// Takes an operator, if it comes next and stands alone.
    bool TakeOperator(std::string_view word, std::string_view sign)
    {
        SkipBlanks();
        const std::string_view next = mText.substr(mAt, EndOfWord(mAt) - mAt);
        if (next != word && (sign.empty() || next != sign)) {
            return false;
        }
        mOperator = mAt;
        mAt += next.size();
        return true;
    }

    tPart ParseAlternatives(const std::optional<std::string_view>& field)
    {
        SkipBlanks();
        size_t start = mAt;
        tPart part = ParseAll(field);
        bool several = false;
        while (TakeOperator("OR", "||")) {
            const size_t place = mOperator;
            SkipBlanks();
            const size_t otherStart = mAt;
            const tPart other = ParseAll(field);
            if (part.IsEmpty() || other.IsEmpty()) {
                throw tMistake{place, "there must be a word on both sides of this"};
            }
            part = {(several ? part.wanted : Combine(part, start)) + " OR " + Combine(other, otherStart), {}};
            several = true;
            start = otherStart;
        }
        if (several) {
            part.wanted = "(" + part.wanted + ")";
        }
        return part;
    }

    tPart ParseAll(const std::optional<std::string_view>& field)
    {
        tPart all;
        size_t wanted = 0;
        size_t pending = std::string_view::npos; // the place of an AND that wants another side
        bool any = false;
        for (;;) {
            if (TakeOperator("AND", "&&")) {
                if (!any || pending != std::string_view::npos) {
                    throw tMistake{mOperator, "there must be a word on both sides of this"};
                }
                pending = mOperator;
                continue;
            }
            if (IsEndOfAll()) {
                break;
            }
            tPart part = ParseOne(field);
            any = true;
            pending = std::string_view::npos;
            if (!part.wanted.empty()) {
                all.wanted += (all.wanted.empty() ? "" : " AND ") + part.wanted;
                ++wanted;
            }
            if (!part.unwanted.empty()) {
                all.unwanted += (all.unwanted.empty() ? "" : " OR ") + part.unwanted;
            }
        }
        if (pending != std::string_view::npos) {
            throw tMistake{pending, "there must be a word on both sides of this"};
        }
        if (wanted > 1) {
            all.wanted = "(" + all.wanted + ")";
        }
        return all;
    }

    bool IsEndOfAll()
    {
        SkipBlanks();
        if (mAt == mText.size() || mText[mAt] == ')') {
            return true;
        }
        const size_t before = mAt;
        const bool isOr = TakeOperator("OR", "||");
        mAt = before;
        return isOr;
    }

    tPart ParseOne(const std::optional<std::string_view>& field)
    {
        const size_t start = mAt;
        const size_t end = EndOfWord(mAt);
        const bool dash = mText[mAt] == '-' && mAt + 1 < mText.size() && !IsBlank(mText[mAt + 1]);
        if (!dash && !TakeOperator("NOT", {})) {
            return ParseTerm(field);
        }
        if (dash) {
            ++mAt;
        }
        SkipBlanks();
        if (mAt == mText.size() || mText[mAt] == ')') {
            throw tMistake{start, "there is nothing to exclude behind this"};
        }
        if (dash && mText[mAt] == '-' && mAt + 1 == end) { // "--"
            mAt = end;
            return {};
        }
        CNesting nesting(*this, start);
        const size_t inner = mAt;
        const tPart part = ParseOne(field);
        return part.IsEmpty() ? part : tPart{{}, Combine(part, inner)};
    }

    tPart ParseTerm(std::optional<std::string_view> field)
    {
        const size_t start = mAt;
        if (const size_t colon = FindField(); colon != std::string_view::npos) {
            if (field) {
                throw tMistake{start, "a field cannot stand within another field"};
            }
            field = ColumnOf(mText.substr(start, colon - start), start);
            mAt = colon + 1;
            if (mAt == mText.size() || IsBlank(mText[mAt]) || mText[mAt] == ')') {
                throw tMistake{start, "there must be a word behind the field's colon, without a blank"};
            }
        }
        if (mText[mAt] == '(') {
            CNesting nesting(*this, mAt);
            const size_t parenthesis = mAt++;
            tPart part = ParseAlternatives(field);
            if (mAt == mText.size()) {
                throw tMistake{parenthesis, "this parenthesis is never closed"};
            }
            ++mAt;
            return part.IsEmpty() ? part : tPart{Combine(part, parenthesis), {}};
        }
        return {mText[mAt] == '"' ? ParsePhrase(field) : ParseWord(field), {}};
    }

    /// Where the colon of a field's name is; npos when what comes is no name of a field. "12:30" is none.
    size_t FindField() const
    {
        size_t at = mAt;
        while (at < mText.size() &&
               ((mText[at] >= 'a' && mText[at] <= 'z') || (mText[at] >= 'A' && mText[at] <= 'Z'))) {
            ++at;
        }
        return at > mAt && at < mText.size() && mText[at] == ':' ? at : std::string_view::npos;
    }

    static std::string_view ColumnOf(std::string_view name, size_t at)
    {
        std::string lower(name);
        std::transform(lower.begin(), lower.end(), lower.begin(),
                       [](char letter) { return static_cast<char>(letter | 0x20); });
        for (const auto& known : kFields) {
            if (lower == known.field) {
                return known.column;
            }
        }
        throw tMistake{at, "there is no field of this name; there are " + std::string(kFieldNames) +
                               " (in quotes it is a word)"};
    }

    std::string ParsePhrase(const std::optional<std::string_view>& field)
    {
        const size_t start = mAt;
        const size_t end = mText.find('"', start + 1);
        if (end == std::string_view::npos) {
            throw tMistake{start, "this quotation mark has no counterpart"};
        }
        mAt = end + 1;
        const bool prefix = mAt < mText.size() && mText[mAt] == '*';
        mAt += prefix ? 1 : 0;
        return MakeTerm(field, mText.substr(start + 1, end - start - 1), prefix, start);
    }

    std::string ParseWord(const std::optional<std::string_view>& field)
    {
        const size_t start = mAt;
        const size_t end = EndOfWord(start);
        mAt = end;
        std::string_view word = mText.substr(start, end - start);
        const size_t star = word.find('*');
        if (star != std::string_view::npos && (star + 1 != word.size() || star == 0)) {
            throw tMistake{start + star, "a * can stand at the end of a word only"};
        }
        return MakeTerm(field, word.substr(0, star), star != std::string_view::npos, start);
    }

    /// @return empty for a text that has no words
    std::string MakeTerm(const std::optional<std::string_view>& field, std::string_view text, bool prefix, size_t at)
    {
        if (++mTerms > Bounds::kMostQueryTerms) {
            throw tMistake{at, "these are more than " + std::to_string(Bounds::kMostQueryTerms) + " words"};
        }
        std::string phrase(text);
        std::replace(phrase.begin(), phrase.end(), '\0', ' '); // SQLite takes an expression as a C string
        if (!mHasWords(phrase)) {
            return {};
        }
        // No quotation mark can be in it, so nothing needs to be doubled.
        return (field ? std::string(*field) + " : " : std::string()) + "\"" + phrase + "\"" + (prefix ? " *" : "");
    }

    /// Counts how deep the parser is.
    class CNesting {
    public:
        CNesting(CParser& parser, size_t at) : mParser(parser)
        {
            if (mParser.mNested >= Bounds::kDeepestQuery) {
                throw tMistake{at, "this is nested too deeply"};
            }
            ++mParser.mNested;
        }
        ~CNesting() { --mParser.mNested; }
        CNesting(const CNesting&) = delete;
        CNesting& operator=(const CNesting&) = delete;

    private:
        CParser& mParser;
    };

    std::string_view mText;
    const CQuery::tHasWords& mHasWords;
    size_t mAt = 0;
    size_t mOperator = 0; ///< where the operator that was taken last stands
    int mNested = 0;
    size_t mTerms = 0;
};

size_t CharactersIn(std::string_view text)
{
    return static_cast<size_t>(std::count_if(
        text.begin(), text.end(), [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }));
}
} // namespace

CQuery::CQuery(std::string_view text, const tHasWords& hasWords)
{
    const std::string valid = UTF8::MakeValid(text);
    try {
        if (valid.size() > Bounds::kMostQueryBytes) {
            throw tMistake{Bounds::kMostQueryBytes, "the query is too long"};
        }
        mExpression = CParser(valid, hasWords).Parse();
    } catch (const tMistake& mistake) {
        mMessage = mistake.message;
        mColumn = CharactersIn(std::string_view(valid).substr(0, mistake.at)) + 1;
    }
}
