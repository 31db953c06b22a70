// What is printed of the answers of a worker, who is not trusted. Texts escape control characters, JSON is one object a
// line. Each is defined with its command.
#pragma once

#include "commands/CReport.h"
#include "output/CTable.h"
#include "protocol/Messages.h"

#include <string>

namespace Reports {
/// What makes a document a damaged one: the first finding of damage, and how many more there are. Empty for none.
std::string SummarizeDamage(const CReport& report);
std::string CheckAsText(const std::string& path, const CReport& report);
std::string CheckInJSON(const std::string& path, const CReport& report);

CTable ArticleTable(const std::string& library, const CReport& report);
/// What stands above the table, with any characters.
std::string LibraryHeading(const std::string& path, const CReport& report);
std::string LibraryInJSON(const std::string& path, const CReport& report);

std::string SchemaAsText(const tSchema& schema);
std::string SchemaInJSON(const tSchema& schema);
} // namespace Reports
