// The one Cocoa class of the importer: from a layout document to search attributes.
#import <Foundation/Foundation.h>

/// Stateless; a new one serves every import. One import at a time per process.
@interface VLSpotlightImporter : NSObject
/// Loads the layout at `path` and sets its author, description, layer names, revision and content summary.
/// @return NO when the path has no form in Mac OS Roman of at most 1,023 bytes or the layout cannot be loaded; the
///         dictionary is then as it was
- (BOOL)importLayout:(NSString*)path dict:(NSMutableDictionary*)attributes;
@end
