// Changes messages and frames field by field.
#include "Properties.h"
#include "protocol/Frames.h"
#include "protocol/Messages.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>

using Properties::eMessageForm;

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t maxSize);

namespace {
/// A text, longer or shorter or with other characters.
void Change(std::string& text)
{
    const size_t size = text.size();
    text.resize(size + 16);
    text.resize(LLVMFuzzerMutate(reinterpret_cast<uint8_t*>(text.data()), size, text.size()));
}

void Change(std::vector<std::string>& texts, std::minstd_rand& random)
{
    if (texts.empty() || random() % 4 == 0) {
        texts.emplace_back("new");
    } else if (random() % 4 == 0) {
        texts.pop_back();
    } else {
        Change(texts[random() % texts.size()]);
    }
}

void Change(tHello& hello, std::minstd_rand& random)
{
    std::string* const texts[] = {&hello.message, &hello.sandboxNote, &hello.stockFile};
    Change(*texts[random() % 3]);
    hello.sandbox.resize(random() % 4, {"seccomp", true, "all"});
}

void Change(tRequest& request, std::minstd_rand& random)
{
    request.verb = static_cast<eVerb>(1 + random() % 10);
    std::string* const texts[] = {&request.contentType, &request.picture.style, &request.fileName};
    Change(*texts[random() % 3]);
    Change(request.picture.layers, random);
    request.picture.width = static_cast<uint32_t>(random());
}

void Change(tAnswer& answer, std::minstd_rand& random)
{
    if (random() % 4 == 0) {
        answer.ok = !answer.ok;
        answer.verb = static_cast<eVerb>(1 + random() % 10);
    }
    answer.failure.kind = static_cast<eFailure>(random() % 7);
    answer.failure.loaderCode = answer.failure.kind == eFailure::kLoader ? 1 + static_cast<int32_t>(random() % 5) : 0;
    Change(answer.failure.message);
    Change(random() % 2 == 0 ? answer.report : answer.picture);
    Change(random() % 2 == 0 ? answer.libraries : answer.articles, random);
    answer.figures = {static_cast<uint32_t>(random()), 3, static_cast<uint32_t>(random()), {}};
    answer.figures.gauges.resize(random() % 3, {"H0", 1650});
    if (answer.attributes.size() < 2 || random() % 8 == 0) {
        answer.attributes.push_back({"kMDItemLayerNames", true, {}});
    }
    tAttribute& attribute = answer.attributes[random() % answer.attributes.size()];
    Change(attribute.texts, random);
    attribute.isList = attribute.texts.size() != 1;
    answer.schema.attributes.resize(random() % 3, {"name", "string", "what"});
    answer.schema.types.resize(random() % 3, {"com.example", "x", {"a"}, {"b"}, ""});
    for (tSchemaType& type : answer.schema.types) {
        Change(type.extensions, random);
    }
}

/// The message with something else in a field.
template <typename tMessage>
std::string Changed(std::string_view bytes, std::minstd_rand& random)
{
    tMessage message;
    if (!Decode(bytes, message)) {
        message = tMessage();
    }
    Change(message, random);
    return Encode(message);
}

std::string ChangedStream(std::string_view stream, std::minstd_rand& random)
{
    std::vector<std::string> payloads;
    while (stream.size() >= kFrameHeaderSize) {
        uint32_t size = 0;
        memcpy(&size, stream.data() + 12, sizeof size);
        const size_t taken = std::min<size_t>(size, stream.size() - kFrameHeaderSize);
        payloads.emplace_back(stream.substr(kFrameHeaderSize, taken));
        stream.remove_prefix(kFrameHeaderSize + taken);
    }
    Change(payloads, random);
    std::string changed;
    for (const std::string& payload : payloads) {
        unsigned char header[kFrameHeaderSize];
        const size_t claimed = payload.size() + (random() % 16 == 0 ? random() % 3 * 30000 : 0);
        const uint32_t kind = 1 + static_cast<uint32_t>(random() % (random() % 8 == 0 ? 6 : 5));
        EncodeHeader(static_cast<eFrameKind>(kind), static_cast<uint32_t>(random()), claimed, header);
        changed.append(reinterpret_cast<char*>(header), sizeof header);
        changed += payload;
        if (random() % 16 == 0) { // fills more than the reader has room for at once
            changed += std::string(claimed > payload.size() ? claimed - payload.size() : 0, 'x');
        }
    }
    return changed;
}
} // namespace

/// Half of the time whole fields change, so that lengths and counts stay true.
extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned seed)
{
    std::minstd_rand random(seed);
    if (size > 0 && random() % 2 == 0) {
        return LLVMFuzzerMutate(data, size, maxSize);
    }
    const eMessageForm form = static_cast<eMessageForm>((size > 0 && random() % 8 != 0 ? data[0] : random()) % 4);
    const std::string_view bytes(reinterpret_cast<const char*>(data + 1), size > 0 ? size - 1 : 0);
    const std::string_view stream = bytes.substr(std::min<size_t>(bytes.size(), 1));
    const std::string changed = form == eMessageForm::kGreeting  ? Changed<tHello>(bytes, random)
                                : form == eMessageForm::kRequest ? Changed<tRequest>(bytes, random)
                                : form == eMessageForm::kAnswer
                                    ? Changed<tAnswer>(bytes, random)
                                    : static_cast<char>(random()) + ChangedStream(stream, random);
    data[0] = static_cast<uint8_t>(form);
    const size_t taken = std::min(changed.size(), maxSize - 1);
    memcpy(data + 1, changed.data(), taken);
    return taken + 1;
}
