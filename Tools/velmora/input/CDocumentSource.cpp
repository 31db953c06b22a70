#include "input/CDocumentSource.h"

#include "Bounds.h"
#include "Interrupt.h"
#include "input/DocumentNames.h"
#include "protocol/NamelessFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <string_view>
#include <sys/stat.h>

static constexpr std::string_view kMagic = "WkSt";

/// A folder being walked. The entries are opened relative to it, so no path gets too long.
struct CDocumentSource::tFolder {
    std::string path;
    CDescriptor descriptor; ///< may be closed while a folder far below is walked
    uint64_t inode = 0;     ///< these two tell it when it is opened again
    uint64_t device = 0;
    std::string names;           ///< of the entries, each with its zero: a large folder should not cost much memory
    std::vector<uint32_t> order; ///< where the names begin, sorted
    size_t next = 0;             ///< in the order
    bool isReported = false;     ///< that it names what cannot be looked at
};

CDocumentSource::CDocumentSource(std::vector<std::string> paths, CDescriptor list, char listSeparator)
    : mOperands(std::make_move_iterator(paths.begin()), std::make_move_iterator(paths.end()))
{
    if (list.IsOpen()) {
        mList.emplace(std::move(list), listSeparator);
        mHasLines = listSeparator == '\n';
    }
}

CDocumentSource::~CDocumentSource() = default;

CDescriptor CDocumentSource::OpenList(const std::string& name)
{
    return CDescriptor(name == "-" ? fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                                   : open(name.c_str(), O_RDONLY | O_CLOEXEC));
}

/// A file that is missing or cannot be read: the loader's "cannot be opened".
static tFailure CannotOpen(int error, const char* what = "cannot be opened")
{
    return MakeFailure(eFailure::kLoader, std::string(what) + ": " + strerror(error)).failure;
}

static bool Fail(tInput& input, tFailure failure)
{
    if (failure.kind == eFailure::kLoader) {
        failure.loaderCode = 1;
    }
    input.failure = std::move(failure);
    return true;
}

/// Why something that is no regular file cannot be a document.
static tFailure NoRegularFile(mode_t mode)
{
    const char* what = S_ISDIR(mode)    ? "is a folder"
                       : S_ISFIFO(mode) ? "is a pipe, not a file"
                       : S_ISSOCK(mode) ? "is a socket, not a file"
                                        : "is a device, not a file";
    return MakeFailure(eFailure::kPath, what).failure;
}

/// Times are believed from 1834 to 2106; any number can be set, and far ones fit into no 64 bits of nanoseconds.
static constexpr int64_t kFarthestTime = int64_t{1} << 32;

static tFileStatus MakeStatus(const struct stat& status)
{
#if defined(__APPLE__)
    const timespec& modified = status.st_mtimespec;
#else
    const timespec& modified = status.st_mtim;
#endif
    const bool isBelieved = modified.tv_sec >= -kFarthestTime && modified.tv_sec <= kFarthestTime;
    return {static_cast<uint64_t>(status.st_size),
            isBelieved ? int64_t{modified.tv_sec} * 1000000000 + modified.tv_nsec : 0,
            static_cast<uint64_t>(status.st_ino), static_cast<uint64_t>(status.st_dev)};
}

/// Takes a named file as the input found last. Looked at before it is opened,
/// because opening a device can do something.
/// @return false when it is not wanted
bool CDocumentSource::TakeFile(int folder, std::string name, tInput& input)
{
    struct stat status = {};
    input.ownPart = name.find_last_of('/') + 1; // npos + 1 is 0
    if (fstatat(folder, name.c_str(), &status, 0) != 0) {
        return Fail(input, CannotOpen(errno));
    }
    if (!S_ISREG(status.st_mode)) {
        return Fail(input, NoRegularFile(status.st_mode));
    }
    mFoundIn = folder;
    mFoundName = std::move(name);
    input.status = MakeStatus(status);
    return IsWanted(input);
}

