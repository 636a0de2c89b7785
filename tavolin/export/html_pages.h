// The pages of a site. Each is written whole into a sink, in UTF-8. Paths in them are relative, so
// that a site can be moved, and have `\` between the names, which a browser reads as `/`.
#pragma once

#include <string>
#include <string_view>

#include "tavolin/base/text_sink.h"
#include "tavolin/model/table_set.h"

namespace tavolin {

// The site's own files.
void WriteStyleSheet(TextSink& sink);
void WriteTitlePage(TextSink& sink);
// A page of frames: the title, and the contents and the records of one folder. The paths lead from
// the page's folder to the title's and to that one.
void WriteFramesetPage(std::string_view to_title, std::string_view to_folder, TextSink& sink);
// What the frames show of a site without tables.
void WriteEmptyPage(TextSink& sink);

// The links to the pages of all tables.
std::string ContentsList(const CVLTableSet& tables);

// The files of one table.
void WriteContentsPage(const CVLTable& table, std::string_view contents_list, TextSink& sink);
void WriteRecordsPage(const CVLTable& table, TextSink& sink);
void WriteInlineFramePage(TextSink& sink);

}  // namespace tavolin
