#include "Platform/Alert.h"

#include "Linux/CoreFoundation/TextEncoding.h"

#include <CoreFoundation/CoreFoundation.h>

#include <cstdio>
#include <string>

static Platform::tAlertHandler sHandler = nullptr;
static void* sContext = nullptr;

void Platform::SetAlertHandler(tAlertHandler handler, void* context)
{
    sHandler = handler;
    sContext = context;
}

// One line: each run of blanks and control characters, which a document may have brought in, becomes one blank.
static std::string Fold(const std::string& text)
{
    std::string result;
    for (size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool c1 = byte == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0;
        if (c1) {
            ++i; // U+0080 to U+009F, two bytes
        }
        if (byte > ' ' && byte != 0x7F && !c1) {
            result.push_back(text[i]);
        } else if (!result.empty() && result.back() != ' ') {
            result.push_back(' ');
        }
    }
    if (!result.empty() && result.back() == ' ') {
        result.pop_back();
    }
    return result;
}

SInt32 CFUserNotificationDisplayAlert(CFTimeInterval, CFOptionFlags flags, CFURLRef, CFURLRef, CFURLRef,
                                      CFStringRef title, CFStringRef text, CFStringRef, CFStringRef, CFStringRef,
                                      CFOptionFlags* response)
{
    const std::string titleText = Platform::Utf8(title);
    const std::string messageText = Platform::Utf8(text);
    if (sHandler != nullptr) {
        sHandler(sContext, flags, titleText.c_str(), messageText.c_str());
    } else {
        fprintf(stderr, "%s: %s\n", Fold(titleText).c_str(), Fold(messageText).c_str());
    }
    if (response != nullptr) {
        *response = kCFUserNotificationDefaultResponse;
    }
    return 0;
}
