#import "VLSpotlightImporter.h"

#include "Elements/Utilities/UElementStatistics.h"
#include "KVUStr/KVUStr.h"
#include "Layers/CLayer.h"
#include "Layers/CLayerManager.h"
#include "Layouts/Utilities/CBoundLayout.h"

#include <CoreServices/CoreServices.h>

/// Texts in documents are Mac OS Roman throughout. Through Core Foundation, because GNUstep's own conversion gives
/// other characters for 0xC6 and 0xF0.
static NSString* FromMacRoman(const char* text)
{
    return [(NSString*)CFStringCreateWithCString(kCFAllocatorDefault, text, kCFStringEncodingMacRoman) autorelease];
}

static void SetAttribute(NSMutableDictionary* attributes, CFStringRef name, id value)
{
    [attributes setObject:value forKey:(NSString*)name];
}

@implementation VLSpotlightImporter

- (BOOL)importLayout:(NSString*)path dict:(NSMutableDictionary*)attributes
{
    CBoundLayout layout;
    const char* const pathText = KVUStr::GetCStrFromCFStr((CFStringRef)path, kCFStringEncodingMacRoman);
    if (pathText == nullptr || layout.Load(std::string(pathText)) != 0) {
        return NO;
    }

    SetAttribute(attributes, kMDItemAuthors, [NSArray arrayWithObject:FromMacRoman(layout.GetAuthor())]);
    SetAttribute(attributes, kMDItemDescription, FromMacRoman(layout.GetDesc()));

    NSMutableArray* layerNames = [NSMutableArray array];
    CLayerManager* const layers = layout.GetLayerList();
    for (int index = 0; index < layers->GetNumberOfLayers(); ++index) {
        [layerNames addObject:FromMacRoman(layers->GetLayerAtIndex(index)->GetName())];
    }
    SetAttribute(attributes, kMDItemLayerNames, layerNames);

    SetAttribute(attributes, kMDItemVersion, FromMacRoman(layout.GetRevision()));
    const std::string summary = UElementStatistics::GetContentSummaryAsString(layout.GetElements());
    SetAttribute(attributes, kMDItemTextContent, FromMacRoman(summary.c_str()));
    return YES;
}

@end
