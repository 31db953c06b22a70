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

/// Letters that also have a spelling of their own; those of names of files may come in two parts.
constexpr struct {
    std::string_view letter;
    std::string_view spelled;
} kSpellings[] = {{"ä", "ae"},       {"ö", "oe"},       {"ü", "ue"},       {"Ä", "ae"},       {"Ö", "oe"},
                  {"Ü", "ue"},       {"å", "aa"},       {"Å", "aa"},       {"ø", "oe"},       {"Ø", "oe"},
                  {"a\u0308", "ae"}, {"o\u0308", "oe"}, {"u\u0308", "ue"}, {"a\u030A", "aa"}, {"A\u0308", "ae"},
                  {"O\u0308", "oe"}, {"U\u0308", "ue"}, {"A\u030A", "aa"}};

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

/// What belongs to a connection.
struct tContext {
    fts5_api* api;
    Tokenizer::tTakeWord take;
};

/// SQLite's own tokenizer, and what it was made with.
struct tTokenizer {
    const tContext* context = nullptr;
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
    bool isStored; ///< the text is a document's, on its way into the index
    tTokenCallback callback;
    std::string buffer;
};

/// Takes the first word of a spelling.
int TakeWord(void* context, int, const char* token, int size, int, int)
{
    std::string& word = *static_cast<std::string*>(context);
    std::string spelled;
    Spell(std::string_view(token, static_cast<size_t>(size)), kLetters, spelled);
    word += spelled;
    return SQLITE_OK;
}

int Give(const tPass& pass, int flags, std::string_view word, int start, int end)
{
    if (pass.isStored && pass.tokenizer->context->take) {
        pass.tokenizer->context->take(word);
    }
    return pass.callback(pass.context, flags, word.data(), static_cast<int>(word.size()), start, end);
}

int Forward(void* context, int flags, const char* token, int size, int start, int end)
{
    tPass& pass = *static_cast<tPass*>(context);
    const std::string_view original(pass.text + start, static_cast<size_t>(end - start));
    std::string_view word(token, static_cast<size_t>(size));
    if (IsASCII(original)) {
        return Give(pass, flags, word, start, end);
    }
    if (!IsASCII(word) && Spell(word, kLetters, pass.buffer)) {
        word = pass.buffer;
    }
    const int result = Give(pass, flags, word, start, end);
    std::string letters;
    if (result != SQLITE_OK || !Spell(original, kSpellings, letters)) {
        return result;
    }
    std::string spelled;
    pass.tokenizer->module.xTokenize(pass.tokenizer->instance, &spelled, FTS5_TOKENIZE_AUX, letters.data(),
                                     static_cast<int>(letters.size()), TakeWord);
    return Give(pass, flags | FTS5_TOKEN_COLOCATED, spelled, start, end);
}

int Tokenize(Fts5Tokenizer* self, void* context, int flags, const char* text, int size, tTokenCallback callback)
{
    const auto* tokenizer = reinterpret_cast<const tTokenizer*>(self);
    tPass pass = {tokenizer, text, context, (flags & FTS5_TOKENIZE_DOCUMENT) != 0, callback, {}};
    return tokenizer->module.xTokenize(tokenizer->instance, &pass, flags, text, size, Forward);
}

int Create(void* user, const char** arguments, int count, Fts5Tokenizer** made)
{
    const auto* const context = static_cast<const tContext*>(user);
    auto tokenizer = std::make_unique<tTokenizer>();
    tokenizer->context = context;
    void* parent = nullptr;
    if (count < 1 ||
        context->api->xFindTokenizer(context->api, arguments[0], &parent, &tokenizer->module) != SQLITE_OK) {
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

int Collect(void* context, int flags, const char* token, int size, int start, int end)
{
    static_cast<std::vector<tWord>*>(context)->push_back({std::string(token, static_cast<size_t>(size)),
                                                          static_cast<size_t>(start), static_cast<size_t>(end),
                                                          (flags & FTS5_TOKEN_COLOCATED) != 0});
    return SQLITE_OK;
}
} // namespace

fts5_api* Tokenizer::FindInterface(sqlite3* connection)
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

bool Tokenizer::Register(sqlite3* connection, tTakeWord take)
{
    fts5_api* const api = FindInterface(connection);
    fts5_tokenizer module = {Create, Delete, Tokenize};
    if (api == nullptr) {
        return false;
    }
    auto context = std::make_unique<tContext>(tContext{api, std::move(take)});
    const auto destroy = [](void* made) { delete static_cast<tContext*>(made); };
    if (api->xCreateTokenizer(api, kName, context.get(), &module, destroy) != SQLITE_OK) {
        return false;
    }
    static_cast<void>(context.release()); // the connection owns it now
    return true;
}

struct CSplitter::tTool {
    fts5_tokenizer module = {};
    Fts5Tokenizer* instance = nullptr;
};

CSplitter::CSplitter(sqlite3* connection) : mTool(std::make_unique<tTool>())
{
    fts5_api* const api = Tokenizer::FindInterface(connection);
    void* context = nullptr;
    const char* arguments[] = {"unicode61", "remove_diacritics", "2"};
    if (api == nullptr || api->xFindTokenizer(api, Tokenizer::kName, &context, &mTool->module) != SQLITE_OK ||
        mTool->module.xCreate(context, arguments, 3, &mTool->instance) != SQLITE_OK) {
        mTool->instance = nullptr;
    }
}

CSplitter::~CSplitter()
{
    if (mTool->instance != nullptr) {
        mTool->module.xDelete(mTool->instance);
    }
}

std::vector<tWord> CSplitter::Split(std::string_view text)
{
    std::vector<tWord> words;
    if (mTool->instance != nullptr) {
        mTool->module.xTokenize(mTool->instance, &words, FTS5_TOKENIZE_AUX, text.data(), static_cast<int>(text.size()),
                                Collect);
    }
    return words;
}
