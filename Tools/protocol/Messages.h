// What the frames say. Numbers are little-endian; a text is its length (4 bytes) and that many bytes of UTF-8, a list
// its count (4 bytes) and the entries. Decoding accepts exactly what encoding makes: every length is checked against
// the bytes that are there, texts must be valid UTF-8, and nothing may follow.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// What the lists of a message may count together. An entry costs the receiver more than its 4 bytes in the message.
inline constexpr uint32_t kMaxListEntries = 4000000;

/// The worker's first message.
struct tHello {
    bool ready = false;
    std::string message; ///< why not ready, one line
};

enum class eVerb : uint8_t {
    kImport = 1,  ///< with the document's descriptor: the attributes the plug-in gives
    kSchema = 2,  ///< what the plug-in says about itself
    kCheck = 3,   ///< with a document's descriptor: what is wrong with it. This and the rest are answered with a report
    kParts = 4,   ///< with a layout's: its parts
    kLibrary = 5, ///< with a track library's: its articles
    kStock = 6,   ///< with a stock file's: its entries
    kIndex = 7    ///< with a layout's: the attributes the plug-in gives, and the names of its libraries and articles
};

struct tRequest {
    eVerb verb = eVerb::kImport;
    std::string contentType; ///< uniform type identifier, for kImport and kIndex
};

/// One attribute of a document: a text, or a list of texts.
struct tAttribute {
    std::string key;
    bool isList = false;
    std::vector<std::string> texts; ///< exactly one when it is no list
};

/// Why a document was not imported.
enum class eFailure : uint8_t {
    kLoader = 0,  ///< the loader's own result code says more
    kCrash = 1,   ///< the worker ended, or answered out of form
    kTimeout = 2, ///< no answer in time
    kMemory = 3,  ///< the memory granted did not suffice
    kPath = 4,    ///< no file that could be a document
    kPlugIn = 5   ///< no plug-in, or it refuses what the loader accepts
};

struct tFailure {
    eFailure kind = eFailure::kCrash;
    int32_t loaderCode = 0; ///< 1 to 5 for kLoader
    uint32_t element = 0;   ///< the failed element, counted from 1; 0 where no element failed
    std::string message;    ///< for people
};

/// An attribute that a plug-in declares.
struct tSchemaAttribute {
    std::string name;
    std::string type; ///< for people: "string", "array of strings"
    std::string description;
};

/// A document type that a plug-in takes.
struct tSchemaType {
    std::string identifier;
    std::string description;
    std::vector<std::string> extensions;
    std::vector<std::string> mimeTypes;
    std::string magic; ///< the first bytes of such documents; empty when the plug-in does not say
};

struct tSchema {
    std::vector<tSchemaAttribute> attributes;
    std::vector<tSchemaType> types;
};

/// An answer: a failure, or what the verb asked for.
struct tAnswer {
    bool ok = false;
    tFailure failure;                   ///< when not ok
    eVerb verb = eVerb::kImport;        ///< when ok: which of the following are meant
    std::vector<tAttribute> attributes; ///< kImport and kIndex
    std::vector<std::string> libraries; ///< kIndex: each name once
    std::vector<std::string> articles;  ///< kIndex: each name once
    tSchema schema;                     ///< kSchema
    std::string report;                 ///< the other verbs: a JSON object in UTF-8
};

/// An answer that says no.
tAnswer MakeFailure(eFailure kind, std::string message);

std::string Encode(const tHello& hello);
std::string Encode(const tRequest& request);
std::string Encode(const tAnswer& answer);

/// @return false for a message that is not whole and well-formed; the argument is then of no use
bool Decode(std::string_view message, tHello& hello);
bool Decode(std::string_view message, tRequest& request);
bool Decode(std::string_view message, tAnswer& answer);
