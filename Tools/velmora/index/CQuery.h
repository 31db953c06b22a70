// What people type to search, as an expression of the full-text index.
#pragma once

#include <functional>
#include <string>
#include <string_view>

/// A query as it was typed, understood. The language, from loose to tight:
///
///     a OR b   a || b        one of them
///     a b   a AND b   a && b both
///     -a   NOT a             not a; beside something that is wanted
///     ( … )                  together
///     field:…                only in this field: a word, a phrase or something in parentheses
///     word   wor*   "two words"   "two wor"*
///
/// Whatever is typed, the expression is one that FTS5 takes: words reach it in quotes only.
class CQuery {
public:
    /// Whether a text holds a letter or digit as the index sees it; others find nothing and are passed over.
    using tHasWords = std::function<bool(std::string_view)>;

    CQuery(std::string_view text, const tHasWords& hasWords);

    bool IsGood() const { return mMessage.empty(); }

    /// The expression; empty when the query is not good.
    const std::string& GetExpression() const { return mExpression; }

    /// What is wrong, for people; empty when nothing is.
    const std::string& GetMessage() const { return mMessage; }

    /// The character at which it is wrong, counted from 1.
    size_t GetColumn() const { return mColumn; }

private:
    std::string mExpression;
    std::string mMessage;
    size_t mColumn = 0;
};