/// Opens a file that was regular when it was looked at; the name may by now mean something else.
static bool OpenDocument(int folder, const std::string& name, tInput& input)
{
    struct stat status = {};
    input.document.Reset(openat(folder, name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!input.document.IsOpen() || fstat(input.document.Get(), &status) != 0) {
        return Fail(input, CannotOpen(errno));
    }
    if (!S_ISREG(status.st_mode)) {
        input.document.Reset();
        return Fail(input, NoRegularFile(status.st_mode));
    }
    input.status = MakeStatus(status);
    return true;
}

static bool OpenStandardInput(tInput& input)
{
    struct stat status = {};
    if (fstat(STDIN_FILENO, &status) != 0) {
        return Fail(input, CannotOpen(errno, "standard input cannot be read"));
    }
    if (S_ISREG(status.st_mode)) {
        input.status = MakeStatus(status);
        input.document.Reset(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0));
        return input.document.IsOpen() || Fail(input, CannotOpen(errno, "standard input cannot be read"));
    }
    if (S_ISDIR(status.st_mode)) {
        return Fail(input, NoRegularFile(status.st_mode));
    }
    CDescriptor copy = MakeNamelessFile();
    std::vector<char> buffer(size_t{256} << 10);
    size_t total = 0;
    for (;;) {
        const ssize_t count = read(STDIN_FILENO, buffer.data(), buffer.size());
        if (count == 0) {
            break;
        }
        if (count < 0 && errno == EINTR && !Interrupt::IsRequested()) {
            continue;
        }
        if (count < 0 || write(copy.Get(), buffer.data(), static_cast<size_t>(count)) != count) {
            return Fail(input, CannotOpen(errno, "standard input cannot be read"));
        }
        total += static_cast<size_t>(count);
        input.status.size = total;
        if (total > Bounds::kMostPipedBytes) {
            return Fail(input, MakeFailure(eFailure::kMemory, "standard input is longer than 1 GB").failure);
        }
    }
    input.document = std::move(copy);
    return true;
}

