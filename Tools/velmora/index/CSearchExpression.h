// A query in the language of the full-text index, and in SQL where it asks for figures.
#pragma once

#include "index/CPassageFinder.h"
#include "index/CQuery.h"
#include "index/CVocabulary.h"

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

/// How far from its words a query is answered: as they are, with words that begin like them, or that contain them.
enum class eReach { kWhole, kBeginnings, kParts };

/// Makes expressions of a query.
class CSearchExpression {
public:
    using tSplit = std::function<std::vector<tWord>(std::string_view)>;
    /// Finds the words of the index that have parts.
    using tFindParts = std::function<void(std::vector<CVocabulary::tWanted>&)>;

    /// @param tree        outlives this
    /// @param wholeWords  beginnings and parts only where a * says so
    CSearchExpression(const tQueryNode& tree, bool wholeWords, tSplit split, tFindParts find);

    /// Whether the full-text index is asked first; else everything is in the condition.
    bool HasText() const { return !mTextWanted.empty(); }
    /// Whether there can be more to be found than whole words.
    bool HasReach() const { return mHasReach; }

    /// For the full-text index, which takes it whatever was typed: words reach it in quotes only.
    /// @param isProminent  words that may be anywhere must be in a prominent column
    std::string GetText(eReach reach, bool isProminent = false);

    /// What has to hold besides, over `figure`, in SQL with parameters from "?NUMBER" on; empty for nothing.
    struct tValue {
        bool isText = false;
        std::string text;
        int64_t number = 0;
    };
    std::string GetCondition(int firstParameter, std::vector<tValue>& values);

    /// What passages show.
    std::vector<CPassageFinder::tTerm> GetTerms() const;
    /// Words that are wanted, and a part of no other word of the index.
    std::vector<const tQueryNode*> GetStrangers();
    /// A word in the language of the full-text index. @param column  empty for all
    static std::string TextOf(const std::string& word, const std::string& column);
    const std::vector<std::string>& GetNotes() const { return mNotes; }

private:
    using tWords = std::vector<std::string>;
    struct tParts {
        tWords beginnings;
        tWords insides;
    };

    void Sort(const tQueryNode& node);
    void CollectTerms(const tQueryNode& node, std::vector<const tQueryNode*>& terms) const;
    bool IsReaching(const tQueryNode& node) const;
    void FindParts();
    std::string Text(const tQueryNode& node, eReach reach, bool isProminent);
    std::string Term(const tQueryNode& node, eReach reach, bool isProminent);
    std::string Joined(const std::vector<const tQueryNode*>& wanted, const std::vector<const tQueryNode*>& unwanted,
                       eReach reach, bool isProminent);
    std::string Condition(const tQueryNode& node, int firstParameter, std::vector<tValue>& values);

    const tQueryNode& mTree;
    const bool mWholeWords;
    tSplit mSplit;
    tFindParts mFind;
    bool mHasReach = false;
    bool mHasParts = false; ///< mParts is filled
    std::vector<const tQueryNode*> mTextWanted;
    std::vector<const tQueryNode*> mTextUnwanted;
    std::vector<const tQueryNode*> mConditions;
    std::vector<const tQueryNode*> mTerms; ///< that are wanted
    std::map<const tQueryNode*, tParts> mParts;
    std::vector<std::string> mNotes;
};
