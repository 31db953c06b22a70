// What a worker reports about a document.
#pragma once

#include <nlohmann/json.hpp>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

/// A worker's report, or an object in one; copies share it. What it holds is not trusted: everything is asked for by
/// type, and has a value when it is missing. Its lists of objects may have an entry for each element of a document, and
/// stay text: values take some ten times the memory.
class CReport {
public:
    CReport() = default;

    /// @return false for a text that is no JSON object
    static bool Parse(std::string text, CReport& report);

    std::string GetText(const char* key) const;
    long long GetNumber(const char* key) const;
    double GetReal(const char* key) const;
    bool GetFlag(const char* key) const;
    bool Has(const char* key) const { return Find(key) != nullptr; }
    /// Calls `use` for each object of a list of the whole report, one after the other.
    void ForEach(const char* key, const std::function<void(const CReport&)>& use) const;
    /// How many objects such a list has.
    size_t GetCount(const char* key) const;
    CReport GetObject(const char* key) const;
    /// The objects, and the numbers, of a list in such an object; both are short.
    std::vector<CReport> GetObjects(const char* key) const;
    std::vector<double> GetReals(const char* key) const;
    /// The texts of a list.
    std::vector<std::string> GetTexts(const char* key) const;

private:
    using tShared = std::shared_ptr<const nlohmann::json>;
    explicit CReport(tShared json) : mJSON(std::move(json)) {}
    const nlohmann::json* Find(const char* key) const;
    tShared Share(const nlohmann::json& part) const { return {mJSON, &part}; }

    tShared mJSON;                            ///< keeps all values alive; null for nothing
    std::shared_ptr<const std::string> mText; ///< the whole report's; null for an object in one
    std::map<std::string, size_t> mCounts;    ///< objects of each list
};
