// Foundation has a parser and a writer of its own, which change what they do not expect: they pair keys that lack their
// values, and lose characters beyond the basic plane and a byte order mark behind an entity.
#import "Linux/CoreFoundation/PropertyList.h"
#include "Bounds.h"
#import "Linux/CoreFoundation/Pool.h"
#include "Portable/Utf8.h"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <memory>
#include <pugixml.hpp>
#include <string_view>

static bool ReadFile(const std::string& path, std::string& bytes)
{
    const std::unique_ptr<FILE, int (*)(FILE*)> file(fopen(path.c_str(), "rbe"), &fclose);
    if (!file) {
        return false;
    }
    char block[4096];
    while (const size_t count = fread(block, 1, sizeof block, file.get())) {
        bytes.append(block, count);
    }
    return ferror(file.get()) == 0;
}

// Whether a zero is in the text or any reference to a character is to none: which no text can hold.
static bool HasZero(std::string_view text)
{
    static constexpr std::string_view kReference = "&#";
    static constexpr unsigned long kLastCharacter = 0x10FFFF;
    for (size_t at = text.find(kReference); at != text.npos; at = text.find(kReference, at)) {
        at += kReference.size();
        const bool isHex = text.substr(at).starts_with('x');
        const char* const digits = text.data() + at + (isHex ? 1 : 0);
        unsigned long character = 0;
        const auto [end, error] = std::from_chars(digits, text.data() + text.size(), character, isHex ? 16 : 10);
        if (error != std::errc() || character == 0 || character > kLastCharacter) {
            return true;
        }
    }
    return text.find('\0') != text.npos;
}

static constexpr std::string_view kBlanks = " \t\r\n";

