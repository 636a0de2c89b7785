// The records of a set as a piece of a web page, as it is told at CVLRecordSet::MakeItHTML.
#pragma once

#include <string_view>

#include "tavolin/base/text_sink.h"
#include "tavolin/model/table.h"

namespace tavolin {

// Raises the refusal of CVLTable::MakeItHTML to a user without a right to read.
void AskToWriteHtml(const CVLTable& table);

// CVLTable::MakeItHTML into a sink.
void WriteHtml(const CVLTable& table, std::string_view dir_path, std::string_view file_name,
               TextSink& sink);

}  // namespace tavolin
