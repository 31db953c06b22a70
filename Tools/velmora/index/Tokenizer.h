// How the index divides texts into words.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3;
struct fts5_api;

/// A word of a text.
struct tWord {
    std::string form; ///< as the index has it
    size_t start = 0; ///< the bytes of the text that it stands for
    size_t end = 0;
    bool isSpelling = false; ///< another form of the word before it
};

/// The words of an index: runs of letters and digits, in lower case and without diacritics, as SQLite's "unicode61"
/// makes them. Letters that have no such decomposition become what people without the key write (ss for ß, ae for æ,
/// oe for œ, o for ø, d for đ, l for ł). A word with ä, ö, ü, å or ø also stands in the index as ae, oe, ue, aa or oe
/// spell it, so that "Mueller" and "Muller" both find "Müller", and "Müller" finds both.
namespace Tokenizer {
/// The name under which a schema asks for it; "unicode61 remove_diacritics 2" must follow it there.
inline constexpr const char* kName = "velmora";

/// Sees every word of a document that is stored or taken away, in each of its forms. Must not use the connection.
using tTakeWord = std::function<void(std::string_view word)>;

/// Makes it known to a connection; needed before any statement that touches the words. @return false without FTS5
bool Register(sqlite3* connection, tTakeWord take = {});

/// What functions for the full-text index are registered with; null without FTS5.
fts5_api* FindInterface(sqlite3* connection);
} // namespace Tokenizer

/// Divides texts as the index does.
class CSplitter {
public:
    /// @param connection  knows the tokenizer; outlives this
    explicit CSplitter(sqlite3* connection);
    ~CSplitter();
    CSplitter(const CSplitter&) = delete;
    CSplitter& operator=(const CSplitter&) = delete;

    /// The words of a text, spellings behind their word. Empty for a text without letters and digits.
    std::vector<tWord> Split(std::string_view text);

private:
    struct tTool;
    std::unique_ptr<tTool> mTool;
};
