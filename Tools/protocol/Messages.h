// What the frames say. Numbers are little-endian; a text is its length (4 bytes) and that many bytes of UTF-8, a list
// its count (4 bytes) and the entries; a picture and a file name are their length and bytes of any kind. Decoding
// accepts exactly what encoding makes: every length is checked against the bytes that are there, texts must be valid
// UTF-8, and nothing may follow.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// One thing that a worker has given up, or could not.
struct tSandboxLayer {
    std::string name; ///< a word: "seccomp"
    bool isOn = false;
    std::string detail; ///< how far it reaches, or why it is not on; for people
};

enum class eVerb : uint8_t {
    kImport = 1,  ///< with the document's descriptor: the attributes the plug-in gives
    kSchema = 2,  ///< what the plug-in says about itself
    kCheck = 3,   ///< with a document's descriptor: what is wrong with it. This and the next are answered with a report
    kParts = 4,   ///< with a layout's: its parts
    kLibrary = 5, ///< with a track library's: its articles
    kStock = 6,   ///< with a stock file's: its entries
    kExamine = 7, ///< what the worker finds of its surroundings, or whether it can do what a sandbox should refuse
    kRender = 8,  ///< with a layout's: its picture, and a report about it
    kIndex = 9,   ///< with a layout's: the attributes the plug-in gives, and names of libraries and articles, figures
    kBalance = 10 ///< with two lists of amounts, needed and owned: what of the one the other lacks, and what it keeps
};

enum class ePictureKind : uint8_t { kPNG = 1, kSVG = 2, kPDF = 3 };

/// What a picture is to be.
struct tPictureWish {
    ePictureKind kind = ePictureKind::kPNG;
    uint32_t width = 0; ///< pixels it may have; 0 for the usual size
    uint32_t height = 0;
    bool isThumbnail = false; ///< exactly this size, transparent
    bool hasLabels = false;
    bool hasGrid = false;
    std::string style;               ///< name of a track style; empty for the layout's own
    std::vector<std::string> layers; ///< names of the layers to draw; empty for the visible ones
};

struct tRequest {
    eVerb verb = eVerb::kImport;
    /// For kImport and kIndex a uniform type identifier, for kExamine the act to be tried, or empty.
    std::string contentType = {};
    tPictureWish picture = {}; ///< for kRender
    std::string fileName = {}; ///< for kLibrary: bytes of any kind
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
    kPlugIn = 5,  ///< no plug-in, or it refuses what the loader accepts
    kSandbox = 6, ///< the sandbox that was required cannot be had
    // What only the host finds, no message says:
    kDamaged = 7, ///< a check has found damage
    kOutput = 8   ///< what was made of the document cannot be written
};

/// The worker's first message.
struct tHello {
    bool ready = false;
    std::string message;                     ///< why not ready, one line
    eFailure reason = eFailure::kPlugIn;     ///< when not ready: kPlugIn or kSandbox
    std::vector<tSandboxLayer> sandbox = {}; ///< the layers it was to put on
    std::string sandboxNote = {};            ///< why there is no sandbox; empty where there is one
    std::string stockFile = {};              ///< what the user's preferences call the stock file; empty if not asked
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

/// A scale that a layout's tracks have.
struct tGauge {
    std::string scale;  ///< its name
    uint32_t width = 0; ///< in hundredths of a mm
    bool operator==(const tGauge&) const = default;
};

/// What a layout can be asked for by number.
struct tFigures {
    uint32_t created = 0;       ///< seconds of the document's own clock since its 1970; 0 for unknown
    uint32_t elements = 0;      ///< how many
    uint32_t tracks = 0;        ///< length of all tracks in mm
    std::vector<tGauge> gauges; ///< each once
};

/// An answer: a failure, or what the verb asked for.
struct tAnswer {
    bool ok = false;
    tFailure failure;                   ///< when not ok
    eVerb verb = eVerb::kImport;        ///< when ok: which of the following are meant
    std::vector<tAttribute> attributes; ///< kImport and kIndex
    std::vector<std::string> libraries; ///< kIndex: each name once
    std::vector<std::string> articles;  ///< kIndex: each name once
    tFigures figures;                   ///< kIndex
    tSchema schema;                     ///< kSchema
    std::string report;                 ///< the other verbs: a JSON object in UTF-8
    std::string picture;                ///< kRender: a file's bytes
};

/// An answer that says no.
tAnswer MakeFailure(eFailure kind, std::string message);

std::string Encode(const tHello& hello);
std::string Encode(const tRequest& request);
std::string Encode(const tAnswer& answer);

/// The longest encoded answer about a document of this many bytes.
size_t MaxAnswerSize(eVerb verb, uint64_t documentSize);

/// Whether an answer about a document of this many bytes is one that the receiver can afford: the entries of its lists,
/// and the nesting and the values of its report, which cost a multiple of their bytes once they are read.
bool IsAffordable(const tAnswer& answer, uint64_t documentSize);

/// @return false for a message that is not whole and well-formed; the argument is then of no use
bool Decode(std::string_view message, tHello& hello);
bool Decode(std::string_view message, tRequest& request);
bool Decode(std::string_view message, tAnswer& answer);
