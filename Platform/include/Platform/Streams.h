// C streams of documents: opening them safely, looking into their buffer, and replacing a file as a whole.
#pragma once

#include "Platform/Export.h"

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>

namespace Platform {
/// The bytes of a stream that lie decoded-ready in its own buffer, so that a record costs no library call.
/// Other code may use the same stream between two calls: the window is the stream's own read position.
inline size_t BufferedBytes(FILE* stream, const unsigned char*& begin)
{
#if defined(__GLIBC__)
    begin = reinterpret_cast<const unsigned char*>(stream->_IO_read_ptr);
    return static_cast<size_t>(stream->_IO_read_end - stream->_IO_read_ptr);
#elif defined(__APPLE__)
    begin = stream->_p;
    return stream->_r > 0 ? static_cast<size_t>(stream->_r) : 0;
#else
    begin = nullptr;
    return 0;
#endif
}

/// Moves the read position past `count` bytes of what BufferedBytes has shown.
inline void ConsumeBuffered([[maybe_unused]] FILE* stream, [[maybe_unused]] size_t count)
{
#if defined(__GLIBC__)
    stream->_IO_read_ptr += count;
#elif defined(__APPLE__)
    stream->_p += count;
    stream->_r -= static_cast<int>(count);
#endif
}

/// fread of bytes without the stream's lock. @return the number of bytes read
inline size_t ReadUnlocked(FILE* stream, void* destination, size_t count)
{
#if defined(__GLIBC__)
    return fread_unlocked(destination, 1, count, stream);
#else
    return fread(destination, 1, count, stream);
#endif
}

/// A document opened for reading, with a buffer of 64 kB; closed with the object.
class PLATFORM_EXPORT CInputFile {
public:
    /// @param path  bytes of the file system. Where they name nothing, the text is taken as Mac OS Roman and tried in
    ///              UTF-8. "/proc/self/fd/N" reads an already open descriptor from its beginning, without opening.
    ///              Never blocks on opening; what is no regular file is still opened
    ///              (a folder opens but cannot be read).
    explicit CInputFile(const std::string& path);
    ~CInputFile();
    CInputFile(const CInputFile&) = delete;
    CInputFile& operator=(const CInputFile&) = delete;

    /// The stream, owned by this object; null when the file cannot be opened.
    FILE* Get() const { return mStream; }

    /// Whether the system could not read what it had opened, as on a failing disk: what was read is then no measure of
    /// the document. Not so for a folder, which holds no bytes.
    bool HasFailed() const;

private:
    FILE* mStream;
    std::unique_ptr<char[]> mBuffer;
};

/// A file that is written beside its target and takes its place only when complete; symbolic links are followed, the
/// mode of an old file is kept. Where the folder refuses a new file, it is written in place, as is what is no regular
/// file (a device). A folder and a write-protected file are not written at all.
class PLATFORM_EXPORT COutputFile {
public:
    /// @param path  bytes of the file system; an existing file named by the text's UTF-8 form (read as Mac OS Roman) is
    ///              taken where the bytes themselves name nothing, and a new name that is not UTF-8 is converted.
    explicit COutputFile(const std::string& path);
    /// Drops what was not committed; the old file then stays (but for one that had to be written in place).
    ~COutputFile();
    COutputFile(const COutputFile&) = delete;
    COutputFile& operator=(const COutputFile&) = delete;

    /// The stream to write to, owned by this object; null when the file cannot be written.
    FILE* Get() const { return mStream; }

    /// Flushes, syncs, closes and puts the file in its place. @return false when any of it failed; the old file stays.
    /// The stream is closed and gone afterwards, whatever the answer; a second call answers false.
    bool Commit();

private:
    FILE* mStream = nullptr;
    std::string mTarget;
    std::string mTemporary; ///< empty when the target is written in place
    std::unique_ptr<char[]> mBuffer;
};
} // namespace Platform
