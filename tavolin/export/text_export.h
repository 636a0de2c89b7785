// The text of record sets, tables and table sets, as it is told at their MakeItText members.
#pragma once

#include "tavolin/base/text_sink.h"
#include "tavolin/model/table_set.h"
#include "tavolin/persist/text_file.h"

namespace tavolin {

// The encoding in which nothing of the set's text is lost. Asks for the right to read every record
// set, as WriteText does.
TextEncoding EncodingForText(const CVLTableSet& tables);

// CVLTableSet::MakeItText into a sink.
void WriteText(const CVLTableSet& tables, TextSink& sink);

}  // namespace tavolin
