#include "index/CSearchExpression.h"

#include "Bounds.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace {
using eKind = tQueryNode::eKind;
using eForm = tQueryNode::eForm;
using ePlace = CVocabulary::tWanted::ePlace;

constexpr const char* kProminent = "{name author description} : ";

/// Bytes that a word must have so that beginnings or parts of words are looked for: a letter is too little. A character
/// of many scripts has two or three bytes, and says more.
constexpr size_t kLeastForBeginnings = 2;
constexpr size_t kLeastForParts = 3;

std::string Quoted(const std::string& text)
{
    std::string quoted = "\"";
    for (const char character : text) {
        quoted.append(character == '"' ? 2 : 1, character);
    }
    return quoted + "\"";
}

/// The columns of `figure`, in the order of eFigure; a gauge is in a table of its own.
constexpr const char* kColumns[] = {"size", "elements", "tracks", nullptr, "modified", "created"};

/// Scales of the H0 family are written with the digit, and typed with the letter.
std::string WithDigits(std::string text)
{
    std::replace_if(
        text.begin(), text.end(), [](char letter) { return letter == 'O' || letter == 'o'; }, '0');
    return text;
}
} // namespace

CSearchExpression::CSearchExpression(const tQueryNode& tree, bool wholeWords, tSplit split, tFindParts find)
    : mTree(tree), mWholeWords(wholeWords), mSplit(std::move(split)), mFind(std::move(find))
{
    if (tree.kind == eKind::kAll) {
        for (const tQueryNode& part : tree.parts) {
            Sort(part);
        }
    } else {
        Sort(tree);
    }
    if (mTextWanted.empty()) { // exclusions alone are none of the full-text index's expressions
        std::move(mTextUnwanted.begin(), mTextUnwanted.end(), std::back_inserter(mConditions));
        mTextUnwanted.clear();
    }
    CollectTerms(tree, mTerms);
    mHasReach = std::any_of(mTerms.begin(), mTerms.end(), [&](const auto* term) { return IsReaching(*term); });
}

void CSearchExpression::Sort(const tQueryNode& node)
{
    if (node.HasFigures()) {
        mConditions.push_back(&node);
    } else if (node.kind == eKind::kNot) {
        mTextUnwanted.push_back(&node);
    } else {
        mTextWanted.push_back(&node);
    }
}

void CSearchExpression::CollectTerms(const tQueryNode& node, std::vector<const tQueryNode*>& terms) const
{
    if (node.kind == eKind::kWords) {
        terms.push_back(&node);
    } else if (node.kind != eKind::kNot) {
        for (const tQueryNode& part : node.parts) {
            CollectTerms(part, terms);
        }
    }
}

bool CSearchExpression::IsReaching(const tQueryNode& node) const
{
    return !mWholeWords && node.form == eForm::kWord && node.text.size() >= kLeastForBeginnings;
}

/// Finds the words of the index that the words of the query are parts of.
void CSearchExpression::FindParts()
{
    if (std::exchange(mHasParts, true)) {
        return;
    }
    std::vector<CVocabulary::tWanted> wanted;
    std::vector<std::pair<const tQueryNode*, bool>> owners; // whether the words are beginnings
    const auto collect = [&](const auto& self, const tQueryNode& node) -> void {
        const bool isStarred = node.form == eForm::kEnds || node.form == eForm::kContains;
        if (node.kind == eKind::kWords && (isStarred || IsReaching(node))) {
            for (const tWord& word : mSplit(node.text)) {
                const size_t size = word.form.size();
                if (isStarred) {
                    wanted.push_back({word.form, node.form == eForm::kEnds ? ePlace::kEnd : ePlace::kAnywhere, {}, {}});
                    owners.emplace_back(&node, false);
                    continue;
                }
                if (size >= kLeastForBeginnings) {
                    wanted.push_back({word.form, ePlace::kBeginning, {}, {}});
                    owners.emplace_back(&node, true);
                }
                if (size >= kLeastForParts) {
                    wanted.push_back({word.form, ePlace::kInside, {}, {}});
                    owners.emplace_back(&node, false);
                }
            }
        }
        for (const tQueryNode& part : node.parts) {
            self(self, part);
        }
    };
    collect(collect, mTree);
    if (wanted.empty()) {
        return;
    }
    mFind(wanted);
    const size_t share = std::max<size_t>(Bounds::kMostQueryPartWords / wanted.size(), 1);
    std::string cut;
    for (size_t i = 0; i < wanted.size(); ++i) {
        tParts& parts = mParts[owners[i].first];
        tWords& words = owners[i].second ? parts.beginnings : parts.insides;
        size_t count = 0;
        for (const auto& [size, word] : wanted[i].words) {
            if (count++ < share) {
                words.push_back(word);
            }
        }
        if ((wanted[i].isCut || count > share) && cut != wanted[i].part) {
            cut = wanted[i].part;
            mNotes.push_back("\"" + cut + "\" is a part of more words than are looked for: the " +
                             std::to_string(std::min(share, wanted[i].words.size())) + " shortest of them are");
        }
    }
}

std::string CSearchExpression::Term(const tQueryNode& node, eReach reach, bool isProminent)
{
    std::string term = Quoted(node.text) + (node.form == eForm::kPhraseBegins ? " *" : "");
    const bool isStarred = node.form == eForm::kEnds || node.form == eForm::kContains;
    if (isStarred || (reach != eReach::kWhole && IsReaching(node))) {
        FindParts();
        const tParts& parts = mParts[&node];
        for (const tWords* words : {&parts.beginnings, &parts.insides}) {
            if (words == &parts.insides && !isStarred && reach != eReach::kParts) {
                break;
            }
            for (const std::string& word : *words) {
                term += " OR " + Quoted(word);
            }
        }
        term = "(" + term + ")";
    }
    if (!node.column.empty()) {
        return node.column + " : " + term;
    }
    return (isProminent ? kProminent : "") + term;
}

