// The Objective-C classes behind the Core Foundation types that Foundation has no usable class for.
#pragma once

#include "Linux/CoreFoundation/TextEncoding.h"

#include <CoreFoundation/CoreFoundation.h>
#import <Foundation/Foundation.h>

#include <string>

/// CFUUIDRef: sixteen bytes, immutable.
@interface PlatformUUID : NSObject <NSCopying> {
    CFUUIDBytes mBytes;
}
- (id)initWithBytes:(const CFUUIDBytes&)bytes;
- (const CFUUIDBytes&)bytes;
@end

/// CFURLRef: the path of a file or folder as bytes; absolute, without a separator at its end.
@interface PlatformURL : NSObject <NSCopying> {
    std::string* mPath; // a pointer, since constructors of C++ members are not run
}
- (id)initWithPathBytes:(const std::string&)path;
- (const std::string&)path;
@end

/// CFBundleRef: a folder with its information dictionary. Equal to another one of the same folder.
@interface PlatformBundle : NSObject {
    std::string* mPath;
    NSDictionary* mInfo;
    void* mHandle; // of the loaded executable; never closed
}
- (id)initWithPathBytes:(const std::string&)path info:(NSDictionary*)info;
- (const std::string&)path;
- (NSDictionary*)info;
/// Loads the executable where that has not happened yet. @return its handle, or null
- (void*)load;
@end
