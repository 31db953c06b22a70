#include "RomanText.h"

#include "Platform/MacRoman.h"

#include <cstdio>
#include <cstdlib>

std::string RomanText(const char* utf8)
{
    std::string text;
    if (!Platform::Utf8ToMacRoman(utf8, text)) {
        fprintf(stderr, "velmora-samples: no Mac OS Roman text: %s\n", utf8);
        std::exit(EXIT_FAILURE);
    }
    return text;
}
