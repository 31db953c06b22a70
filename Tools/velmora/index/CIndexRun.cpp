#include "index/CIndexRun.h"

#include "index/ContentHash.h"
#include "output/CRecordWriter.h"
#include "protocol/UTF8.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <sys/stat.h>

static constexpr int kPortion = 1000;
static constexpr std::chrono::seconds kPortionTime{1};

static constexpr int64_t kSecond = 1000000000; // in nanoseconds

/// File systems tell times apart by the kernel's tick (4 ms, 10 at most), some by 2 seconds. A file that was written so
/// shortly before could be written once more without a visible difference.
static constexpr int64_t kFineGrain = 20000000;
static constexpr int64_t kCoarseGrain = 2 * kSecond;

static constexpr std::string_view kExtension = ".velmora";

/// Whether a change from now on would show in a file's time.
static bool IsTimeTrusted(int64_t modified)
{
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    const int64_t age = int64_t{now.tv_sec} * kSecond + now.tv_nsec - modified;
    return age < 0 || age >= (modified % kSecond == 0 ? kCoarseGrain : kFineGrain);
}

static tFileStamp StampOf(const tFileStatus& status)
{
    return {static_cast<int64_t>(status.size), status.modified, status.inode};
}

namespace {
/// What was found out about a document before it was read, on its way through the run.
struct tNote {
    bool isKnown = false;
    bool isTrusted = false; ///< the file's time
    std::string hash;

    tNote() = default;
    explicit tNote(const std::string& encoded)
    {
        if (encoded.size() >= 2) {
            isKnown = encoded[0] == 'y';
            isTrusted = encoded[1] == 'y';
            hash = encoded.substr(2);
        }
    }

    std::string Encode() const { return std::string(isKnown ? "y" : "n") + (isTrusted ? "y" : "n") + hash; }

    tFileStamp Stamp(const tFileStatus& status) const
    {
        tFileStamp stamp = StampOf(status);
        stamp.modified = isTrusted ? stamp.modified : 0;
        return stamp;
    }
};
} // namespace

/// Failures that lie in the surroundings, which may be others by now: tried again in every pass.
static bool IsPassing(const std::string& code)
{
    return code == "1" || code == "path" || code == "plugin";
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

/// The names of the folders above a document, for people: below the user's own folder if it is there, else all.
static std::string FoldersOf(const std::string& path)
{
    static const std::string sHome = [] {
        const char* const home = getenv("HOME");
        return home != nullptr && *home == '/' ? std::string(home) + "/" : std::string("/");
    }();
    const size_t start = path.starts_with(sHome) ? sHome.size() : path.starts_with('/') ? 1 : 0;
    const size_t end = std::max(path.find_last_of('/') + 1, start + 1) - 1;
    std::string names = UTF8::MakeValid(path.substr(start, end - start));
    for (size_t at = 0; (at = names.find('/', at)) != std::string::npos; at += 2) {
        names.replace(at, 1, ", ");
    }
    return names;
}

static tIndexedTexts TextsOf(const std::string& path, const tAnswer& answer)
{
    tIndexedTexts texts;
    texts.name = NameFor(path);
    texts.folder = FoldersOf(path);
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
                              &texts.libraries, &texts.articles, &texts.text, &texts.folder}) {
        std::replace(text->begin(), text->end(), '\0', ' '); // where SQLite's functions would end the text
    }
    return texts;
}

CIndexRun::CIndexRun(CIndexDatabase& database, tSettings settings)
    : mDatabase(database), mSettings(std::move(settings)), mReach(database), mLastCommit(tClock::now())
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
    CountOne();
}

bool CIndexRun::Wants(const std::string& path, const tFileStatus& status)
{
    mReach.Note(path, status.device);
    const std::optional<tKnownDocument> known = mDatabase.Find(path);
    if (!known) {
        return true;
    }
    mDatabase.MarkSeen(known->id);
    if (mSettings.verify || status.modified == 0 || known->stamp != StampOf(status) || !IsSettled(*known)) {
        return true;
    }
    CountAsBefore(*known);
    return false;
}

