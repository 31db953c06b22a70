// Lines as they arrive, without waiting for them.
#pragma once

#include "protocol/CDescriptor.h"

#include <string>

/// Takes a stream apart at line breaks (or zeros). Reads only what is there, so that whoever waits for lines can wait
/// for other things as well. A line that is longer than the limit is cut there, and the rest of it passed over.
class CLineReader {
public:
    enum class eResult {
        kLine,   ///< also a last one without its end
        kCut,    ///< the beginning of a line that is too long
        kNotYet, ///< wait until GetDescriptor() can be read
        kEnd     ///< the stream has ended, or GetError() says why it cannot be read
    };

    /// @param stream     closed with the reader
    /// @param separator  what ends a line
    CLineReader(CDescriptor stream, char separator) : mStream(std::move(stream)), mSeparator(separator) {}

    /// @param line  set without its end for kLine and kCut
    eResult Next(std::string& line);

    int GetDescriptor() const { return mStream.Get(); }

    /// The system's error that has ended the stream; 0 for its own end.
    int GetError() const { return mError; }

private:
    bool Fill();

    CDescriptor mStream;
    char mSeparator;
    std::string mBuffer;
    size_t mStart = 0;    ///< of the line that is being looked for
    size_t mSearched = 0; ///< up to where there is no separator
    bool mEnded = false;
    int mError = 0;
    bool mSkipping = false; ///< in the rest of a line that was cut
};
