#include "index/CQuery.h"

#include "Bounds.h"
#include "protocol/UTF8.h"

#include <algorithm>
#include <iterator>
#include <optional>

namespace {
/// Fields as people name them, and the columns they are.
constexpr struct {
    std::string_view field;
    std::string_view column;
} kFields[] = {{"name", "name"},         {"author", "author"},     {"description", "description"},
               {"revision", "revision"}, {"layer", "layer"},       {"layers", "layer"},
               {"library", "library"},   {"libraries", "library"}, {"article", "article"},
               {"articles", "article"},  {"text", "text"},         {"folder", "folder"}};

/// Fields that hold figures, and the factor from what people write to what the index holds; size may have a unit.
constexpr struct {
    std::string_view field;
    eFigure figure;
    int64_t factor;
} kFigures[] = {{"size", eFigure::kSize, 1},         {"elements", eFigure::kElements, 1},
                {"tracks", eFigure::kTracks, 1000},  {"gauge", eFigure::kGauge, 100},
                {"modified", eFigure::kModified, 0}, {"created", eFigure::kCreated, 0}};

constexpr const char* kFieldNames = "name, author, description, revision, layer, library, article, text, folder, size, "
                                    "elements, tracks, gauge, modified, created";

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
    std::vector<tQueryNode> wanted;   ///< all of them
    std::vector<tQueryNode> unwanted; ///< none of them
    bool IsEmpty() const { return wanted.empty() && unwanted.empty(); }
};

tQueryNode Group(tQueryNode::eKind kind, std::vector<tQueryNode> parts)
{
    if (parts.size() == 1 && kind != tQueryNode::eKind::kNot) {
        return std::move(parts.front());
    }
    tQueryNode group;
    group.kind = kind;
    group.parts = std::move(parts);
    return group;
}

class CParser {
public:
    CParser(std::string_view text, const CQuery::tCountWords& countWords) : mText(text), mCountWords(countWords) {}

    tQueryNode Parse()
    {
        tPart part = ParseAlternatives({});
        if (mAt < mText.size()) {
            throw tMistake{mAt, "this parenthesis was never opened"};
        }
        if (part.IsEmpty()) {
            throw tMistake{0, "there is no word to search for"};
        }
        return Combine(std::move(part), 0);
    }

private:
    static tQueryNode Combine(tPart part, size_t at)
    {
        if (part.wanted.empty()) {
            throw tMistake{at, "only exclusions: there must be something to find, too"};
        }
        for (tQueryNode& node : part.unwanted) {
            std::vector<tQueryNode> inner;
            inner.push_back(std::move(node));
            part.wanted.push_back(Group(tQueryNode::eKind::kNot, std::move(inner)));
        }
        return Group(tQueryNode::eKind::kAll, std::move(part.wanted));
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
        std::vector<tQueryNode> alternatives;
        while (TakeOperator("OR", "||")) {
            const size_t place = mOperator;
            SkipBlanks();
            const size_t otherStart = mAt;
            tPart other = ParseAll(field);
            if (part.IsEmpty() || other.IsEmpty()) {
                throw tMistake{place, "there must be a word on both sides of this"};
            }
            alternatives.push_back(Combine(std::move(part), start));
            part = std::move(other);
            start = otherStart;
        }
        if (!alternatives.empty()) {
            alternatives.push_back(Combine(std::move(part), start));
            part = {};
            part.wanted.push_back(Group(tQueryNode::eKind::kAny, std::move(alternatives)));
        }
        return part;
    }

    tPart ParseAll(const std::optional<std::string_view>& field)
    {
        tPart all;
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
            std::move(part.wanted.begin(), part.wanted.end(), std::back_inserter(all.wanted));
            std::move(part.unwanted.begin(), part.unwanted.end(), std::back_inserter(all.unwanted));
        }
        if (pending != std::string_view::npos) {
            throw tMistake{pending, "there must be a word on both sides of this"};
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
        tPart part = ParseOne(field);
        if (part.IsEmpty()) {
            return part;
        }
        std::vector<tQueryNode> node;
        node.push_back(Combine(std::move(part), inner));
        if (!node.front().HasWords()) { // what a figure is not can be found by itself
            part = {};
            part.wanted.push_back(Group(tQueryNode::eKind::kNot, std::move(node)));
            return part;
        }
        return {{}, std::move(node)};
    }

    tPart ParseTerm(std::optional<std::string_view> field)
    {
        const size_t start = mAt;
        if (const size_t colon = FindField(); colon != std::string_view::npos) {
            if (field) {
                throw tMistake{start, "a field cannot stand within another field"};
            }
            const std::string name = Lower(mText.substr(start, colon - start));
            mAt = colon + 1;
            if (mAt == mText.size() || IsBlank(mText[mAt]) || mText[mAt] == ')') {
                throw tMistake{start, "there must be a word behind the field's colon, without a blank"};
            }
            for (const auto& known : kFigures) {
                if (name == known.field) {
                    return Single(ParseFigure(known.figure, known.factor));
                }
            }
            field = ColumnOf(name, start);
        }
        if (mText[mAt] == '(') {
            CNesting nesting(*this, mAt);
            const size_t parenthesis = mAt++;
            tPart part = ParseAlternatives(field);
            if (mAt == mText.size()) {
                throw tMistake{parenthesis, "this parenthesis is never closed"};
            }
            ++mAt;
            return part.IsEmpty() ? std::move(part) : Single(Combine(std::move(part), parenthesis));
        }
        return mText[mAt] == '"' ? ParsePhrase(field) : ParseWord(field);
    }

