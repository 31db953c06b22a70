// A file descriptor with an owner.
#pragma once

#include <unistd.h>
#include <utility>

/// Owns one descriptor (or none, -1) and closes it. Moved, not copied.
class CDescriptor {
public:
    CDescriptor() = default;
    explicit CDescriptor(int descriptor) : mDescriptor(descriptor) {}
    CDescriptor(CDescriptor&& other) noexcept : mDescriptor(other.Release()) {}
    CDescriptor& operator=(CDescriptor&& other) noexcept
    {
        Reset(other.Release());
        return *this;
    }
    ~CDescriptor() { Reset(); }

    int Get() const { return mDescriptor; }
    bool IsOpen() const { return mDescriptor >= 0; }

    /// Gives the descriptor away; the caller closes it.
    int Release() { return std::exchange(mDescriptor, -1); }

    /// Closes what was held and takes over another descriptor.
    void Reset(int descriptor = -1)
    {
        if (mDescriptor >= 0) {
            close(mDescriptor);
        }
        mDescriptor = descriptor;
    }

private:
    int mDescriptor = -1;
};
