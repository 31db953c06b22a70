#include "output/COutput.h"

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <unistd.h>

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

bool COutput::Flush()
{
    if (!mFailed) {
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
    WriteAll(STDERR_FILENO, text);
}
