// Says what is wrong with a document, and where.
#pragma once

#include "Checks/tFinding.h"

#include <span>
#include <vector>

/// Checks whole files in memory against what their writers would have written, to the last byte. Where readers are
/// lenient and go on, a check says what they pass over.
class CDocumentChecker {
public:
    CDocumentChecker() = delete;

    enum class eDocument { kUnknown, kLayout, kLibrary };

    /// Kind of a file by its magic.
    static eDocument GetKind(std::span<const unsigned char> bytes);
    /// Checks a layout. No finding means that it is whole.
    static std::vector<tFinding> CheckLayout(std::span<const unsigned char> bytes);
    /// Checks a track library.
    static std::vector<tFinding> CheckLibrary(std::span<const unsigned char> bytes);
};
