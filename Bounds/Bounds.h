// How much is read, made and waited for at the most, and why so much. Plain numbers for every part of the tree: host,
// worker and core include nothing else of each other's. What a file format itself allows stands with the format, and
// how finely something is drawn or computed with whoever does so.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Bounds {
// Files that are read.

/// Characters of a text without a fixed field in a tagged record: a page, where people write a few lines.
inline constexpr size_t kMostRecordText = 2047;

// An XML file: far above any stock (four levels, eight marks, seven nodes and some 150 bytes an article), yet low
// enough that the nodes of the worst file need no more than some 500 MB. What would be written beyond them is refused,
// since nobody could read it.
/// Bytes of the file.
inline constexpr size_t kMostXMLBytes = size_t{32} << 20;
/// Characters "<", as well as elements and texts together.
inline constexpr size_t kMostXMLMarks = 900000;
/// Elements within each other.
inline constexpr int kDeepestXML = 64;
/// Bytes of a name or a text that becomes a node: fields that take it are shorter.
inline constexpr size_t kMostXMLText = 1023;

/// Bytes taken from a standard input that is no file: it is held in memory.
inline constexpr size_t kMostPipedBytes = size_t{1} << 30;
/// Bytes of a line with a path or a request: longer than any path that a system takes, and than any sensible request.
inline constexpr size_t kMostLineBytes = size_t{1} << 20;
/// Folders of a deep walk that are kept open: few enough for any system's limit on descriptors.
inline constexpr size_t kMostOpenFolders = 32;

// A search query. FTS5's parser has a stack of 100 and a tree of at most 256 levels; nobody types half of that.
inline constexpr int kDeepestQuery = 20;
inline constexpr size_t kMostQueryTerms = 200;
/// More bytes than this are not a query but a file that got into the command line.
inline constexpr size_t kMostQueryBytes = 16384;
/// Words of the index that a part of a word stands for, and those of a whole query: each costs some 10 µs and what its
/// documents take. People's words are in dozens of others.
inline constexpr size_t kMostPartWords = 200;
inline constexpr size_t kMostQueryPartWords = 400;
/// Documents that are ranked where there are more, and only the best are wanted: about a millisecond.
inline constexpr size_t kMostRanked = 500;
/// So many times as far as it took to find those, it is looked for documents with the words in prominent places.
inline constexpr int64_t kProminentReach = 16;
/// Bytes of a text in which a passage is looked for, from its beginning: a thick book.
inline constexpr size_t kMostPassageText = size_t{1} << 20;

// The words of an index, of which parts are found.
/// Bytes of a word; of those that are gathered until they are written.
inline constexpr size_t kLongestPart = 64;
inline constexpr size_t kMostNewWordBytes = size_t{64} << 20;

// A currency that the user names.
/// Digits behind the point: those of ISO 4217 have 4 at the most.
inline constexpr int kMostDecimals = 6;
/// Bytes of its symbol: a word stands in each row of a list.
inline constexpr size_t kMostSymbolBytes = 16;

// What is made.

/// Components that one element takes from an editing program; a file may hold more.
inline constexpr size_t kMostComponents = 500;
/// Findings about one file: a damaged one soon has nothing new to say.
inline constexpr size_t kMostFindings = 200;

// A picture: a poster at 300 dots per inch. Its pixels take 200 MB, a fifth of what a worker is granted.
/// Pixels of the longer side.
inline constexpr int kMostPictureSide = 16384;
/// Pixels altogether.
inline constexpr int64_t kMostPicturePixels = 50000000;
/// Plans on a page of parts, which is in memory as a whole; more would be a book.
inline constexpr size_t kMostPlans = 4;
/// Pixels of a side of a thumbnail: twice the largest that file managers ask for.
inline constexpr uint32_t kMostThumbnailSide = 2048;

// What host and worker tell each other. The worker may be in the hands of its document.

