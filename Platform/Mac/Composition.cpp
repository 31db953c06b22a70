#include "Platform/Composition.h"

#include "Platform/Released.h"

#include <cstring>

namespace Platform {
std::string ComposeUtf8(const std::string& text)
{
    const tReleased<CFStringRef> string(CFStringCreateWithCString(nullptr, text.c_str(), kCFStringEncodingUTF8));
    const tReleased<CFMutableStringRef> composed(string ? CFStringCreateMutableCopy(nullptr, 0, string.get())
                                                        : nullptr);
    if (!composed) {
        return text;
    }
    CFStringNormalize(composed.get(), kCFStringNormalizationFormC);
    std::string result(static_cast<size_t>(CFStringGetMaximumSizeForEncoding(CFStringGetLength(composed.get()),
                                                                             kCFStringEncodingUTF8)) +
                           1,
                       '\0');
    if (!CFStringGetCString(composed.get(), result.data(), static_cast<CFIndex>(result.size()),
                            kCFStringEncodingUTF8)) {
        return text;
    }
    result.resize(std::strlen(result.c_str()));
    return result;
}
} // namespace Platform
