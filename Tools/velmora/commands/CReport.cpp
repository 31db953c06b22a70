#include "commands/CReport.h"

namespace {
using tJSON = nlohmann::json;
/// What is to be done with an object in a list of a report.
using tUseEntry = std::function<void(const std::string& list, tJSON&& entry)>;

/// Makes values of a report's text, all but the objects in its lists: they are handed over one after the other.
class CReportReader : public nlohmann::json_sax<tJSON> {
public:
    explicit CReportReader(tUseEntry use) : mUse(std::move(use)) {}

    tJSON TakeReport() { return std::move(mReport); }

    bool null() override { return Put(nullptr); }
    bool boolean(bool value) override { return Put(value); }
    bool number_integer(number_integer_t value) override { return Put(value); }
    bool number_unsigned(number_unsigned_t value) override { return Put(value); }
    bool number_float(number_float_t value, const string_t&) override { return Put(value); }
    bool string(string_t& value) override { return Put(std::move(value)); }
    bool binary(binary_t&) override { return false; }
    bool start_object(std::size_t) override { return Open(tJSON::object()); }
    bool end_object() override { return Close(); }
    bool start_array(std::size_t) override { return Open(tJSON::array()); }
    bool end_array() override { return Close(); }
    bool key(string_t& key) override
    {
        mKey = std::move(key);
        mList = mOpen.size() == 1 ? mKey : mList;
        return true;
    }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override { return false; }

private:
    /// @return where the value is now
    tJSON* Place(tJSON&& value)
    {
        if (mOpen.empty()) {
            return &(mReport = std::move(value));
        }
        tJSON& parent = *mOpen.back();
        if (parent.is_object()) {
            return &(parent[mKey] = std::move(value));
        }
        if (mOpen.size() == 2 && value.is_object()) {
            return &(mEntry = std::move(value));
        }
        parent.push_back(std::move(value));
        return &parent.back();
    }
    bool Put(tJSON&& value)
    {
        Place(std::move(value));
        return true;
    }
    bool Open(tJSON&& value)
    {
        mOpen.push_back(Place(std::move(value)));
        return true;
    }
    bool Close()
    {
        if (mOpen.back() == &mEntry) {
            mUse(mList, std::move(mEntry));
        }
        mOpen.pop_back();
        return true;
    }

    tUseEntry mUse;
    tJSON mReport;
    tJSON mEntry;              ///< the object in a list that is being read
    std::vector<tJSON*> mOpen; ///< objects and arrays around the next value
    std::string mKey;
    std::string mList; ///< the member of the report that is being read
};
} // namespace

bool CReport::Parse(std::string text, CReport& report)
{
    CReport parsed;
    parsed.mText = std::make_shared<const std::string>(std::move(text));
    CReportReader reader([&parsed](const std::string& list, tJSON&&) { ++parsed.mCounts[list]; });
    if (!tJSON::sax_parse(*parsed.mText, &reader)) {
        return false;
    }
    parsed.mJSON = std::make_shared<const tJSON>(reader.TakeReport());
    if (!parsed.mJSON->is_object()) {
        return false;
    }
    report = std::move(parsed);
    return true;
}

void CReport::ForEach(const char* key, const std::function<void(const CReport&)>& use) const
{
    if (GetCount(key) > 0) {
        CReportReader reader([&](const std::string& list, tJSON&& entry) {
            if (list == key) {
                use(CReport(std::make_shared<const tJSON>(std::move(entry))));
            }
        });
        tJSON::sax_parse(*mText, &reader);
    }
}

size_t CReport::GetCount(const char* key) const
{
    const auto found = mCounts.find(key);
    return found != mCounts.end() ? found->second : 0;
}

const nlohmann::json* CReport::Find(const char* key) const
{
    if (mJSON == nullptr || !mJSON->is_object()) {
        return nullptr;
    }
    const auto found = mJSON->find(key);
    return found != mJSON->end() ? &*found : nullptr;
}

std::string CReport::GetText(const char* key) const
{
    const nlohmann::json* const value = Find(key);
    return value != nullptr && value->is_string() ? value->get<std::string>() : std::string();
}

long long CReport::GetNumber(const char* key) const
{
    const nlohmann::json* const value = Find(key);
    return value != nullptr && value->is_number_integer() ? value->get<long long>() : 0;
}

double CReport::GetReal(const char* key) const
{
    const nlohmann::json* const value = Find(key);
    return value != nullptr && value->is_number() ? value->get<double>() : 0.0;
}

bool CReport::GetFlag(const char* key) const
{
    const nlohmann::json* const value = Find(key);
    return value != nullptr && value->is_boolean() && value->get<bool>();
}

std::vector<std::string> CReport::GetTexts(const char* key) const
{
    std::vector<std::string> texts;
    const nlohmann::json* const value = Find(key);
    if (value != nullptr && value->is_array()) {
        for (const nlohmann::json& entry : *value) {
            if (entry.is_string()) {
                texts.push_back(entry.get<std::string>());
            }
        }
    }
    return texts;
}

std::vector<CReport> CReport::GetObjects(const char* key) const
{
    std::vector<CReport> objects;
    const nlohmann::json* const value = Find(key);
    if (value != nullptr && value->is_array()) {
        for (const nlohmann::json& entry : *value) {
            objects.push_back(CReport(Share(entry)));
        }
    }
    return objects;
}

std::vector<double> CReport::GetReals(const char* key) const
{
    std::vector<double> numbers;
    const nlohmann::json* const value = Find(key);
    if (value != nullptr && value->is_array()) {
        for (const nlohmann::json& entry : *value) {
            numbers.push_back(entry.is_number() ? entry.get<double>() : 0.0);
        }
    }
    return numbers;
}

CReport CReport::GetObject(const char* key) const
{
    const nlohmann::json* const value = Find(key);
    return value != nullptr ? CReport(Share(*value)) : CReport();
}