/// Bytes of an answer. It holds a document's texts, or a picture, and is in the host's memory as a whole.
inline constexpr size_t kMostAnswerBytes = size_t{256} << 20;
// An honest answer repeats texts of its document, each character in at most six bytes, and adds a few words for each of
// its records. So it grows with the document, several times as fast at most.
/// Bytes of an answer about a document of no size, and for each byte of a document.
inline constexpr uint64_t kBaseAnswerBytes = 4 << 20;
inline constexpr uint64_t kAnswerBytesPerByte = 32;
/// Values in an answer: so many for a document of no size, one for each byte, so many more at the most.
inline constexpr uint64_t kBaseValues = 64 << 10;
inline constexpr uint64_t kMostValues = 16 << 20;
/// Entries of all lists of a message. One costs the receiver more than its 4 bytes in the message.
inline constexpr uint32_t kMostListEntries = 4000000;
/// Levels of a report: an object with a list of objects that have lists, and as much again for later.
inline constexpr size_t kDeepestReport = 8;
/// Bytes of a fatal report, which is a line.
inline constexpr size_t kMostFatalReport = 4096;
/// Bytes read of what a worker prints before it is ready: its first line is the loader's, which names a path or two.
inline constexpr size_t kMostComplaint = 4096;
/// Bytes of a request, which names a verb, a type and a few names.
inline constexpr size_t kMostRequestBytes = size_t{64} << 10;

// What a worker process may use.

/// Seconds for one document unless the user says otherwise: thousands of times what a usual layout takes.
inline constexpr double kDocumentSeconds = 5;
/// Seconds that a user may ask for: a day.
inline constexpr double kMostDocumentSeconds = 86400;
/// Megabytes that it may map beyond what it maps at rest, unless the user says otherwise; and that a user may ask for.
inline constexpr unsigned kWorkerMegabytes = 1024;
inline constexpr unsigned kMostWorkerMegabytes = 1U << 20;
/// Seconds of processor time after which it is renewed. The hard limit lies behind it, which can never be raised again.
inline constexpr unsigned kWorkerSeconds = 60;
/// Documents, and growth in bytes, after which it is renewed, whatever it has kept of them.
inline constexpr uint64_t kWorkerRequests = 10000;
inline constexpr size_t kWorkerGrowth = size_t{128} << 20;
/// Requests that it may be sent at once, the one in work among them: enough to hide the host's own work.
inline constexpr size_t kMostRequestsAhead = 8;
/// Descriptors. At rest it has 4 open and a request brings 2; drawing opens fonts, of which the library keeps ten.
inline constexpr unsigned kWorkerDescriptors = 32;
inline constexpr unsigned kDrawingDescriptors = 64;
/// Milliseconds in which the threads that libraries have started have to end; they take one.
inline constexpr int kThreadMilliseconds = 2000;
/// Seconds from its start to its greeting; a cold disk takes tenths of one.
inline constexpr int kStartSeconds = 20;
/// So often it may be lost while it starts, before none is expected to succeed.
inline constexpr int kStartAttempts = 3;
/// So often a request is tried whose processes are killed by somebody else, who may be the system, short of memory.
inline constexpr int kMostLosses = 5;
/// Milliseconds to end in, once its socket is closed, before it is ended.
inline constexpr int kEndMilliseconds = 500;

// What the host holds and waits for.

/// Its descriptors: enough for a thousand workers and what they have to do.
inline constexpr size_t kHostDescriptors = 16384;
/// Answers, and their bytes, that wait behind a slow document: its memory does not grow with the number of documents.
inline constexpr size_t kMostWaitingAnswers = 16384;
inline constexpr size_t kMostWaitingBytes = size_t{32} << 20;
/// Bytes of a picture that is handed over within an answer: a line of JSON that a caller has in its memory as a whole.
inline constexpr size_t kMostServedPicture = size_t{32} << 20;
/// Documents in the answer to a search that a caller asks for, who can ask for the next ones; and without a wish.
inline constexpr int64_t kMostServedHits = 1000;
inline constexpr int64_t kUsualServedHits = 100;
/// Requests of a caller that wait for an answer, or for the answer of one before them.
inline constexpr size_t kMostServed = 1024;
/// Seconds that idle workers have to leave by themselves, and that work has to finish after an interrupt.
inline constexpr int kLeaveSeconds = 2;
inline constexpr int kInterruptSeconds = 1;
/// Milliseconds that a reader of the index waits at most, for a checkpoint or the making of the tables.
inline constexpr int kIndexMilliseconds = 10000;
/// Folders that are taken over from a broken index; nobody names so many.
inline constexpr int kMostRescuedRoots = 10000;
} // namespace Bounds
