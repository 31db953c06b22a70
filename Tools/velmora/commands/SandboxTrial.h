// Proves that the sandbox of the workers holds, by trying in a worker what it should refuse.
#pragma once

#include "commands/CReport.h"
#include "pool/CWorkerPool.h"

#include <nlohmann/json.hpp>

#include <string>

/// A worker to put questions to, replaced when an answer costs it its life.
class CPatient {
public:
    /// @param sandbox  how it is confined, as in tWorkerSettings
    CPatient(tWorkerSettings settings, const std::string& sandbox, double timeoutSeconds);

    tAnswer Ask(eVerb verb, const std::string& argument = {}, CDescriptor document = CDescriptor());

    /// Starts it, if need be. @param failure  set when it cannot be had
    bool Start(tFailure& failure);
    const tHello& GetGreeting() const { return mPool.GetGreeting(); }

private:
    CWorkerPool mPool;
    uint64_t mTicket = 0;
};

namespace SandboxTrial {
/// Tries every act outside of a sandbox, in a worker confined as usual, and in workers with one layer alone.
/// @param diagnosis  of the worker outside: it lists the acts
/// @param outside    the worker without a sandbox
/// @param greeting   of a worker confined as usual: only layers that are on there are tried alone
/// @param problems   what should have been refused and was not is added, a line each
/// @return a list of objects: name, description, and what became of it outside, confined and by layer
nlohmann::ordered_json Try(const CReport& diagnosis, const tWorkerSettings& settings, double timeoutSeconds,
                           CPatient& outside, const tHello& greeting, std::vector<std::string>& problems);
} // namespace SandboxTrial
