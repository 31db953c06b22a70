// What a worker does once before it gives up the right to open files and to start threads.
#pragma once

#include "CPlugIn.h"
#include "Platform/Jail.h"
#include "protocol/BuiltInDocument.h"

/// Lets libraries, core and plug-in open and remember what they will need.
class CWarmUp {
public:
    explicit CWarmUp(const CPlugIn& plugIn) : mPlugIn(plugIn) {}

    /// To be called before the jail closes.
    void Run(Jail::eProfile profile);

    /// To be called after it: imports the built-in document once more. What the jail does not let pass ends the worker
    /// here, before the host has heard of it, and not at somebody's document.
    void Rehearse() const;

private:
    const CPlugIn& mPlugIn;
    CDescriptor mDocument;
};
