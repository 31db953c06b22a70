// Plain Objective-C: this compiler's Objective-C++ crashes when it catches an NSException.
#import "Linux/CoreFoundation/PropertyListGuard.h"

id PlatformParsePropertyList(NSData* data)
{
    @try {
        return [NSPropertyListSerialization propertyListFromData:data
                                                mutabilityOption:NSPropertyListImmutable
                                                          format:NULL
                                                errorDescription:NULL];
    } @catch (NSException* exception) {
        return nil; // broken XML can end in a null value or key
    }
}

NSData* PlatformFormatPropertyList(id list)
{
    @try {
        return [NSPropertyListSerialization dataFromPropertyList:list
                                                          format:NSPropertyListXMLFormat_v1_0
                                                errorDescription:NULL];
    } @catch (NSException* exception) {
        return nil;
    }
}