static bool HasMagic(int folder, const std::string& name)
{
    const CDescriptor file(openat(folder, name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    char bytes[kMagic.size()];
    return file.IsOpen() && pread(file.Get(), bytes, sizeof bytes, 0) == static_cast<ssize_t>(sizeof bytes) &&
           std::string_view(bytes, sizeof bytes) == kMagic;
}

bool CDocumentSource::IsDocument(const std::string& path)
{
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           (DocumentNames::HasExtension(DocumentNames::NameOfFile(path)) || HasMagic(AT_FDCWD, path));
}

void CDocumentSource::OpenNamed(tInput& input)
{
    CDocumentSource source({});
    source.TakeFile(AT_FDCWD, input.path, input);
    source.Open(input);
}

CDocumentSource::eResult CDocumentSource::Find(tInput& input)
{
    while (!Interrupt::IsRequested()) {
        input = tInput();
        if (!mFolders.empty()) {
            if (FindInFolder(input)) {
                mHasFound = true;
                return eResult::kFound;
            }
        } else if (!mOperands.empty()) {
            if (FindOperand(input)) {
                return eResult::kFound;
            }
        } else {
            return mList ? FindInList(input) : eResult::kEnd;
        }
    }
    return eResult::kEnd;
}

void CDocumentSource::Open(tInput& input)
{
    if (input.failure) {
        return;
    }
    if (mFoundName.empty()) {
        OpenStandardInput(input);
    } else {
        OpenDocument(mFoundIn, mFoundName, input);
    }
}

bool CDocumentSource::Next(tInput& input)
{
    for (;;) {
        switch (Find(input)) {
        case eResult::kFound:
            Open(input);
            return true;
        case eResult::kEnd:
            return false;
        case eResult::kNotYet:
            pollfd waits[2] = {{GetDescriptor(), POLLIN, 0}, {Interrupt::GetDescriptor(), POLLIN, 0}};
            poll(waits, 2, -1);
        }
    }
}

/// @return false when the operand is not wanted, or was a folder, now entered
bool CDocumentSource::FindOperand(tInput& input)
{
    input.path = std::move(mOperands.front());
    mOperands.pop_front();
    if (input.path == "-") {
        mFoundName.clear();
        return true;
    }
    struct stat status = {};
    if (stat(input.path.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) {
        const std::string path = input.path;
        mHasFound = EnterFolder(AT_FDCWD, path, path, input);
        return mHasFound;
    }
    return TakeFile(AT_FDCWD, input.path, input);
}

CDocumentSource::eResult CDocumentSource::FindInList(tInput& input)
{
    for (;;) {
        switch (mList->Next(input.path)) {
        case CLineReader::eResult::kNotYet:
            return eResult::kNotYet;
        case CLineReader::eResult::kEnd:
            return eResult::kEnd;
        case CLineReader::eResult::kCut:
            Fail(input, MakeFailure(eFailure::kPath, "no path: it is too long (is --null missing?)").failure);
            return eResult::kFound;
        case CLineReader::eResult::kLine:
            break;
        }
        if (mHasLines && input.path.ends_with('\r')) { // a list that was written on Windows
            input.path.pop_back();
        }
        if (input.path.find('\0') != std::string::npos) { // a list with zeros, read as lines
            Fail(input, MakeFailure(eFailure::kPath, "no path: it holds a zero byte (is --null missing?)").failure);
            return eResult::kFound;
        }
        if (!input.path.empty() && TakeFile(AT_FDCWD, input.path, input)) {
            return eResult::kFound;
        }
    }
}

/// @return false when the folder was entered; true when it cannot be read, which is then the input's failure
bool CDocumentSource::EnterFolder(int parent, const std::string& name, const std::string& path, tInput& input)
{
    // A folder on the command line may be named through a link;
    // below it, one that has become a link since is left alone.
    const int links = parent == AT_FDCWD ? 0 : O_NOFOLLOW;
    CDescriptor descriptor(openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | links));
    DIR* entries = nullptr;
    if (descriptor.IsOpen()) {
        const int forReading = fcntl(descriptor.Get(), F_DUPFD_CLOEXEC, 0);
        entries = forReading >= 0 ? fdopendir(forReading) : nullptr;
        if (entries == nullptr && forReading >= 0) {
            close(forReading);
        }
    }
    if (entries == nullptr) {
        input.path = path;
        return Fail(input, CannotOpen(errno, "the folder cannot be read"));
    }
    tFolder folder;
    folder.path = path;
    struct stat status = {};
    fstat(descriptor.Get(), &status);
    folder.inode = MakeStatus(status).inode;
    folder.device = MakeStatus(status).device;
    folder.descriptor = std::move(descriptor);
    if (mFolders.size() >= Bounds::kMostOpenFolders) {
        mFolders[mFolders.size() - Bounds::kMostOpenFolders].descriptor.Reset();
    }
    errno = 0;
    while (const dirent* entry = readdir(entries)) {
        const std::string_view entryName = entry->d_name;
        if (entryName != "." && entryName != "..") {
            folder.order.push_back(static_cast<uint32_t>(folder.names.size()));
            folder.names.append(entry->d_name, entryName.size() + 1);
        }
    }
    const int error = errno;
    closedir(entries);
    const char* names = folder.names.data();
    std::sort(folder.order.begin(), folder.order.end(),
              [names](uint32_t one, uint32_t other) { return strcmp(names + one, names + other) < 0; }); // by bytes
    mFolders.push_back(std::move(folder));
    if (error != 0) { // what could be listed is still walked
        input.path = path;
        return Fail(input, CannotOpen(error, "the folder cannot be read to its end"));
    }
    return false;
}

/// Goes back to the folder above. @return true when it is not there any more, which is then the input's failure
bool CDocumentSource::LeaveFolder(tInput& input)
{
    const CDescriptor left = std::move(mFolders.back().descriptor);
    if (mFolders.size() == 1 && !mHasFound) {
        mEmptyFolders.push_back(mFolders.back().path);
    }
    mFolders.pop_back();
    if (mFolders.empty() || mFolders.back().descriptor.IsOpen()) {
        return false;
    }
    tFolder& above = mFolders.back();
    above.descriptor.Reset(openat(left.Get(), "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    struct stat status = {};
    if (above.descriptor.IsOpen() && fstat(above.descriptor.Get(), &status) == 0 &&
        MakeStatus(status).inode == above.inode && MakeStatus(status).device == above.device) {
        return false;
    }
    above.next = above.order.size();
    input.path = above.path;
    return Fail(input, MakeFailure(eFailure::kLoader, "the folder was moved while it was read").failure);
}

/// @return false when the entry is none to take, or a folder was entered or left
bool CDocumentSource::FindInFolder(tInput& input)
{
    tFolder& folder = mFolders.back();
    if (folder.next == folder.order.size()) {
        return LeaveFolder(input);
    }
    std::string name = folder.names.c_str() + folder.order[folder.next++];
    const int descriptor = folder.descriptor.Get();
    input.path = folder.path + (folder.path.back() == '/' ? "" : "/") + name;
    struct stat status = {};
    if (DocumentNames::IsExcluded(mExcludes, name, input.path)) {
        return false;
    }
    if (fstatat(descriptor, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        if (errno == ENOENT || folder.isReported) { // gone since the folder was listed
            return false;
        }
        folder.isReported = true; // once for all that it holds
        input.path = folder.path;
        return Fail(input, CannotOpen(errno, "what the folder holds cannot be looked at"));
    }
    if (S_ISDIR(status.st_mode)) {
        const std::string path = input.path;
        return EnterFolder(descriptor, name, path, input);
    }
    if (S_ISLNK(status.st_mode)) {
        const bool resolved = fstatat(descriptor, name.c_str(), &status, 0) == 0;
        if (!resolved) { // a broken link is reported only where its name is a document's
            return DocumentNames::HasExtension(name) && Fail(input, CannotOpen(errno));
        }
    }
    if (!S_ISREG(status.st_mode)) {
        return DocumentNames::HasExtension(name) && !S_ISDIR(status.st_mode) &&
               Fail(input, NoRegularFile(status.st_mode));
    }
    input.status = MakeStatus(status);
    input.ownPart = mFolders.front().path.size() + (mFolders.front().path.back() == '/' ? 0 : 1);
    if (!IsWanted(input)) {
        mHasFound = true;
        return false;
    }
    if (!DocumentNames::HasExtension(name) && !HasMagic(descriptor, name)) {
        return false;
    }
    mFoundIn = descriptor;
    mFoundName = std::move(name);
    return true;
}
