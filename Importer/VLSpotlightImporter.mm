#import "VLSpotlightImporter.h"

#include "CResolvedLayout.h"
#include "KVUStr/KVUStr.h"
#include "Layers/CLayer.h"
#include "Layers/CLayerManager.h"

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
    CResolvedLayout resolved;
    CLayout& layout = resolved.Get();

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
    SetAttribute(attributes, kMDItemTextContent, FromMacRoman(resolved.Summary().c_str()));
    return YES;
}

@end
