#include "index/CIndexRun.h"

#include "index/ContentHash.h"
#include "output/CRecordWriter.h"
#include "protocol/CDescriptor.h"
#include "protocol/UTF8.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>

static constexpr int kPortion = 1000;
static constexpr std::chrono::seconds kPortionTime{1};

static constexpr int64_t kSecond = 1000000000; // in nanoseconds

/// File systems tell times apart by the kernel's tick (4 ms, 10 at most), some by 2 seconds. A file that was written so
/// shortly before could be written once more without a visible difference.
static constexpr int64_t kFineGrain = 20000000;
static constexpr int64_t kCoarseGrain = 2 * kSecond;

static constexpr std::string_view kExtension = ".velmora";

/// A file's time, or 0 where it cannot be trusted.
static int64_t TrustedTime(int64_t modified)
{
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    const int64_t age = int64_t{now.tv_sec} * kSecond + now.tv_nsec - modified;
    const int64_t grain = modified % kSecond == 0 ? kCoarseGrain : kFineGrain;
    return age >= 0 && age < grain ? 0 : modified;
}

/// The hash of a file's content; empty when it cannot be read, or is no file any more.
static std::string HashOf(const std::string& path)
{
    const CDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status = {};
    if (!file.IsOpen() || fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return {};
    }
    return ContentHash::OfFile(file.Get()).value_or(std::string());
}

/// Failures that lie in the surroundings, which may be others by now: tried again in every pass.
static bool IsPassing(const std::string& code)
{
    return code == "1" || code == "path" || code == "plugin";
}

static std::string CodeOf(const tFailure& failure)
{
    return failure.kind == eFailure::kLoader ? std::to_string(failure.loaderCode) : FailureWord(failure.kind);
}

static std::string Join(const std::vector<std::string>& texts)
{
    std::string joined;
    for (const std::string& text : texts) {
        joined += (joined.empty() ? "" : ", ") + text;
    }
    return joined;
}

/// A file's name for people: without folder and the layouts' extension.
static std::string NameFor(const std::string& path)
{
    std::string name = path.substr(path.find_last_of('/') + 1);
    if (name.size() > kExtension.size() && name.ends_with(kExtension)) {
        name.resize(name.size() - kExtension.size());
    }
    return UTF8::MakeValid(name);
}

static tIndexedTexts TextsOf(const std::string& path, const tAnswer& answer)
{
    tIndexedTexts texts;
    texts.name = NameFor(path);
    texts.libraries = Join(answer.libraries);
    texts.articles = Join(answer.articles);
    const struct {
        std::string_view key;
        std::string* text;
    } known[] = {{"kMDItemAuthors", &texts.author},
                 {"kMDItemDescription", &texts.description},
                 {"kMDItemVersion", &texts.revision},
                 {"kMDItemLayerNames", &texts.layers},
                 {"kMDItemTextContent", &texts.text}};
    for (const tAttribute& attribute : answer.attributes) {
        for (const auto& entry : known) {
            if (attribute.key == entry.key) {
                *entry.text = Join(attribute.texts);
            }
        }
    }
    for (std::string* text : {&texts.name, &texts.author, &texts.description, &texts.revision, &texts.layers,
                              &texts.libraries, &texts.articles, &texts.text}) {
        std::replace(text->begin(), text->end(), '\0', ' '); // where SQLite's functions would end the text
    }
    return texts;
}

CIndexRun::CIndexRun(CIndexDatabase& database, tSettings settings)
    : mDatabase(database), mSettings(std::move(settings)), mLastCommit(tClock::now())
{}

/// Whether what is known of an unchanged document need not be asked again.
bool CIndexRun::IsSettled(const tKnownDocument& known) const
{
    return known.importer == mSettings.importer &&
           !(known.failed && (mSettings.retryFailed || IsPassing(known.failureCode)));
}

void CIndexRun::CountAsBefore(const tKnownDocument& known)
{
    if (known.failed) {
        ++mSummary.failed;
        ++mSummary.knownFailed;
    } else {
        ++mSummary.unchanged;
    }
    CommitPortion();
}

bool CIndexRun::Wants(const std::string& path, tFileStamp stamp)
{
    const std::optional<tKnownDocument> known = mDatabase.Find(path);
    if (known) {
        mDatabase.MarkSeen(known->id);
        if (!mSettings.verify && known->stamp == stamp && IsSettled(*known)) {
            CountAsBefore(*known);
            return false;
        }
    }
    stamp.modified = TrustedTime(stamp.modified);
    tPending pending = {stamp, HashOf(path), known.has_value()};
    ++mSummary.opened;
    if (known && !pending.hash.empty() && known->hash == pending.hash && IsSettled(*known)) {
        mDatabase.StoreStamp(known->id, stamp);
        CountAsBefore(*known);
        return false;
    }
    return mPending.emplace(path, std::move(pending)).second; // false when it was named twice
}

bool CIndexRun::Take(const std::string& path, const tAnswer& answer)
{
    tOrigin origin;
    origin.path = path;
    origin.importer = mSettings.importer;
    bool isKnown = false;
    if (const auto pending = mPending.find(path); pending != mPending.end()) {
        origin.stamp = pending->second.stamp;
        origin.hash = std::move(pending->second.hash);
        isKnown = pending->second.isKnown;
        mPending.erase(pending);
    } else {
        struct stat status = {};
        if (lstat(path.c_str(), &status) != 0 && (errno == ENOENT || errno == ENOTDIR)) {
            return false;
        }
        mDatabase.KeepBelow(path);
        ++mSummary.failed;
        return true;
    }
    const int64_t now = time(nullptr);
    if (answer.ok) {
        mDatabase.StoreTexts(origin, TextsOf(path, answer), now);
        ++(isKnown ? mSummary.changed : mSummary.added);
    } else {
        mDatabase.StoreFailure(origin, {CodeOf(answer.failure), answer.failure.message, now});
        ++mSummary.failed;
    }
    CommitPortion();
    return true;
}

void CIndexRun::Finish(const std::string& root)
{
    mSummary.removed += mDatabase.RemoveUnseen(root);
    Commit();
}

void CIndexRun::Commit()
{
    mDatabase.Commit();
    mUncommitted = 0;
    mLastCommit = tClock::now();
}

void CIndexRun::CommitPortion()
{
    if (++mUncommitted >= kPortion || tClock::now() - mLastCommit >= kPortionTime) {
        Commit();
    }
}
