// Where results go: standard output, in whole records. And what is said besides, on standard error.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

/// Collects text and writes it in blocks, and at latest a moment after it has come. A reader that has gone is no error
/// of ours.
class COutput {
public:
    /// @param descriptor  not owned
    explicit COutput(int descriptor) : mDescriptor(descriptor) {}

    void Write(std::string_view text);

    /// Writes what was collected. @return false when not everything could be written, now or earlier
    bool Flush();

    /// Writes what was collected if it is a block, or has waited long enough.
    /// @return in how many milliseconds the rest has; -1 when nothing waits
    int FlushIfDue();

    /// Whether the other end of the pipe was closed: nothing more need be produced.
    bool IsReaderGone() const { return mReaderGone; }

    /// Whether something could not be written.
    bool HasFailed() const { return mFailed; }

    /// Prints a line to standard error, after the program's name.
    static void PrintMessage(std::string_view message);

    /// Prints a text to standard error as it is.
    static void PrintText(std::string_view text);

    /// Shows a line on the terminal of standard error that gives way to everything else. Empty takes it away.
    static void ShowStatus(std::string_view line);

private:
    int mDescriptor;
    std::string mText;
    std::chrono::steady_clock::time_point mOldest; ///< when the first of mText came
    bool mReaderGone = false;
    bool mFailed = false;
};