static std::string_view Trim(std::string_view text)
{
    const size_t first = text.find_first_not_of(kBlanks);
    return first == text.npos ? std::string_view() : text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

static bool IsElement(pugi::xml_node node) { return node.type() == pugi::node_element; }

static bool IsNamed(pugi::xml_node node, std::string_view name) { return node.name() == name; }

// The first element from `node` on, past white space; other text sets `isLoose`.
static pugi::xml_node SkipBlanks(pugi::xml_node node, bool& isLoose)
{
    while (!node.empty() && !IsElement(node)) {
        isLoose = isLoose || !Trim(node.value()).empty();
        node = node.next_sibling();
    }
    return node;
}

// The text of an element that has no others in it.
static bool TakeText(pugi::xml_node node, std::string& text)
{
    for (const pugi::xml_node part : node) {
        if (IsElement(part)) {
            return false;
        }
        text += part.value();
    }
    return true;
}

static NSString* MakeString(const std::string& text)
{
    return [[[NSString alloc] initWithBytes:text.data() length:text.size() encoding:NSUTF8StringEncoding] autorelease];
}

// A number without anything behind it. @return false where there is none, or it does not fit
template <typename tNumber> static bool TakeNumber(std::string_view text, tNumber& number)
{
    text.remove_prefix(text.starts_with('+') ? 1 : 0);
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

static NSString* const kDateFormat = @"%Y-%m-%dT%H:%M:%SZ";

// The object of an element that is neither dictionary nor array; nil for what is none.
static id MakeLeaf(pugi::xml_node node)
{
    std::string text;
    if (!TakeText(node, text)) {
        return nil;
    }
    if (IsNamed(node, "string")) {
        return MakeString(text);
    }
    const std::string_view value = Trim(text);
    if (IsNamed(node, "true") || IsNamed(node, "false")) {
        return value.empty() ? [NSNumber numberWithBool:IsNamed(node, "true")] : nil;
    }
    if (IsNamed(node, "integer")) {
        long long small = 0;
        unsigned long long large = 0;
        return TakeNumber(value, small)   ? [NSNumber numberWithLongLong:small]
               : TakeNumber(value, large) ? [NSNumber numberWithUnsignedLongLong:large]
                                          : nil;
    }
    if (IsNamed(node, "real")) {
        double number = 0.0;
        return TakeNumber(value, number) ? [NSNumber numberWithDouble:number] : nil;
    }
    if (IsNamed(node, "date")) {
        NSString* const date = [MakeString(std::string(value)) stringByReplacingOccurrencesOfString:@"Z"
                                                                                         withString:@" +0000"];
        return [NSCalendarDate dateWithString:date calendarFormat:@"%Y-%m-%dT%H:%M:%S %z"];
    }
    return IsNamed(node, "data")
               ? [[[NSData alloc] initWithBase64EncodedString:MakeString(text)
                                                      options:NSDataBase64DecodingIgnoreUnknownCharacters] autorelease]
               : nil;
}

// The object of an element; nil where it, or anything in it, is none.
static id MakeObject(pugi::xml_node node, int depth)
{
    if (depth > Bounds::kDeepestXML) {
        return nil;
    }
    bool isLoose = false;
    if (IsNamed(node, "array")) {
        NSMutableArray* const array = [NSMutableArray array];
        pugi::xml_node entry = SkipBlanks(node.first_child(), isLoose);
        for (; !entry.empty(); entry = SkipBlanks(entry.next_sibling(), isLoose)) {
            const id object = MakeObject(entry, depth + 1);
            if (object == nil) {
                return nil;
            }
            [array addObject:object];
        }
        return isLoose ? nil : array;
    }
    if (!IsNamed(node, "dict")) {
        return MakeLeaf(node);
    }
    NSMutableDictionary* const dictionary = [NSMutableDictionary dictionary];
    pugi::xml_node key = SkipBlanks(node.first_child(), isLoose);
    while (!key.empty()) {
        const pugi::xml_node value = SkipBlanks(key.next_sibling(), isLoose);
        std::string name;
        const id object =
            !value.empty() && IsNamed(key, "key") && TakeText(key, name) ? MakeObject(value, depth + 1) : nil;
        if (object == nil) {
            return nil;
        }
        [dictionary setObject:object forKey:MakeString(name)];
        key = SkipBlanks(value.next_sibling(), isLoose);
    }
    return isLoose ? nil : dictionary;
}

static id ParseList(const std::string& bytes)
{
    pugi::xml_document document;
    if (HasZero(bytes) || !Platform::IsUtf8(bytes) ||
        !document.load_buffer(bytes.data(), bytes.size(), pugi::parse_default | pugi::parse_ws_pcdata_single,
                              pugi::encoding_utf8)) {
        return nil;
    }
    bool isLoose = false;
    const pugi::xml_node list = document.document_element();
    const pugi::xml_node value = SkipBlanks(list.first_child(), isLoose);
    const bool isOne = !value.empty() && SkipBlanks(value.next_sibling(), isLoose).empty() && !isLoose;
    return IsNamed(list, "plist") && isOne ? MakeObject(value, 0) : nil;
}

static constexpr size_t kIndent = 4; // characters a level

// Appends an element with a text. @return false for a text that XML cannot hold
static bool AppendText(std::string& bytes, const char* name, NSString* text)
{
    NSData* const data = [text dataUsingEncoding:NSUTF8StringEncoding];
    if (data == nil) { // half a character
        return false;
    }
    bytes.append("<").append(name).append(">");
    for (const char byte : std::string_view(static_cast<const char*>([data bytes]), [data length])) {
        if (byte == '\0') {
            return false;
        }
        if (byte == '&' || byte == '<' || byte == '>') {
            bytes += byte == '&' ? "&amp;" : byte == '<' ? "&lt;" : "&gt;";
        } else if (byte > 0 && byte < ' ' && byte != '\t' && byte != '\n') {
            bytes += "&#" + std::to_string(int{byte}) + ";";
        } else {
            bytes += byte;
        }
    }
    bytes.append("</").append(name).append(">\n");
    return true;
}

static bool AppendNumber(std::string& bytes, NSNumber* number)
{
    switch (*[number objCType]) {
    case 'c':
    case 'C':
    case 'B':
        bytes += [number boolValue] ? "<true/>\n" : "<false/>\n";
        return true;
    case 'f':
    case 'd': {
        char text[32];
        const auto end = std::to_chars(text, text + sizeof text, [number doubleValue]).ptr;
        bytes.append("<real>").append(text, end).append("</real>\n");
        return true;
    }
    default:
        return AppendText(bytes, "integer", [number stringValue]);
    }
}

// Appends an object with what is in it. @return false for what no property list can hold
static bool AppendObject(std::string& bytes, id object, int depth)
{
    const std::string indent(kIndent * static_cast<size_t>(depth), ' ');
    bytes += indent;
    if ([object isKindOfClass:[NSString class]]) {
        return AppendText(bytes, "string", object);
    }
    if ([object isKindOfClass:[NSNumber class]]) {
        return AppendNumber(bytes, object);
    }
    if ([object isKindOfClass:[NSDate class]]) {
        NSTimeZone* const zone = [NSTimeZone timeZoneForSecondsFromGMT:0];
        return AppendText(bytes, "date", [object descriptionWithCalendarFormat:kDateFormat timeZone:zone locale:nil]);
    }
    if ([object isKindOfClass:[NSData class]]) {
        return AppendText(bytes, "data", [object base64EncodedStringWithOptions:0]);
    }
    const bool isArray = [object isKindOfClass:[NSArray class]];
    if (depth > Bounds::kDeepestXML || (!isArray && ![object isKindOfClass:[NSDictionary class]])) {
        return false;
    }
    bytes += isArray ? "<array>\n" : "<dict>\n";
    // No fast enumeration: g++ has none in standard C++.
    NSArray* const keys = isArray ? nil : [object allKeys];
    for (NSUInteger i = 0; i < [keys count]; ++i) {
        if (![[keys objectAtIndex:i] isKindOfClass:[NSString class]]) {
            return false;
        }
    }
    NSArray* const entries = isArray ? object : [keys sortedArrayUsingSelector:@selector(compare:)];
    for (NSUInteger i = 0; i < [entries count]; ++i) {
        const id entry = [entries objectAtIndex:i];
        if (!isArray) {
            bytes.append(indent).append(kIndent, ' ');
            if (!AppendText(bytes, "key", entry)) {
                return false;
            }
        }
        if (!AppendObject(bytes, isArray ? entry : [object objectForKey:entry], depth + 1)) {
            return false;
        }
    }
    bytes += indent + (isArray ? "</array>\n" : "</dict>\n");
    return true;
}

Platform::eListState Platform::ReadPropertyList(const std::string& path, NSMutableDictionary*& result)
{
    std::string bytes;
    errno = 0;
    if (!ReadFile(path, bytes)) {
        return errno == ENOENT ? eListState::kMissing : eListState::kDamaged;
    }
    const CPool pool;
    const id list = ParseList(bytes);
    if (![list isKindOfClass:[NSDictionary class]]) {
        return eListState::kDamaged;
    }
    result = [[NSMutableDictionary alloc] initWithDictionary:list];
    return eListState::kRead;
}

bool Platform::FormatPropertyList(NSDictionary* list, std::string& bytes)
{
    const CPool pool;
    bytes =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
        "<plist version=\"1.0\">\n";
    const bool isWhole = AppendObject(bytes, list, 0);
    bytes += "</plist>\n";
    return isWhole;
}
