// What a worker finds of its surroundings, for people who want to know why something does not work.
#include "Platform/Fonts.h"
#include "Platform/Jail.h"
#include "Requests.h"
#include "Texts.h"
#include "protocol/Frames.h"

#include <cstring>
#include <fcntl.h>
#include <nlohmann/json.hpp>

using nlohmann::json;

static constexpr int kDescriptorsTried = 4096;

/// The factories for importers that the plug-in declares: UUID and name of the function.
static json DescribeFactories(const CPlugIn& plugIn)
{
    json factories = json::object();
    const CFTypeRef entry = CFDictionaryGetValue(plugIn.GetInfo(), CFSTR("CFPlugInFactories"));
    if (entry == nullptr || CFGetTypeID(entry) != CFDictionaryGetTypeID()) {
        return factories;
    }
    const CFDictionaryRef declared = static_cast<CFDictionaryRef>(entry);
    const size_t count = static_cast<size_t>(CFDictionaryGetCount(declared));
    std::vector<const void*> keys(count);
    std::vector<const void*> values(count);
    CFDictionaryGetKeysAndValues(declared, keys.data(), values.data());
    for (size_t i = 0; i < count; ++i) {
        std::vector<std::string> name;
        bool isList = false;
        ToTexts(values[i], name, isList);
        factories[ToUTF8(static_cast<CFStringRef>(keys[i]))] = name.empty() ? "" : name.front();
    }
    return factories;
}

static json DescribeActs()
{
    json acts = json::array();
    for (const Jail::tAct& act : Jail::GetActs()) {
        json layers = json::array();
        for (unsigned layer = 1; layer <= Jail::kAllLayers; layer <<= 1) {
            if ((act.refusedBy & layer) != 0) {
                layers.push_back(Jail::GetName(static_cast<Jail::eLayer>(layer)));
            }
        }
        acts.push_back({{"name", act.name}, {"description", act.description}, {"layers", layers}});
    }
    return acts;
}

/// Descriptors that this process should not have, beyond the streams and the socket.
static int CountForeignDescriptors()
{
    int count = 0;
    for (int descriptor = kWorkerSocket + 1; descriptor < kDescriptorsTried; ++descriptor) {
        count += fcntl(descriptor, F_GETFD) >= 0 ? 1 : 0;
    }
    return count;
}

tAnswer AnswerExamine(const CPlugIn& plugIn, const std::string& act)
{
    tAnswer answer;
    answer.ok = true;
    answer.verb = eVerb::kExamine;
    json report;
    if (act.empty()) {
        report["foreign_descriptors"] = CountForeignDescriptors();
        report["factories"] = DescribeFactories(plugIn);
        report["font_names"] = Platform::ListFonts();
        Platform::SetTextMeasuring(true);
        double width = 0;
        double height = 0;
        report["measures_texts"] = Platform::MeasureText({}, 12, "x", width, height);
        Platform::SetTextMeasuring(false);
        report["acts"] = DescribeActs();
    } else {
        int error = 0;
        report["succeeded"] = Jail::TryAct(act, error);
        report["error"] = error == 0 ? "" : strerror(error);
    }
    answer.report = report.dump(-1, ' ', false, json::error_handler_t::replace);
    return answer;
}
