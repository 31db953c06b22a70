// What people type to search, understood.
#pragma once

#include "index/Figures.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// A part of a query.
struct tQueryNode {
    enum class eKind {
        kWords,  ///< a word or a phrase
        kFigure, ///< a number or a date
        kAll,    ///< all of the parts
        kAny,    ///< one of the parts
        kNot     ///< not the only part; never alone where it is about words
    };
    /// How words are meant.
    enum class eForm {
        kWord,         ///< a word, or a part of one
        kPhrase,       ///< words that follow each other, as they are
        kPhraseBegins, ///< the same, but the last one may go on
        kEnds,         ///< a word that ends like this
        kContains      ///< a word that this is in
    };

    eKind kind = eKind::kWords;
    eForm form = eForm::kWord;
    std::string column; ///< kWords: where they must be; empty for everywhere
    std::string text;   ///< kWords: as typed, no quotation mark in it; kFigure: a name of a gauge, or empty
    eFigure figure = eFigure::kSize;
    tFigureRange range; ///< kFigure
    std::vector<tQueryNode> parts;

    bool HasWords() const;   ///< in it or below
    bool HasFigures() const; ///< in it or below
};

/// A query as it was typed. The language, from loose to tight:
///
///     a OR b   a || b        one of them
///     a b   a AND b   a && b both
///     -a   NOT a             not a; beside something that is wanted
///     ( … )                  together
///     field:…                only in this field: a word, a phrase or something in parentheses
///     field:>1   :1..2       for fields that hold numbers or dates, see Figures
///     word   wor*   *ord   *or*   "two words"   "two wor"*
class CQuery {
public:
    /// How many words a text holds as the index sees it; what has none finds nothing and is passed over.
    using tCountWords = std::function<size_t(std::string_view)>;

    CQuery(std::string_view text, const tCountWords& countWords);

    bool IsGood() const { return mMessage.empty(); }

    /// What is wanted; of no use when the query is not good.
    const tQueryNode& GetTree() const { return mTree; }

    /// What is wrong, for people; empty when nothing is.
    const std::string& GetMessage() const { return mMessage; }

    /// The character at which it is wrong, counted from 1.
    size_t GetColumn() const { return mColumn; }

private:
    tQueryNode mTree;
    std::string mMessage;
    size_t mColumn = 0;
};
