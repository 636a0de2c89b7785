#include "tavolin/export/html_pages.h"

#include <vector>

#include "tavolin/export/html_records.h"
#include "tavolin/export/labels.h"

namespace tavolin {
namespace {

// What the files are written in, where they may hold more than ASCII. It stands within the first
// KiB, where browsers look for it.
constexpr std::string_view kEncoding = "<meta charset='windows-1252'>\r\n";
// Keeps browsers from asking for an icon that is not there.
constexpr std::string_view kNoIcon = "<link rel='icon' href='data:,'>\r\n";
constexpr std::string_view kEnd = "</body>\r\n</html>";

// The beginning of a page in a table's folder.
constexpr std::string_view kBegin =
    "<html>\r\n"
    "<head><link href = '..\\TavolinStyleSheet.css' rel = 'stylesheet' type = 'text/css'></head>"
    "\r\n<body>";

// The fields that may tell a record from its neighbours besides the key.
std::vector<int> DescribingFields(const CVLTable& table) {
    std::vector<int> fields;
    for (const LabelledField& field : Labelled(LabelsOf(table))) {
        if (!table.PrimaryKey().Holds(field.number)) fields.push_back(field.number);
    }
    return fields;
}

// The first that is not empty; nothing when there is none.
std::string_view Description(const RecordArena& arena, RecordHandle record,
                             const std::vector<int>& fields) {
    for (const int field : fields) {
        const std::string_view value = arena.Field(record, field);
        if (!value.empty()) return value;
    }
    return {};
}

void PutNavigation(const CVLTable& table, TextSink& sink) {
    const auto records = table.CVLRecordSet()->Collection();
    const std::vector<int> describing = DescribingFields(table);
    sink.Put("Available ", records->Count(), " Records In ", table.Key(), "<br>\r\n");
    sink.Put("<select style = 'background-color: black; color: white' size = '14' ",
             "onChange = 'if(options[selectedIndex].value) "
             "parent.inlineFrameRecords.document.inlineRecords.location.href = "
             "(options[selectedIndex].value)' >",
             "\r\n");
    records->ForEach([&](RecordHandle record) {
        const std::string key = records->arena().Key(record);
        const std::string_view more = Description(records->arena(), record, describing);
        sink.Put("<option value ='records.htm#", key, "'>", key, more.empty() ? "" : " ", more,
                 "</option>", "\r\n");
        sink.Pause();
    });
    sink.Put("</select><br><br>");
}

}  // namespace

void WriteStyleSheet(TextSink& sink) {
    sink.Put(
        "body {background-color: black; color: white;}\r\n"
        "table {border: 0; cellspacing: 8; cellpadding: 8;}\r\n"
        "td {font-size: 19px;}\r\n"
        "a:link {color: white;}\r\n"
        "a:active {color: green;}\r\n"
        "a:visited {color: #999966;}\r\n"
        "a:hover {color: red; font-size: large;}");
}

void WriteTitlePage(TextSink& sink) {
    sink.Put("<html>\r\n",
             "<head><link href = 'TavolinStyleSheet.css' rel = 'stylesheet' type = 'text/css'>"
             "</head>\r\n",
             "<body><font color = '#123456'><center><H1>Tavolin Web DataBase</H1></center></font>"
             "\r\n",
             "<H5><center><i><SCRIPT>\r\n"
             "document.write('File Created Date: ' + document.fileCreatedDate + '<BR>' + "
             "'Last Update: ' + document.lastModified);\r\n"
             "</SCRIPT></i></center></H5>\r\n",
             "<center>", "Choose a table, then a record.", "</center>\r\n", kEnd);
}

void WriteFramesetPage(std::string_view to_title, std::string_view to_folder, TextSink& sink) {
    sink.Put("<html>\r\n", "<head>\r\n", kEncoding, "<title>Tavolin Web DataBase</title>\r\n",
             "<meta name='generator' content='Tavolin'>\r\n", kNoIcon, "</head>\r\n");
    sink.Put("<frameset rows ='24%,76%'  border=0>\r\n", "<frame name = title src = '", to_title,
             "\\title.htm' noresize >\r\n", "<frameset cols ='25%,75%'>\r\n",
             "<frame name = contents src = '", to_folder, "\\contents.htm'>\r\n",
             "<frame name = inlineFrameRecords src = '", to_folder,
             "\\inlineFrameRecords.htm'>\r\n", "</frameset>\r\n", "</frameset>\r\n",
             "<NoFrames>Your browser cannot display frames.</NoFrames>\r\n", "</html>");
}

void WriteEmptyPage(TextSink& sink) {
    sink.Put("<html>\r\n", "<body bgcolor = 'black'>\r\n", kEnd);
}

std::string ContentsList(const CVLTableSet& tables) {
    TextSink sink;
    for (const auto& table : tables.NewEnum()) {
        sink.Put("<a target = '_top' href = '", "..\\", table->Key(), "\\index", ".htm'>",
                 table->Key(), "</a>", "\r\n", "<br>");
    }
    return std::move(sink.text);
}

void WriteContentsPage(const CVLTable& table, std::string_view contents_list, TextSink& sink) {
    sink.Put(kBegin, kEncoding, "<p>", contents_list, "</p>\r\n", "<p>");
    PutNavigation(table, sink);
    sink.Put("</p>\r\n", kEnd);
}

void WriteRecordsPage(const CVLTable& table, TextSink& sink) {
    sink.Put(kBegin, kEncoding, "<p>", "<center  name = 'Top'><br><br><br><br>", "\r\n", "<h1>",
             table.Key(), " Records</h1></center><hr><br><br><br><br><br><br><br>", "\r\n\r\n",
             "</p>\r\n", "<p>");
    WriteHtml(table, "..", "", sink);
    sink.Put("</p>\r\n", "<br><br><br><br><br><br><br><br><br><br><br><br><br><br><br><hr>", "\r\n",
             "<p>", "Published by Tavolin", "</p>\r\n", kEnd);
}

void WriteInlineFramePage(TextSink& sink) {
    sink.Put("<html>\r\n", "<body bgcolor = 'black'>", "<center><iframe src = '", ".",
             "\\records.htm' name = 'inlineRecords'", "\r\n",
             "width = '600' height ='300' frameborder = 'no'  scrolling = 'no' align = middle>",
             "Your browser cannot display inline frames.</iframe></center>\r\n", kEnd);
}

}  // namespace tavolin
