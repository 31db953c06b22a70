// Foundation's property list functions for callers that cannot catch:
// C++ code must not catch what Objective-C throws here.
#pragma once

#import <Foundation/Foundation.h>

#ifdef __cplusplus
extern "C" {
#endif

/// The property list in `data`, autoreleased; nil for anything that is none.
id PlatformParsePropertyList(NSData* data);

/// `list` as XML, autoreleased; nil when it holds what no property list can.
NSData* PlatformFormatPropertyList(id list);

#ifdef __cplusplus
}
#endif
