// Helpers for C strings and their way into Core Foundation strings.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#if defined(__APPLE__)
#include <hfs/hfs_unistr.h> // CoreServices has an FSRef of its own there
#else
#include <CoreServices/CoreServices.h>
#endif

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

/// Stateless helpers but for one conversion buffer. Texts are single-byte Mac OS Roman unless a function says
/// otherwise; case, letters and white space are those of ASCII whatever the locale, so other characters pass unchanged.
///
/// A `size` counts the bytes of the destination with the terminating zero. Results are cut to it; without it the caller
/// vouches for the room.
class KVUStr {
public:
    static constexpr size_t kUnbounded = SIZE_MAX;

    /// Copies at most n - 1 characters, fills the rest of the n bytes with zeros; the result is always terminated.
    static void strncpy(char* dst, const char* src, unsigned long n);

    /// Two hexadecimal digits for each character, below 16 a blank and one digit. Characters above 127 give eight
    /// digits ("FFFFFFE4"): they count as negative numbers.
    static void HexChar_Encode(char* dst, const char* src, size_t size = kUnbounded);

    /// One character for every two of `src`; an odd last one and pairs that are no hexadecimal number are left out.
    /// `dst` may be `src`.
    static void HexChar_Decode(const char* src, char* dst, size_t size = kUnbounded);

    static void ReplaceChars(char* text, char from, char to);

    /// Replaces `find` by `replace`, left to right. Ends early where a replacement makes a new match, alone or with
    /// what stands around it.
    /// @param ignoreCase  whether ASCII letters match in either case
    /// @return the number of replacements; 0 for an empty `find`
    static int ReplaceStrings(char* text, const char* find, const char* replace, bool ignoreCase,
                              size_t size = kUnbounded);

    static int CountCharOccurance(const char* text, char character);

    static void strupr(char* text);
    static void strlwr(char* text);

    /// Reads up to a line feed, a carriage return or the end of the file; the terminator is consumed and not stored. CR
    /// LF thus gives an empty line after each line, and the end of the file one more: ask feof(). A line of `size`
    /// characters or more is cut to size - 1 and reported as a minor error; one character is lost, the rest stays in
    /// the stream.
    /// @return the buffer; null without a stream or room
    static char* fgetline(char* buffer, int size, FILE* stream);

    /// The text in an encoding of Core Foundation.
    /// @return null without a string, and when it cannot be converted or needs more than 1023 bytes. Not owned;
    ///         valid until the next call, since it may lie in the one static buffer of all callers
    static const char* GetCStrFromCFStr(CFStringRef text, unsigned encoding);

    /// The text in an encoding of Core Foundation, of any length. @return false when it cannot be converted or there is
    /// no string; `out` is then untouched
    static bool GetText(CFStringRef text, unsigned encoding, std::string& out);

    /// Whether a Core Foundation string can be made of a text in that encoding.
    static bool IsConvertible(const std::string& text, unsigned encoding);

    /// UTF-8 as UTF-16 of host order without byte order mark. Malformed UTF-8 is fatal.
    /// @param out     destination of `size` bytes, terminated by one zero byte
    /// @param length  set to the number of UTF-16 units; 0, with an empty `out`, where they do not fit
    static void CStr2UniChar(const char* text, char* out, int size, int& length);

    /// @return false where the text does not fit (254 characters at most); `out` then has length 0
    static bool CStr2HFSUniStr(const char* text, HFSUniStr255* out);

    /// Compares UTF-16 units; each text is taken as UTF-8 or, where it is not, as Mac OS Roman.
    /// @return -1, 0, 1; also 0 when either text cannot be converted
    static int CompareStrings(const char* a, const char* b);

    /// Capitals at the beginning of words, which follow white space, "-", ",", "." and "'"; all else in lower case.
    static void CorrectCase(std::string& text);

    static void ClearLeadingWhitespace(std::string& text);

    static bool ContainsLetters(const std::string& text);
};