std::string CSearchExpression::Joined(const std::vector<const tQueryNode*>& wanted,
                                      const std::vector<const tQueryNode*>& unwanted, eReach reach, bool isProminent)
{
    std::string text;
    for (const tQueryNode* part : wanted) {
        text += (text.empty() ? "" : " AND ") + Text(*part, reach, isProminent);
    }
    std::string excluded;
    for (const tQueryNode* part : unwanted) { // whole words only: what goes is what was named
        excluded += (excluded.empty() ? "" : " OR ") + Text(part->parts.front(), eReach::kWhole, false);
    }
    text = wanted.size() > 1 ? "(" + text + ")" : text;
    return excluded.empty() ? text : "(" + text + " NOT (" + excluded + "))";
}

std::string CSearchExpression::Text(const tQueryNode& node, eReach reach, bool isProminent)
{
    if (node.kind == eKind::kWords) {
        return Term(node, reach, isProminent);
    }
    if (node.kind == eKind::kAny) {
        std::string text;
        for (const tQueryNode& part : node.parts) {
            text += (text.empty() ? "(" : " OR ") + Text(part, reach, isProminent);
        }
        return text + ")";
    }
    std::vector<const tQueryNode*> wanted;
    std::vector<const tQueryNode*> unwanted;
    for (const tQueryNode& part : node.parts) {
        (part.kind == eKind::kNot ? unwanted : wanted).push_back(&part);
    }
    return Joined(wanted, unwanted, reach, isProminent);
}

std::string CSearchExpression::GetText(eReach reach, bool isProminent)
{
    return Joined(mTextWanted, mTextUnwanted, reach, isProminent);
}

std::string CSearchExpression::Condition(const tQueryNode& node, int firstParameter, std::vector<tValue>& values)
{
    const auto number = [&](tValue value) {
        values.push_back(std::move(value));
        return "?" + std::to_string(firstParameter + static_cast<int>(values.size()) - 1);
    };
    const auto within = [&](const std::string& column) {
        return column + " >= " + number({false, {}, node.range.from}) + " AND " + column + " < " +
               number({false, {}, node.range.to});
    };
    if (node.kind == eKind::kNot) {
        return "NOT " + Condition(node.parts.front(), firstParameter, values);
    }
    if (!node.HasFigures()) {
        const std::string text = Text(node, mWholeWords ? eReach::kWhole : eReach::kParts, false);
        return "figure.id IN (SELECT rowid FROM words WHERE words MATCH " + number({true, text, 0}) + ")";
    }
    if (node.kind == eKind::kFigure) {
        if (node.figure != eFigure::kGauge) { // what is not known is neither within nor, when excluded, beyond
            return "coalesce(" + within(std::string("figure.") + kColumns[static_cast<size_t>(node.figure)]) + ", 0)";
        }
        std::string gauge = "(" + within("width") + ")";
        if (!node.text.empty()) {
            const std::string name = number({true, node.text, 0});
            gauge += " OR scale = " + name + " COLLATE NOCASE OR scale = " + number({true, WithDigits(node.text), 0}) +
                     " COLLATE NOCASE";
        }
        return "figure.id IN (SELECT id FROM gauge WHERE " + gauge + ")";
    }
    std::string text;
    for (const tQueryNode& part : node.parts) {
        text += (text.empty()               ? "("
                 : node.kind == eKind::kAny ? " OR "
                                            : " AND ") +
                Condition(part, firstParameter, values);
    }
    return text + ")";
}

std::string CSearchExpression::GetCondition(int firstParameter, std::vector<tValue>& values)
{
    std::string text;
    for (const tQueryNode* node : mConditions) {
        text += (text.empty() ? "" : " AND ") + Condition(*node, firstParameter, values);
    }
    return text;
}

std::vector<CPassageFinder::tTerm> CSearchExpression::GetTerms() const
{
    using eEdge = CPassageFinder::tTerm::eEdge;
    std::vector<CPassageFinder::tTerm> terms;
    for (const tQueryNode* node : mTerms) {
        CPassageFinder::tTerm term;
        term.column = node->column;
        for (tWord& word : mSplit(node->text)) {
            if (!word.isSpelling) {
                term.words.emplace_back();
            }
            term.words.back().push_back(std::move(word.form));
        }
        const size_t size = term.words.front().front().size();
        term.edge = node->form == eForm::kPhraseBegins                 ? eEdge::kBegins
                    : node->form == eForm::kEnds                       ? eEdge::kEnds
                    : node->form == eForm::kContains                   ? eEdge::kContains
                    : !IsReaching(*node) || size < kLeastForBeginnings ? eEdge::kWhole
                    : size < kLeastForParts                            ? eEdge::kBegins
                                                                       : eEdge::kContains;
        terms.push_back(std::move(term));
    }
    return terms;
}

std::vector<const tQueryNode*> CSearchExpression::GetStrangers()
{
    FindParts();
    std::vector<const tQueryNode*> strangers;
    for (const tQueryNode* node : mTerms) {
        const tParts& parts = mParts[node];
        if (node->form == eForm::kWord && parts.beginnings.empty() && parts.insides.empty()) {
            strangers.push_back(node);
        }
    }
    return strangers;
}

std::string CSearchExpression::TextOf(const std::string& word, const std::string& column)
{
    return (column.empty() ? "" : column + " : ") + Quoted(word);
}
