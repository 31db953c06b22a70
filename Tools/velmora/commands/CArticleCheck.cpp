#include "commands/CArticleCheck.h"

#include "Bounds.h"
#include "commands/StockBalance.h"

#include <algorithm>
#include <unistd.h>

void CArticleCheck::ReadLibraries()
{
    mArticlesOf.emplace();
    tBatchOptions options;
    static_cast<tWorkerOptions&>(options) = mOptions;
    options.jobs = 1;
    CBatch batch(options);
    const std::optional<int> status = batch.Begin();
    COutput output(STDOUT_FILENO); // nothing goes there
    mStatus = status ? *status : KnownLibraries::Read(batch, mLibraries, *mArticlesOf, output, nullptr);
}

CReport CArticleCheck::Complete(const CReport& report)
{
    if (report.GetCount("entries") == 0) {
        return report;
    }
    if (!mArticlesOf) {
        ReadLibraries();
    }
    std::vector<JSON::tRecord> findings;
    report.ForEach("findings", [&findings](const CReport& finding) {
        JSON::tRecord record = {{"damage", finding.GetFlag("damage")}, {"text", finding.GetText("text")}};
        for (const char* key : {"offset", "line", "key", "element", "component"}) {
            record[key] = finding.GetNumber(key);
        }
        findings.push_back(record);
    });
    const size_t most = Bounds::kMostFindings;
    long long entry = 0;
    report.ForEach("entries", [&](const CReport& item) {
        ++entry;
        const auto library = mArticlesOf->find(item.GetText("library"));
        if (findings.size() < most && library != mArticlesOf->end() &&
            library->second.count(item.GetText("number")) == 0) {
            findings.push_back(
                {{"damage", false},
                 {"text", "library '" + library->first + "' has no article '" + item.GetText("number") + "'"},
                 {"offset", item.GetNumber("offset")},
                 {"line", item.GetNumber("line")},
                 {"element", entry}});
        }
    });
    std::stable_sort(findings.begin(), findings.end(), [](const JSON::tRecord& one, const JSON::tRecord& other) {
        return one.at("element").get<long long>() < other.at("element").get<long long>();
    });
    CJSONObject object;
    object.Put("kind", report.GetText("kind"));
    object.BeginList("findings");
    for (const JSON::tRecord& finding : findings) {
        object.Add(finding);
    }
    object.EndList();
    const CReport reader = report.GetObject("reader");
    object.Put("reader", {{"code", reader.GetNumber("code")},
                          {"elements", reader.GetNumber("elements")},
                          {"lost", reader.GetNumber("lost")}});
    CReport complete;
    return CReport::Parse(object.Take(), complete) ? complete : report;
}
