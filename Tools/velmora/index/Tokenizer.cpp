#include "index/Tokenizer.h"

#include <algorithm>
#include <memory>
#include <sqlite3.h>
#include <string_view>

namespace {
using tTokenCallback = int (*)(void*, int, const char*, int, int, int);

/// Letters that stay what they are when diacritics are removed.
constexpr struct {
    std::string_view letter; ///< in lower case
    std::string_view spelled;
} kLetters[] = {{"ß", "ss"}, {"æ", "ae"}, {"œ", "oe"}, {"ø", "o"},  {"đ", "d"},  {"ð", "d"},
                {"þ", "th"}, {"ł", "l"},  {"ı", "i"},  {"ﬁ", "fi"}, {"ﬂ", "fl"}, {"ƒ", "f"}};

constexpr struct {
    std::string_view letter;
    std::string_view spelled;
} kUmlauts[] = {{"ä", "ae"}, {"ö", "oe"}, {"ü", "ue"}, {"Ä", "ae"}, {"Ö", "oe"}, {"Ü", "ue"}};

bool IsASCII(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

/// Replaces letters by their spelling. @return whether there was one
template <typename tTable>
bool Spell(std::string_view text, const tTable& table, std::string& spelled)
{
    bool found = false;
    spelled.clear();
    for (size_t at = 0; at < text.size();) {
        const auto known = std::find_if(std::begin(table), std::end(table), [&](const auto& entry) {
            return text.substr(at, entry.letter.size()) == entry.letter;
        });
        if (known == std::end(table)) {
            spelled += text[at++];
        } else {
            spelled += known->spelled;
            at += known->letter.size();
            found = true;
        }
    }
    return found;
}

/// SQLite's own tokenizer, and what it was made with.
struct tTokenizer {
    fts5_tokenizer module = {};
    Fts5Tokenizer* instance = nullptr;

    ~tTokenizer()
    {
        if (instance != nullptr) {
            module.xDelete(instance);
        }
    }
};

/// The way of one text through the tokenizer.
struct tPass {
    const tTokenizer* tokenizer;
    const char* text;
    void* context;
    tTokenCallback callback;
    std::string buffer;
};

/// Takes the first word of an umlaut's spelling.
int TakeWord(void* context, int, const char* token, int size, int, int)
{
    std::string& word = *static_cast<std::string*>(context);
    std::string spelled;
    Spell(std::string_view(token, static_cast<size_t>(size)), kLetters, spelled);
    word += spelled;
    return SQLITE_OK;
}

int Forward(void* context, int flags, const char* token, int size, int start, int end)
{
    tPass& pass = *static_cast<tPass*>(context);
    const std::string_view original(pass.text + start, static_cast<size_t>(end - start));
    if (IsASCII(original)) {
        return pass.callback(pass.context, flags, token, size, start, end);
    }
    std::string_view word(token, static_cast<size_t>(size));
    if (!IsASCII(word) && Spell(word, kLetters, pass.buffer)) {
        word = pass.buffer;
    }
    const int result = pass.callback(pass.context, flags, word.data(), static_cast<int>(word.size()), start, end);
    std::string umlauts;
    if (result != SQLITE_OK || !Spell(original, kUmlauts, umlauts)) {
        return result;
    }
    std::string spelled;
    pass.tokenizer->module.xTokenize(pass.tokenizer->instance, &spelled, FTS5_TOKENIZE_AUX, umlauts.data(),
                                     static_cast<int>(umlauts.size()), TakeWord);
    return pass.callback(pass.context, flags | FTS5_TOKEN_COLOCATED, spelled.data(), static_cast<int>(spelled.size()),
                         start, end);
}

int Tokenize(Fts5Tokenizer* self, void* context, int flags, const char* text, int size, tTokenCallback callback)
{
    const auto* tokenizer = reinterpret_cast<const tTokenizer*>(self);
    tPass pass = {tokenizer, text, context, callback, {}};
    return tokenizer->module.xTokenize(tokenizer->instance, &pass, flags, text, size, Forward);
}

int Create(void* interface, const char** arguments, int count, Fts5Tokenizer** made)
{
    auto* api = static_cast<fts5_api*>(interface);
    auto tokenizer = std::make_unique<tTokenizer>();
    void* parent = nullptr;
    if (count < 1 || api->xFindTokenizer(api, arguments[0], &parent, &tokenizer->module) != SQLITE_OK) {
        return SQLITE_ERROR;
    }
    const int result = tokenizer->module.xCreate(parent, arguments + 1, count - 1, &tokenizer->instance);
    if (result == SQLITE_OK) {
        *made = reinterpret_cast<Fts5Tokenizer*>(tokenizer.release());
    }
    return result;
}

void Delete(Fts5Tokenizer* self)
{
    delete reinterpret_cast<tTokenizer*>(self);
}

fts5_api* FindInterface(sqlite3* connection)
{
    fts5_api* api = nullptr;
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(connection, "SELECT fts5(?1)", -1, &statement, nullptr) == SQLITE_OK) {
        sqlite3_bind_pointer(statement, 1, &api, "fts5_api_ptr", nullptr);
        sqlite3_step(statement);
    }
    sqlite3_finalize(statement);
    return api;
}

int Collect(void* context, int, const char* token, int size, int, int)
{
    static_cast<std::vector<std::string>*>(context)->emplace_back(token, static_cast<size_t>(size));
    return SQLITE_OK;
}
} // namespace

bool Tokenizer::Register(sqlite3* connection)
{
    fts5_api* api = FindInterface(connection);
    fts5_tokenizer module = {Create, Delete, Tokenize};
    return api != nullptr && api->xCreateTokenizer(api, kName, api, &module, nullptr) == SQLITE_OK;
}

std::vector<std::string> Tokenizer::Split(sqlite3* connection, const std::string& text)
{
    std::vector<std::string> words;
    fts5_api* api = FindInterface(connection);
    fts5_tokenizer module = {};
    void* context = nullptr;
    Fts5Tokenizer* instance = nullptr;
    const char* arguments[] = {"unicode61", "remove_diacritics", "2"};
    if (api == nullptr || api->xFindTokenizer(api, kName, &context, &module) != SQLITE_OK ||
        module.xCreate(context, arguments, 3, &instance) != SQLITE_OK) {
        return words;
    }
    module.xTokenize(instance, &words, FTS5_TOKENIZE_AUX, text.data(), static_cast<int>(text.size()), Collect);
    module.xDelete(instance);
    return words;
}