bool CIndexRun::WantsOpen(const std::string& path, const tFileStatus& status, int document, std::string& note)
{
    ++mSummary.opened;
    tNote made;
    made.isTrusted = IsTimeTrusted(status.modified);
    made.hash = ContentHash::OfFile(document).value_or(std::string());
    const std::optional<tKnownDocument> known = mDatabase.Find(path);
    made.isKnown = known.has_value();
    if (known && !made.hash.empty() && known->hash == made.hash && IsSettled(*known)) {
        mDatabase.StoreStamp(known->id, made.Stamp(status), status.modified / kSecond);
        CountAsBefore(*known);
        return false;
    }
    note = made.Encode();
    return true;
}

CIndexRun::eTaken CIndexRun::Take(const std::string& path, const tFileStatus& status, const std::string& note,
                                  const tAnswer& answer)
{
    struct stat now = {};
    const int error = note.empty() && lstat(path.c_str(), &now) != 0 ? errno : 0;
    if (error == ENOENT || error == ENOTDIR) {
        return eTaken::kGone;
    }
    const int64_t seconds = time(nullptr);
    const tIndexFailure failure = {answer.ok ? "" : FailureCode(answer.failure), answer.failure.message, seconds};
    if (note.empty() && error == 0 && S_ISDIR(now.st_mode)) {
        if (answer.failure.kind == eFailure::kPath) { // named by a list
            return eTaken::kNoDocument;
        }
        CountFailure(path, failure, mDatabase.StoreUnreadable(path, failure)); // it may hold what it held
        return eTaken::kTaken;
    }
    if (error != 0) { // whatever it is: a folder, too, may hold what it held
        mDatabase.KeepBelow(path);
    }
    const tNote made(note);
    const tOrigin origin = {path, made.Stamp(status), made.hash, mSettings.importer, status.modified / kSecond};
    if (answer.ok) {
        mDatabase.StoreTexts(origin, TextsOf(path, answer), answer.figures, seconds);
        ++(made.isKnown ? mSummary.changed : mSummary.added);
        Tell({made.isKnown ? tIndexChange::eKind::kChanged : tIndexChange::eKind::kAdded, path, {}});
    } else {
        const std::optional<tKnownDocument> known = mDatabase.Find(path);
        const bool isNew = !known || !known->failed || known->failureCode != failure.code;
        mDatabase.StoreFailure(origin, failure);
        CountFailure(path, failure, isNew);
    }
    CountOne();
    return eTaken::kTaken;
}

void CIndexRun::CountFailure(const std::string& path, const tIndexFailure& failure, bool isNew)
{
    ++mSummary.failed;
    mSummary.newFailed += isNew ? 1 : 0;
    Tell({tIndexChange::eKind::kFailed, path, failure, isNew});
}

void CIndexRun::Tell(const tIndexChange& change) const
{
    if (mChanged) {
        mChanged(change);
    }
}

void CIndexRun::Finish(const std::string& path)
{
    if (mReach.Judge(path, mSettings.trust)) {
        mSummary.removed += mDatabase.RemoveUnseen(path, [this](const std::string& removed) {
            Tell({tIndexChange::eKind::kRemoved, removed, {}});
        });
    }
    mDatabase.RemoveUnreadable(path, false);
    const int64_t failures = mDatabase.CountUnseenFailures(path); // of folders that could not be looked into
    mSummary.failed += failures;
    mSummary.knownFailed += failures;
}

void CIndexRun::Commit()
{
    mDatabase.Commit();
    mUncommitted = 0;
    mLastCommit = tClock::now();
}

void CIndexRun::CountOne()
{
    ++mUncommitted;
    CommitIfDue();
}

void CIndexRun::CommitIfDue()
{
    if (mUncommitted >= kPortion || (mUncommitted > 0 && tClock::now() - mLastCommit >= kPortionTime)) {
        Commit();
    }
}
