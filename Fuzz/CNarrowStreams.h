// Streams with a narrow window, or none.
#pragma once

#include <cstddef>

/// While it lives, streams that are opened have a buffer that ends within records, or none, so that no record lies in
/// one and each is read by itself. One at a time.
class CNarrowStreams {
public:
    /// @param window  size of the buffer, bytes; 0: none
    explicit CNarrowStreams(size_t window);
    ~CNarrowStreams();
    CNarrowStreams(const CNarrowStreams&) = delete;
    CNarrowStreams& operator=(const CNarrowStreams&) = delete;

    /// How many were opened so; none would mean that the wide window is still there.
    size_t GetCount() const;
};
