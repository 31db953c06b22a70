// Layout files for measuring, made by the core's own writer.
#pragma once

#include <cstddef>
#include <string>

/// What a generated layout consists of.
struct tDocumentShape {
    int elements = 0;
    int articleNames = 1; ///< distinct product numbers
    int libraries = 1;
    int layers = 1;
    int texts = 0;       ///< of the elements
    int flexTracks = 0;  ///< of the elements, eight points each
    int groups = 0;      ///< of two elements each
    bool nested = false; ///< each group inside the one before
};

/// A layout file in the temporary folder, removed with the object.
class CTemporaryDocument {
public:
    explicit CTemporaryDocument(const tDocumentShape& shape);
    ~CTemporaryDocument();
    CTemporaryDocument(const CTemporaryDocument&) = delete;
    CTemporaryDocument& operator=(const CTemporaryDocument&) = delete;

    const std::string& GetPath() const { return mPath; }
    size_t GetSize() const { return mSize; }

private:
    std::string mPath;
    size_t mSize = 0;
};

/// The yardstick: reads the file with read() into a buffer of 1 MB, steps from record to record as far as the keys and
/// sizes go, and adds up the data bytes.
size_t WalkRecords(const std::string& path);
