// Where results go: standard output, in whole records.
#pragma once

#include <string>
#include <string_view>

/// Collects a record's text and writes it as a whole. A reader that has gone is no error of ours.
class COutput {
public:
    /// @param descriptor  not owned
    explicit COutput(int descriptor) : mDescriptor(descriptor) {}

    void Write(std::string_view text) { mText.append(text); }

    /// Writes what was collected. @return false when not everything could be written, now or earlier
    bool Flush();

    /// Whether the other end of the pipe was closed: nothing more need be produced.
    bool IsReaderGone() const { return mReaderGone; }

    /// Whether something could not be written.
    bool HasFailed() const { return mFailed; }

    /// Prints a line to standard error, after the program's name.
    static void PrintMessage(std::string_view message);

    /// Prints a text to standard error as it is.
    static void PrintText(std::string_view text);

private:
    int mDescriptor;
    std::string mText;
    bool mReaderGone = false;
    bool mFailed = false;
};
