// Streams without a window.
#pragma once

#include <cstddef>

/// While it lives, streams that are opened have no buffer, so that no record lies in one and each is read by itself.
/// One at a time.
class CNarrowStreams {
public:
    CNarrowStreams();
    ~CNarrowStreams();
    CNarrowStreams(const CNarrowStreams&) = delete;
    CNarrowStreams& operator=(const CNarrowStreams&) = delete;

    /// How many were opened so; none would mean that the window is still there.
    size_t GetCount() const;
};
