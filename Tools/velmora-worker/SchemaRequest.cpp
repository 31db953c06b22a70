#include "Requests.h"
#include "Texts.h"

/// The entry of a property list's dictionary, if it is of the type wanted; else null.
static CFTypeRef GetEntry(CFDictionaryRef dictionary, CFStringRef key, CFTypeID type)
{
    const CFTypeRef value = dictionary != nullptr ? CFDictionaryGetValue(dictionary, key) : nullptr;
    return value != nullptr && CFGetTypeID(value) == type ? value : nullptr;
}

static CFDictionaryRef GetDictionary(CFDictionaryRef dictionary, CFStringRef key)
{
    return static_cast<CFDictionaryRef>(GetEntry(dictionary, key, CFDictionaryGetTypeID()));
}

static std::string GetText(CFDictionaryRef dictionary, CFStringRef key)
{
    const CFTypeRef value = GetEntry(dictionary, key, CFStringGetTypeID());
    return value != nullptr ? ToUTF8(static_cast<CFStringRef>(value)) : std::string();
}

/// The texts of an entry that is a string or an array of strings.
static std::vector<std::string> GetTexts(CFDictionaryRef dictionary, CFStringRef key)
{
    std::vector<std::string> texts;
    bool isList = false;
    ToTexts(dictionary != nullptr ? CFDictionaryGetValue(dictionary, key) : nullptr, texts, isList);
    return texts;
}

/// The dictionaries in an entry that is an array.
static std::vector<CFDictionaryRef> GetDictionaries(CFDictionaryRef dictionary, CFStringRef key)
{
    std::vector<CFDictionaryRef> result;
    const CFTypeRef value = GetEntry(dictionary, key, CFArrayGetTypeID());
    const CFArrayRef array = static_cast<CFArrayRef>(value);
    for (CFIndex i = 0; array != nullptr && i < CFArrayGetCount(array); ++i) {
        const CFTypeRef entry = CFArrayGetValueAtIndex(array, i);
        if (entry != nullptr && CFGetTypeID(entry) == CFDictionaryGetTypeID()) {
            result.push_back(static_cast<CFDictionaryRef>(entry));
        }
    }
    return result;
}

/// What the bundle itself says about a type that it takes; only the identifier,
/// where another program declares the type.
static tSchemaType DescribeType(CFDictionaryRef info, const std::string& identifier)
{
    tSchemaType type;
    type.identifier = identifier;
    for (const CFStringRef key : {CFSTR("UTExportedTypeDeclarations"), CFSTR("UTImportedTypeDeclarations")}) {
        for (const CFDictionaryRef declaration : GetDictionaries(info, key)) {
            if (GetText(declaration, CFSTR("UTTypeIdentifier")) != identifier) {
                continue;
            }
            const CFDictionaryRef tags = GetDictionary(declaration, CFSTR("UTTypeTagSpecification"));
            type.description = GetText(declaration, CFSTR("UTTypeDescription"));
            type.extensions = GetTexts(tags, CFSTR("public.filename-extension"));
            type.mimeTypes = GetTexts(tags, CFSTR("public.mime-type"));
            type.magic = GetText(GetDictionary(declaration, CFSTR("VLTypeMagic")), CFSTR("VLMagicBytes"));
            return type;
        }
    }
    return type;
}

tAnswer AnswerSchema(const CPlugIn& plugIn)
{
    const CFDictionaryRef info = plugIn.GetInfo();
    tAnswer answer;
    answer.ok = true;
    answer.verb = eVerb::kSchema;
    for (const CFDictionaryRef attribute : GetDictionaries(info, CFSTR("VLImportedAttributes"))) {
        answer.schema.attributes.push_back({GetText(attribute, CFSTR("VLAttributeName")),
                                            GetText(attribute, CFSTR("VLAttributeType")),
                                            GetText(attribute, CFSTR("VLAttributeDescription"))});
    }
    for (const CFDictionaryRef documents : GetDictionaries(info, CFSTR("CFBundleDocumentTypes"))) {
        for (const std::string& identifier : GetTexts(documents, CFSTR("LSItemContentTypes"))) {
            answer.schema.types.push_back(DescribeType(info, identifier));
        }
    }
    return answer;
}
