// XML property lists in files.
#pragma once

#import <Foundation/Foundation.h>

#include <string>

namespace Platform {
enum class eListState {
    kRead,
    kMissing, ///< there is no such file
    kDamaged  ///< there is something that cannot be read or is no XML property list with a dictionary on top
};

/// Reads the dictionary of a property list file.
/// @param path    bytes of the file system
/// @param result  set only for kRead; a mutable dictionary that the caller releases
eListState ReadPropertyList(const std::string& path, NSMutableDictionary*& result);

/// @param bytes  the dictionary as XML
/// @return false when it holds what no property list can
bool FormatPropertyList(NSDictionary* list, std::string& bytes);
} // namespace Platform
