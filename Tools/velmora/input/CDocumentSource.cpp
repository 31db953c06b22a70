#include "input/CDocumentSource.h"

#include "Interrupt.h"
#include "protocol/NamelessFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>

static constexpr std::string_view kExtension = ".velmora";
static constexpr std::string_view kMagic = "WkSt";
/// Most that is taken from a standard input that is no file; it is held in memory.
static constexpr size_t kMaxPipedSize = size_t{1} << 30;

/// A folder being walked. The entries are opened relative to it, so no path gets too long.
struct CDocumentSource::tFolder {
    std::string path;
    CDescriptor descriptor;
    std::vector<std::string> names; ///< sorted
    size_t next = 0;
};

void CDocumentSource::tListCloser::operator()(FILE* list) const
{
    if (list != stdin) {
        fclose(list);
    }
}

CDocumentSource::CDocumentSource(std::vector<std::string> paths, tList list, char listSeparator)
    : mOperands(std::make_move_iterator(paths.begin()), std::make_move_iterator(paths.end())), mList(std::move(list)),
      mListSeparator(listSeparator)
{}

CDocumentSource::~CDocumentSource() = default;

CDocumentSource::tList CDocumentSource::OpenList(const std::string& name)
{
    return tList(name == "-" ? stdin : fopen(name.c_str(), "rbe"));
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

/// Opens a document. Looked at before it is opened, because opening a device can do something; and afterwards, because
/// the name may by then mean something else.
static bool OpenDocument(int folder, const std::string& name, tInput& input)
{
    struct stat status = {};
    if (fstatat(folder, name.c_str(), &status, 0) != 0) {
        return Fail(input, CannotOpen(errno));
    }
    if (!S_ISREG(status.st_mode)) {
        return Fail(input, NoRegularFile(status.st_mode));
    }
    input.document.Reset(openat(folder, name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!input.document.IsOpen() || fstat(input.document.Get(), &status) != 0) {
        return Fail(input, CannotOpen(errno));
    }
    if (!S_ISREG(status.st_mode)) {
        input.document.Reset();
        return Fail(input, NoRegularFile(status.st_mode));
    }
    return true;
}

static bool OpenStandardInput(tInput& input)
{
    struct stat status = {};
    if (fstat(STDIN_FILENO, &status) != 0) {
        return Fail(input, CannotOpen(errno, "standard input cannot be read"));
    }
    if (S_ISREG(status.st_mode)) {
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
        if (total > kMaxPipedSize) {
            return Fail(input, MakeFailure(eFailure::kMemory, "standard input is longer than 1 GB").failure);
        }
    }
    input.document = std::move(copy);
    return true;
}

static bool HasExtension(std::string_view name)
{
    if (name.size() <= kExtension.size()) {
        return false;
    }
    const std::string_view end = name.substr(name.size() - kExtension.size());
    return std::equal(end.begin(), end.end(), kExtension.begin(), [](char one, char other) {
        return (one >= 'A' && one <= 'Z' ? static_cast<char>(one + 'a' - 'A') : one) == other;
    });
}

static bool HasMagic(int folder, const std::string& name)
{
    const CDescriptor file(openat(folder, name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    char bytes[kMagic.size()];
    return file.IsOpen() && pread(file.Get(), bytes, sizeof bytes, 0) == static_cast<ssize_t>(sizeof bytes) &&
           std::string_view(bytes, sizeof bytes) == kMagic;
}

bool CDocumentSource::Next(tInput& input)
{
    while (!Interrupt::IsRequested()) {
        input = tInput();
        if (!mFolders.empty()) {
            if (NextFromFolder(input)) {
                return true;
            }
        } else if (!mOperands.empty()) {
            if (NextOperand(input)) {
                return true;
            }
        } else {
            return mList != nullptr && NextFromList(input);
        }
    }
    return false;
}

/// @return false when the operand was a folder, now entered
bool CDocumentSource::NextOperand(tInput& input)
{
    input.path = std::move(mOperands.front());
    mOperands.pop_front();
    if (input.path == "-") {
        return OpenStandardInput(input);
    }
    struct stat status = {};
    if (stat(input.path.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) {
        const std::string path = input.path;
        return EnterFolder(AT_FDCWD, path, path, input);
    }
    return OpenDocument(AT_FDCWD, input.path, input);
}

bool CDocumentSource::NextFromList(tInput& input)
{
    char* line = nullptr;
    size_t capacity = 0;
    for (;;) {
        const ssize_t length = getdelim(&line, &capacity, mListSeparator, mList.get());
        if (length < 0 || Interrupt::IsRequested()) {
            free(line);
            return false;
        }
        input.path.assign(line, static_cast<size_t>(length));
        if (!input.path.empty() && input.path.back() == mListSeparator) {
            input.path.pop_back();
        }
        if (!input.path.empty()) {
            break;
        }
    }
    free(line);
    if (input.path.find('\0') != std::string::npos) { // a list with zeros, read as lines
        return Fail(input, MakeFailure(eFailure::kPath, "no path: it holds a zero byte (is --null missing?)").failure);
    }
    return OpenDocument(AT_FDCWD, input.path, input);
}

/// @return false when the folder was entered; true when it cannot be read, which is then the input's failure
bool CDocumentSource::EnterFolder(int parent, const std::string& name, const std::string& path, tInput& input)
{
    // A folder on the command line may be named through a link; below it, one that has become a link since is left
    // alone.
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
    folder.descriptor = std::move(descriptor);
    errno = 0;
    while (const dirent* entry = readdir(entries)) {
        const std::string_view entryName = entry->d_name;
        if (entryName != "." && entryName != "..") {
            folder.names.emplace_back(entryName);
        }
    }
    const int error = errno;
    closedir(entries);
    std::sort(folder.names.begin(), folder.names.end(), [](const std::string& one, const std::string& other) {
        return std::lexicographical_compare(one.begin(), one.end(), other.begin(), other.end(), [](char a, char b) {
            return static_cast<unsigned char>(a) < static_cast<unsigned char>(b);
        });
    });
    mFolders.push_back(std::move(folder));
    if (error != 0) { // what could be listed is still walked
        input.path = path;
        return Fail(input, CannotOpen(error, "the folder cannot be read to its end"));
    }
    return false;
}

/// @return false when the entry is none to take, or a folder was entered or left
bool CDocumentSource::NextFromFolder(tInput& input)
{
    tFolder& folder = mFolders.back();
    if (folder.next == folder.names.size()) {
        mFolders.pop_back();
        return false;
    }
    const std::string name = folder.names[folder.next++];
    const int descriptor = folder.descriptor.Get();
    const std::string path = folder.path + (folder.path.back() == '/' ? "" : "/") + name;
    struct stat status = {};
    if (fstatat(descriptor, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return false; // gone since the folder was listed
    }
    if (S_ISDIR(status.st_mode)) {
        return EnterFolder(descriptor, name, path, input);
    }
    const bool isLink = S_ISLNK(status.st_mode);
    const bool resolved = !isLink || fstatat(descriptor, name.c_str(), &status, 0) == 0;
    if (resolved && S_ISDIR(status.st_mode)) {
        return false;
    }
    const bool taken = HasExtension(name) || (resolved && S_ISREG(status.st_mode) && HasMagic(descriptor, name));
    if (!taken) {
        return false;
    }
    input.path = path;
    return OpenDocument(descriptor, name, input);
}
