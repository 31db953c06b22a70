// C streams over bytes.
#pragma once

#include <cstdio>
#include <memory>
#include <string>

struct tCloseStream {
    void operator()(FILE* file) const { fclose(file); }
};
using tStream = std::unique_ptr<FILE, tCloseStream>;

/// A stream over the bytes, at its beginning.
inline tStream StreamOf(const std::string& bytes)
{
    tStream file(tmpfile());
    fwrite(bytes.data(), 1, bytes.size(), file.get());
    rewind(file.get());
    return file;
}

/// The bytes that `write` puts into a stream.
template <typename tWrite>
std::string Written(tWrite write)
{
    const tStream file(tmpfile());
    write(file.get());
    std::string bytes(static_cast<size_t>(ftell(file.get())), '\0');
    rewind(file.get());
    bytes.resize(fread(bytes.data(), 1, bytes.size(), file.get()));
    return bytes;
}
