// One function per verb.
#pragma once

#include "CPlugIn.h"
#include "protocol/Messages.h"

/// The plug-in's attributes of a document, or why there are none.
/// @param document  open for reading; not owned; -1 is out of form and fails
tAnswer AnswerImport(const CPlugIn& plugIn, const std::string& contentType, int document);

/// What the plug-in's property list declares.
tAnswer AnswerSchema(const CPlugIn& plugIn);
