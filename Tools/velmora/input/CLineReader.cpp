#include "input/CLineReader.h"

#include "Bounds.h"
#include "Interrupt.h"

#include <cerrno>
#include <poll.h>

static constexpr size_t kBlockSize = size_t{64} << 10;

/// Reads a block. @return false when there is nothing to read now, or never again
bool CLineReader::Fill()
{
    pollfd wait = {mStream.Get(), POLLIN, 0};
    if (poll(&wait, 1, 0) <= 0) {
        return false;
    }
    mBuffer.erase(0, mStart);
    mSearched -= mStart;
    mStart = 0;
    const size_t size = mBuffer.size();
    mBuffer.resize(size + kBlockSize);
    const ssize_t count = read(mStream.Get(), mBuffer.data() + size, kBlockSize);
    mBuffer.resize(size + (count > 0 ? static_cast<size_t>(count) : 0));
    if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || (errno == EINTR && !Interrupt::IsRequested()))) {
        return false;
    }
    mEnded = count <= 0;
    mError = count < 0 && errno != EINTR ? errno : 0;
    return true;
}

CLineReader::eResult CLineReader::Next(std::string& line)
{
    for (;;) {
        const size_t end = mBuffer.find(mSeparator, mSearched);
        const bool found = end != std::string::npos;
        mSearched = found ? end : mBuffer.size();
        const size_t length = mSearched - mStart;
        if (mSkipping || length > Bounds::kMostLineBytes) {
            const bool cut = !mSkipping;
            if (cut) {
                line.assign(mBuffer, mStart, Bounds::kMostLineBytes);
            }
            mSkipping = !found;
            mSearched += found ? 1 : 0;
            mStart = mSearched;
            if (cut) {
                return eResult::kCut;
            }
        } else if (found || (mEnded && length > 0)) {
            line.assign(mBuffer, mStart, length);
            mSearched += found ? 1 : 0;
            mStart = mSearched;
            return eResult::kLine;
        }
        if (!found && mEnded) {
            return eResult::kEnd;
        }
        if (!found && !Fill()) {
            return eResult::kNotYet;
        }
    }
}
