// One function per verb.
#pragma once

#include "CPlugIn.h"
#include "Checks/tFinding.h"
#include "protocol/CJSONObject.h"
#include "protocol/Messages.h"

#include <string>
#include <vector>

/// The plug-in's attributes of a document, or why there are none.
/// @param document  open for reading; not owned; -1 is out of form and fails
tAnswer AnswerImport(const CPlugIn& plugIn, const std::string& contentType, int document);

/// The plug-in's attributes of a document as AnswerImport gives them, and by the worker's own core the names of its
/// track libraries and articles, in order of first appearance (the attributes name one article of each library only),
/// and its figures.
tAnswer AnswerIndex(const CPlugIn& plugIn, const std::string& contentType, int document);

/// What the plug-in's property list declares.
tAnswer AnswerSchema(const CPlugIn& plugIn);

/// Why the core does not load a layout. @param result  what CLayout::Load answered, not 0;
/// @param elements  loaded before
tAnswer MakeLoadFailure(int result, size_t elements, int document);

/// A document that was open has become unreadable.
tAnswer MakeUnreadable();

/// What is wrong with a layout, a track library or a stock file, as a report; `path` names the same document.
tAnswer AnswerCheck(const std::string& path, int document);
/// The parts of a layout by library and number.
tAnswer AnswerParts(const std::string& path, int document);
/// The articles of a track library. @param fileName  its file's own name, which says what layouts call it
tAnswer AnswerLibrary(const std::string& path, const std::string& fileName);
/// The entries of a stock file.
tAnswer AnswerStock(const std::string& path);
/// What of a list of parts a stock lacks, and what is left of the stock without them.
/// @param document  JSON: both lists, each an array of arrays of library, number and count
tAnswer AnswerBalance(int document);
/// What is wrong with a stock file, as AnswerCheck says it, and its entries.
tAnswer CheckStock(const std::string& path);

/// An answer that is a report.
tAnswer MakeReport(eVerb verb, CJSONObject& report);
/// The report of a check. @param report  what it has begun with
tAnswer MakeFindingsReport(CJSONObject& report, const char* kind, const std::vector<tFinding>& findings,
                           const CJSONObject::tValue& reader);
/// Reads a whole document. @return false when it cannot be read
bool ReadWhole(int document, std::vector<unsigned char>& bytes);

/// What the user's preferences call the stock file, in UTF-8: a path, or a name in the application's folder.
/// Not in a jail.
std::string GetStockFileName();

/// The picture of a layout.
tAnswer AnswerRender(const std::string& path, int document, const tPictureWish& wish);
/// Loads what drawing needs, fonts included, before the first document is seen.
void PrepareDrawing();
/// What the worker finds of plug-in, fonts and what can be tried; not in a jail. With the name of an act (Jail::tAct):
/// whether the worker can do it, and the system's words when it cannot.
tAnswer AnswerExamine(const CPlugIn& plugIn, const std::string& act);

/// The path under which a descriptor is opened once more.
std::string PathOfDescriptor(int document);