    static tPart Single(tQueryNode node)
    {
        tPart part;
        part.wanted.push_back(std::move(node));
        return part;
    }

    static std::string Lower(std::string_view text)
    {
        std::string lower(text);
        std::transform(lower.begin(), lower.end(), lower.begin(), [](char letter) {
            return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter | 0x20) : letter;
        });
        return lower;
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

    static std::string_view ColumnOf(const std::string& name, size_t at)
    {
        for (const auto& known : kFields) {
            if (name == known.field) {
                return known.column;
            }
        }
        throw tMistake{at, "there is no field of this name; there are " + std::string(kFieldNames) +
                               " (in quotes it is a word)"};
    }

    tPart ParsePhrase(const std::optional<std::string_view>& field)
    {
        const size_t start = mAt;
        const std::string_view phrase = TakeQuoted();
        const bool prefix = mAt < mText.size() && mText[mAt] == '*';
        mAt += prefix ? 1 : 0;
        tQueryNode node;
        node.form = prefix ? tQueryNode::eForm::kPhraseBegins : tQueryNode::eForm::kPhrase;
        return MakeTerm(std::move(node), field, phrase, start);
    }

    /// @return what stands in the quotation marks that begin here
    std::string_view TakeQuoted()
    {
        const size_t start = mAt;
        const size_t end = mText.find('"', start + 1);
        if (end == std::string_view::npos) {
            throw tMistake{start, "this quotation mark has no counterpart"};
        }
        mAt = end + 1;
        return mText.substr(start + 1, end - start - 1);
    }

    tPart ParseWord(const std::optional<std::string_view>& field)
    {
        const size_t start = mAt;
        mAt = EndOfWord(start);
        std::string_view word = mText.substr(start, mAt - start);
        const bool before = word.starts_with('*');
        word.remove_prefix(before ? 1 : 0);
        const bool behind = word.ends_with('*');
        word.remove_suffix(behind ? 1 : 0);
        if (const size_t star = word.find('*'); star != std::string_view::npos) {
            throw tMistake{start + star + (before ? 1 : 0),
                           "a * can stand at the beginning and the end of a word only"};
        }
        tQueryNode node;
        node.form = before && behind ? tQueryNode::eForm::kContains
                    : before         ? tQueryNode::eForm::kEnds
                    : behind         ? tQueryNode::eForm::kPhraseBegins
                                     : tQueryNode::eForm::kWord;
        return MakeTerm(std::move(node), field, word, start);
    }

    /// @return empty for a text that has no words
    tPart MakeTerm(tQueryNode node, const std::optional<std::string_view>& field, std::string_view text, size_t at)
    {
        CountTerm(at);
        node.column = field.value_or(std::string_view());
        node.text = text;
        std::replace(node.text.begin(), node.text.end(), '\0', ' '); // SQLite takes an expression as a C string
        const size_t words = mCountWords(node.text);
        if (words == 0) {
            return {};
        }
        if (words > 1 && (node.form == tQueryNode::eForm::kContains || node.form == tQueryNode::eForm::kEnds)) {
            throw tMistake{at, "behind a * there can be a single word only, without signs in it"};
        }
        if (words > 1 && node.form == tQueryNode::eForm::kWord) {
            node.form = tQueryNode::eForm::kPhrase;
        }
        return Single(std::move(node));
    }

    void CountTerm(size_t at)
    {
        if (++mTerms > Bounds::kMostQueryTerms) {
            throw tMistake{at, "these are more than " + std::to_string(Bounds::kMostQueryTerms) + " words"};
        }
    }

    tQueryNode ParseFigure(eFigure figure, int64_t factor)
    {
        const size_t start = mAt;
        CountTerm(start);
        std::string_view text;
        if (mText[mAt] == '"') {
            text = TakeQuoted();
        } else {
            mAt = EndOfWord(start);
            text = mText.substr(start, mAt - start);
        }
        tQueryNode node;
        node.kind = tQueryNode::eKind::kFigure;
        node.figure = figure;
        const std::string problem = Figures::Read(text, figure, factor, node.range);
        const bool isPlain =
            text.find_first_of("<>") == std::string_view::npos && text.find("..") == std::string_view::npos;
        if (figure == eFigure::kGauge && isPlain) { // "H0", but also 16.5
            node.text = text;
            std::replace(node.text.begin(), node.text.end(), '\0', ' ');
            node.range = problem.empty() ? node.range : tFigureRange{0, 0};
        } else if (!problem.empty()) {
            throw tMistake{start, problem};
        }
        return node;
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
    const CQuery::tCountWords& mCountWords;
    size_t mAt = 0;
    size_t mOperator = 0; ///< where the operator that was taken last stands
    int mNested = 0;
    size_t mTerms = 0;
};
} // namespace

bool tQueryNode::HasWords() const
{
    return kind == eKind::kWords ||
           std::any_of(parts.begin(), parts.end(), [](const tQueryNode& part) { return part.HasWords(); });
}

bool tQueryNode::HasFigures() const
{
    return kind == eKind::kFigure ||
           std::any_of(parts.begin(), parts.end(), [](const tQueryNode& part) { return part.HasFigures(); });
}

CQuery::CQuery(std::string_view text, const tCountWords& countWords)
{
    const std::string valid = UTF8::MakeValid(text);
    try {
        if (valid.size() > Bounds::kMostQueryBytes) {
            throw tMistake{Bounds::kMostQueryBytes, "the query is too long"};
        }
        mTree = CParser(valid, countWords).Parse();
    } catch (const tMistake& mistake) {
        mMessage = mistake.message;
        mColumn = UTF8::CountCharacters(std::string_view(valid).substr(0, mistake.at)) + 1;
    }
}
