// FSRef and the few operations on it that outlived its system: a reference to an existing file or folder, as its path.
#pragma once

#include "Platform/Export.h"

#include <string>

using OSStatus = int;

/// File Manager results that callers test.
enum : OSStatus {
    noErr = 0,
    nsvErr = -35,
    ioErr = -36,
    bdNamErr = -37,
    fnfErr = -43,
    rfNumErr = -51,
    volOffLinErr = -53,
    nsDrvErr = -56
};

/// A reference to a file or folder that existed when it was made; copied by value. An empty path refers to nothing.
struct FSRef {
    std::string path; ///< absolute, as bytes of the file system
};

namespace Platform {
/// Refers to an existing file or folder; a relative path is one in the current folder. Links are not resolved.
/// @return noErr, fnfErr when it does not exist, bdNamErr for a text that cannot be a path (empty, too long), ioErr;
/// `ref` is untouched on a failure, here and in the following
PLATFORM_EXPORT OSStatus MakeReference(const std::string& path, FSRef& ref);

/// Refers to an existing entry `name` (UTF-8; no separator inside, not "." or "..") of a folder.
/// @return as MakeReference
PLATFORM_EXPORT OSStatus MakeReferenceInFolder(const FSRef& folder, const std::string& name, FSRef& ref);

/// Makes a folder `name` (as above; mode 0777 less the mask) and refers to it. @return noErr, bdNamErr or ioErr
PLATFORM_EXPORT OSStatus CreateFolder(const FSRef& parent, const std::string& name, FSRef& ref);

/// The referred folder's or file's path, zero-terminated, into `path` of `size` bytes.
/// @return noErr; rfNumErr for an empty reference, bdNamErr when the path does not fit
PLATFORM_EXPORT OSStatus MakePath(const FSRef& ref, char* path, int size);
} // namespace Platform
