// Foundation builds some class tables on first use and keeps them; under the leak checker that happens here, unseen.
#import <Foundation/Foundation.h>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#define LEAK_CHECK_OFF() __lsan_disable()
#define LEAK_CHECK_ON() __lsan_enable()
#else
#define LEAK_CHECK_OFF() ((void)0)
#define LEAK_CHECK_ON() ((void)0)
#endif

void WarmUpFoundation();
void WarmUpFoundation()
{
    LEAK_CHECK_OFF();
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    NSDictionary* list = [NSDictionary dictionaryWithObject:@"value" forKey:@"key"];
    NSData* data = [NSPropertyListSerialization dataFromPropertyList:list
                                                              format:NSPropertyListXMLFormat_v1_0
                                                    errorDescription:nullptr];
    [NSPropertyListSerialization propertyListFromData:data
                                     mutabilityOption:NSPropertyListImmutable
                                               format:nullptr
                                     errorDescription:nullptr];
    [NSString stringWithFormat:@"%d %@", 1, @"x"];
    [[NSFileManager defaultManager] fileExistsAtPath:[@"~" stringByExpandingTildeInPath]];
    [pool drain];
    LEAK_CHECK_ON();
}
