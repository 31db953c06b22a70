// What the requests about documents have in common.
#include "Requests.h"

#include <unistd.h>

tAnswer MakeReport(eVerb verb, CJSONObject& report)
{
    tAnswer answer;
    answer.ok = true;
    answer.verb = verb;
    answer.report = report.Take();
    return answer;
}

tAnswer MakeFindingsReport(CJSONObject& report, const char* kind, const std::vector<tFinding>& findings,
                           const CJSONObject::tValue& reader)
{
    report.Put("kind", kind);
    report.BeginList("findings");
    for (const tFinding& finding : findings) {
        report.Add({{"offset", finding.offset},
                    {"line", finding.line},
                    {"key", finding.key},
                    {"element", finding.element},
                    {"component", finding.component},
                    {"damage", finding.kind == tFinding::eKind::kDamage},
                    {"text", finding.text}});
    }
    report.EndList();
    report.Put("reader", reader);
    return MakeReport(eVerb::kCheck, report);
}

bool ReadWhole(int document, std::vector<unsigned char>& bytes)
{
    const off_t end = lseek(document, 0, SEEK_END); // the sandbox refuses to look at a file's status
    if (end < 0) {
        return false;
    }
    bytes.resize(static_cast<size_t>(end));
    size_t have = 0;
    while (have < bytes.size()) {
        const ssize_t got = pread(document, bytes.data() + have, bytes.size() - have, static_cast<off_t>(have));
        if (got < 0) {
            return false;
        }
        if (got == 0) {
            break;
        }
        have += static_cast<size_t>(got);
    }
    bytes.resize(have);
    return true;
}
