#include "Sandbox.h"

#include "Bounds.h"
#include "Platform/Fonts.h"
#include "Sanitizer.h"

#include <algorithm>

/// The layers without which a sandbox is none. The kernel may have been built without either.
static constexpr unsigned kEssential = Jail::kFileRules | Jail::kCallFilter;

static unsigned ParseLayers(std::string_view names)
{
    unsigned layers = 0;
    while (!names.empty()) {
        const std::string_view name = names.substr(0, names.find('+'));
        unsigned found = 0;
        for (unsigned layer = 1; layer <= Jail::kAllLayers; layer <<= 1) {
            found |= name == Jail::GetName(static_cast<Jail::eLayer>(layer)) ? layer : 0;
        }
        if (found == 0) {
            return 0;
        }
        layers |= found;
        names.remove_prefix(std::min(names.size(), name.size() + 1));
    }
    return layers;
}

std::optional<Sandbox::tMode> Sandbox::ParseMode(std::string_view text)
{
    tMode mode;
    mode.isRequired = text == "require";
    if (text == "off") {
        mode.layers = Jail::kMemory;
        mode.note = "switched off";
    } else if (!mode.isRequired && text != "auto") {
        mode.layers = ParseLayers(text);
    }
    if (mode.layers == 0) {
        return std::nullopt;
    }
#if defined(VELMORA_ADDRESS_SANITIZER)
    mode.layers = 0;
    mode.note = "the worker is built with AddressSanitizer, which works in none";
#elif defined(VELMORA_COVERAGE)
    mode.layers = 0;
    mode.note = "the worker counts what it runs, and writes that into files";
#elif !defined(__linux__)
    mode.layers = 0;
    mode.note = "this system has none that a program can put on";
#endif
    return mode;
}

void Sandbox::Close(const tMode& mode, Jail::eProfile profile, size_t memoryMegabytes, tHello& hello)
{
    Jail::tOrder order;
    order.profile = profile;
    order.layers = mode.layers;
    order.user = mode.user;
    order.group = mode.group;
    order.memoryMegabytes = memoryMegabytes;
    if (profile == Jail::eProfile::kDraw) {
        order.readableFolders = Platform::FontFolders();
    }
    if ((order.layers & kEssential) != 0) {
        Jail::WaitForOneThread(Bounds::kThreadMilliseconds); // or else landlock says why it is not on
    }
    unsigned closed = 0;
    std::string missing = mode.note;
    for (const Jail::tState& state : Jail::Close(order)) {
        hello.sandbox.push_back({Jail::GetName(state.layer), state.isOn, state.detail});
        closed |= state.isOn ? static_cast<unsigned>(state.layer) : 0;
        if (!state.isOn && (state.layer & kEssential) != 0) {
            missing += (missing.empty() ? "" : "; ") + hello.sandbox.back().name + ": " + state.detail;
        }
    }
    hello.sandboxNote = mode.note;
    if (mode.user != 0 && (closed & Jail::kPrivileges) == 0) {
        hello.ready = false;
        hello.reason = eFailure::kSandbox;
        hello.message = "the worker cannot become the user that --sandbox-user names";
    }
    if (mode.isRequired && (closed & kEssential) != kEssential) {
        hello.ready = false;
        hello.reason = eFailure::kSandbox;
        hello.message = "the sandbox that is required cannot be had: " + missing;
    }
}
