// A JSON object that is written member by member.
#pragma once

#include <nlohmann/json.hpp>

#include <string>
#include <utility>

/// Writes a JSON object without holding it as values, which take some ten times the memory of their text: lists may
/// have an entry for each element of a document. Bytes that are not UTF-8 are replaced.
class CJSONObject {
public:
    using tValue = nlohmann::ordered_json;

    void Put(const char* key, const tValue& value)
    {
        PutKey(key);
        Append(value);
    }

    /// All members of an object.
    void PutAll(const tValue& object)
    {
        for (const auto& [key, value] : object.items()) {
            Put(key.c_str(), value);
        }
    }

    /// Begins a list, whose entries follow; nothing but Add and EndList until its end.
    void BeginList(const char* key)
    {
        PutKey(key);
        mText += '[';
        mIsFirst = true;
    }
    void Add(const tValue& entry)
    {
        Separate();
        Append(entry);
    }
    void EndList()
    {
        mText += ']';
        mIsFirst = false;
    }

    /// The object's text. This one is of no use afterwards.
    std::string Take()
    {
        mText += '}';
        return std::move(mText);
    }

private:
    void Separate()
    {
        if (!mIsFirst) {
            mText += ',';
        }
        mIsFirst = false;
    }
    void Append(const tValue& value) { mText += value.dump(-1, ' ', false, tValue::error_handler_t::replace); }
    void PutKey(const char* key)
    {
        Separate();
        Append(key);
        mText += ':';
    }

    std::string mText = "{";
    bool mIsFirst = true;
};
