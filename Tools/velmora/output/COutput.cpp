#include "output/COutput.h"

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <unistd.h>

/// What is written at once, if it comes quickly enough; a pipe takes as much.
static constexpr size_t kBlockSize = size_t{64} << 10;
/// How long a record waits for others.
static constexpr std::chrono::milliseconds kLongestWait(10);

static bool sStatusShown = false;

/// @return 0, or the error number
static int WriteAll(int descriptor, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t written = write(descriptor, text.data(), text.size());
        if (written >= 0) {
            text.remove_prefix(static_cast<size_t>(written));
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) { // someone else made the pipe non-blocking
            pollfd wait = {descriptor, POLLOUT, 0};
            poll(&wait, 1, -1);
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

void COutput::ShowStatus(std::string_view line)
{
    if (!line.empty() || sStatusShown) {
        WriteAll(STDERR_FILENO, "\r" + std::string(line) + "\x1B[K"); // erases what is left of the line before
        sStatusShown = !line.empty();
    }
}

void COutput::Write(std::string_view text)
{
    if (mText.empty()) {
        mOldest = std::chrono::steady_clock::now();
    }
    mText.append(text);
}

int COutput::FlushIfDue()
{
    if (mText.empty()) {
        return -1;
    }
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(mOldest + kLongestWait - std::chrono::steady_clock::now());
    if (left.count() > 0 && mText.size() < kBlockSize) {
        return static_cast<int>(left.count());
    }
    Flush();
    return -1;
}

bool COutput::Flush()
{
    if (!mFailed && !mText.empty()) {
        if (sStatusShown && isatty(mDescriptor) != 0) {
            ShowStatus({});
        }
        const int error = WriteAll(mDescriptor, mText);
        mFailed = error != 0;
        mReaderGone = error == EPIPE;
        if (mFailed && !mReaderGone) {
            PrintMessage(std::string("the output cannot be written: ") + strerror(error));
        }
    }
    mText.clear();
    return !mFailed;
}

void COutput::PrintMessage(std::string_view message)
{
    PrintText("velmora: " + std::string(message) + "\n");
}

void COutput::PrintText(std::string_view text)
{
    ShowStatus({});
    WriteAll(STDERR_FILENO, text);
}
