#include <CoreServices/CoreServices.h>

#import <Foundation/Foundation.h>

// Static data, not initialisers: other modules use these before any code of this library has run.
const CFStringRef kMDItemAuthors = (CFStringRef) @"kMDItemAuthors";
const CFStringRef kMDItemDescription = (CFStringRef) @"kMDItemDescription";
const CFStringRef kMDItemLayerNames = (CFStringRef) @"kMDItemLayerNames";
const CFStringRef kMDItemTextContent = (CFStringRef) @"kMDItemTextContent";
const CFStringRef kMDItemVersion = (CFStringRef) @"kMDItemVersion";
