// What a check has to say about one place of a document.
#pragma once

#include <cstddef>
#include <string>

/// One finding. Texts are plain English without line breaks; they quote nothing of the document but numbers.
struct tFinding {
    enum class eKind {
        kDamage, ///< the document is not as it was written
        kOddity  ///< well-formed, but readers lose or change something
    };

    eKind kind = eKind::kDamage;
    size_t offset = 0; ///< in the file, bytes
    int key = 0;       ///< of the record that was expected or found there; 0 for a header
    int element = 0;   ///< number of the element, from 1; 0 outside elements
    int component = 0; ///< number of the component in it, from 1; 0 outside components
    std::string text;  ///< what was expected, and what was found
};
