#include "GetMetadataForFile.h"

#include "Importer/Names.h"
#import "VLSpotlightImporter.h"

Boolean GetMetadataForFile(void*, CFMutableDictionaryRef attributes, CFStringRef contentType, CFStringRef path)
{
    Boolean result = false;
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    if ([(NSString*)contentType isEqualToString:[NSString stringWithUTF8String:Importer::kContentType]]) {
        VLSpotlightImporter* importer = [[VLSpotlightImporter alloc] init];
        result = [importer importLayout:(NSString*)path dict:(NSMutableDictionary*)attributes] ? true : false;
        [importer release];
    }
    [pool drain];
    return result;
}
