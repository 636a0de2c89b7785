#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "tavolin/base/text.h"
#include "tests/support/engine_state.h"

namespace tavolin {
namespace {

const std::string kBreaks = "<br><br><br><br><br><br><br><br><br><br><br><br>";
const std::string kMeta = "<meta charset='windows-1252'>\r\n";
const std::string kHead =
    "<html>\r\n<head><link href = '..\\TavolinStyleSheet.css' rel = 'stylesheet' type = 'text/css'>"
    "</head>\r\n<body>" +
    kMeta;

// An order of a customer's, and a field of each kind.
struct HtmlExportTest : EngineTest {
    HtmlExportTest() {
        orders_ = engine_.CreateNewPrimaryTable("Orders", {"ID", "Buyer", "Note", "", "Left"}, 0);
        engine_.CreateNewPrimaryTable("Buyers", {"ID", "Name"}, 0);
        engine_.LinkTables("Orders", 1, "Buyers");
        engine_.AddRecord("Orders", 1, {"o1", "b7", "a <b> Ł€😀\xFF\xED\xA0\x80", "hidden"});
    }
    std::string Site(std::string_view name) const { return folder_ / "shop\\" + std::string(name); }
    std::string Read(std::string_view name) const { return Contents(Site(name)); }
    // Whether names that differ in letter case alone are different ones on this machine.
    bool CaseCounts() const {
        const fs::path own = folder_.path();
        return !fs::exists(own.parent_path() / ("T" + own.filename().string().substr(1)));
    }
    // A set of names, as far as they are different ones.
    std::set<std::string> Distinct(const std::vector<std::string>& names) const {
        std::set<std::string> distinct;
        for (const std::string& name : names) distinct.insert(CaseCounts() ? name : Fold(name));
        return distinct;
    }
    // The files of the site, by their paths in it.
    std::set<std::string> Files() const {
        std::vector<std::string> names;
        const fs::path root = folder_.path() / "shop";
        for (const auto& entry : fs::recursive_directory_iterator(root)) {
            if (entry.is_regular_file())
                names.push_back(fs::relative(entry, root).generic_string());
        }
        return Distinct(names);
    }
    void Publish() { engine_.MakeItHTML(FolderPath()); }

    std::shared_ptr<CVLTable> orders_;
};

std::string Record(const std::string& rows) {
    return " <p><a name ='o1'>1</a><br>\r\n<TABLE>" + rows + "</TABLE></p>" + kBreaks + "\r\n\r\n";
}

std::string Rows(const std::string& path, const std::string& note) {
    return "\r\n<tr><td>ID:</td><td>o1</td></tr>"
           "\r\n<tr><td>Buyer:</td><td><a target = 'inlineRecords' href = '" +
           path + "\\Buyers\\records.htm#b7'>b7</a></td></tr>\r\n<tr><td>Note:</td><td>" + note +
           "</td></tr>\r\n<tr><td>Left:</td><td>NULL</td></tr>";
}

TEST_F(HtmlExportTest, RendersRecordsWithTheirLinks) {
    const auto records = orders_->CVLRecordSet();
    const std::string note(engine_.GetRecord("Orders", 1)->prop(2));
    EXPECT_EQ(orders_->MakeItHTML("C:\\a\\", "b"), Record(Rows("C:\\a\\b", note)));
    engine_.GetRecord("Orders", 1)->prop(1, "");
    EXPECT_EQ(records->MakeItHTML("", "", orders_, {"", "B"}),
              Record("\r\n<tr><td>B:</td><td>NULL</td></tr>"));
    ExpectError(kObjectNotSet, "CVLRecordSet:MakeItHTML Method", GetErrorMessage(kObjectNotSet),
                [&] { records->MakeItHTML("", "", nullptr, {"ID"}); });
    EXPECT_EQ(orders_->Find("nowhere")->MakeItHTML("", ""), " ");
}

TEST_F(HtmlExportTest, WritesTheSite) {
    Publish();
    std::vector<std::string> expected = {"TavolinStyleSheet.css", "Title.htm", "shop.htm",
                                         "title.htm"};
    for (const std::string table : {"Orders/", "Buyers/"}) {
        for (const char* name : {"index.htm", "Contents.htm", "contents.htm", "Records.htm",
                                 "records.htm", "InlineFrameRecords.htm", "inlineFrameRecords.htm"})
            expected.push_back(table + name);
    }
    EXPECT_EQ(Files(), Distinct(expected));
    EXPECT_EQ(Read("Orders\\Records.htm"),
              kHead +
                  "<p><center  name = 'Top'><br><br><br><br>\r\n<h1>Orders Records</h1></center>"
                  "<hr><br><br><br><br><br><br><br>\r\n\r\n</p>\r\n<p>" +
                  Record(Rows("..", "a <b> &#321;\x80&#128512;&#65533;&#65533;")) + "</p>\r\n" +
                  kBreaks +
                  "<br><br><br><hr>\r\n<p>Published by Tavolin</p>\r\n</body>\r\n</html>");
    EXPECT_EQ(Read("Orders\\Contents.htm"),
              kHead +
                  "<p><a target = '_top' href = '..\\Orders\\index.htm'>Orders</a>\r\n<br>"
                  "<a target = '_top' href = '..\\Buyers\\index.htm'>Buyers</a>\r\n<br></p>\r\n"
                  "<p>Available 1 Records In Orders<br>\r\n"
                  "<select style = 'background-color: black; color: white' size = '14' onChange = "
                  "'if(options[selectedIndex].value) "
                  "parent.inlineFrameRecords.document.inlineRecords.location.href = "
                  "(options[selectedIndex].value)' >\r\n"
                  "<option value ='records.htm#o1'>o1 b7</option>\r\n</select><br><br></p>\r\n"
                  "</body>\r\n</html>");
    EXPECT_NE(Read("Buyers\\Contents.htm").find("'records.htm#b7'>b7</option>"), std::string::npos);
    const auto frames = [](const std::string& title, const std::string& folder) {
        return "<html>\r\n<head>\r\n" + kMeta +
               "<title>Tavolin Web DataBase</title>\r\n<meta name='generator' content='Tavolin'>"
               "\r\n<link rel='icon' href='data:,'>\r\n</head>\r\n"
               "<frameset rows ='24%,76%'  border=0>\r\n<frame name = title src = '" +
               title + "\\title.htm' noresize >\r\n<frameset cols ='25%,75%'>\r\n" +
               "<frame name = contents src = '" + folder + "\\contents.htm'>\r\n" +
               "<frame name = inlineFrameRecords src = '" + folder +
               "\\inlineFrameRecords.htm'>\r\n</frameset>\r\n</frameset>\r\n"
               "<NoFrames>Your browser cannot display frames.</NoFrames>\r\n</html>";
    };
    EXPECT_EQ(Read("shop.htm"), frames(".", ".\\Orders"));
    EXPECT_EQ(Read("Buyers\\index.htm"), frames("..", "."));
}

// No name gets as far as the first folder unless all of them can.
TEST_F(HtmlExportTest, RefusesNamesThatAreNoFolders) {
    const auto publish = [&](const std::string& name) {
        return ErrorNumber([&] { engine_.MakeItHTML(FolderPath(), name); });
    };
    const std::string text(256, 'x');
    const char* const too_long = text.c_str();
    const char* impossible[] = {"A\xFF",       "\xED\xA0\x80", "\xC2\x85", ".",    "..",
                                "a/b",         "..\\a",        "C:",       "a?",   "a<b",
                                "a|b",         "a\"",          "a*",       "a.",   "a ",
                                "a\nb",        "con",          "Nul.x",    "LPT1", "com9.htm",
                                "COM\xC2\xB2", "aux .txt",     too_long};
    for (const char* name : impossible) EXPECT_EQ(publish(name), kBadFileName) << name;
    for (const char* name : {"title", "Contents", "inlineframerecords"}) {
        EXPECT_EQ(publish(name), kBadFileName) << name;
    }
    const auto table = engine_.GetTable("Buyers");
    for (const char* name : impossible) {
        table->Key(name);
        EXPECT_EQ(publish("site"), kBadFileName) << name;
    }
    for (const char* name : {"TITLE.HTM", "tavolinstylesheet.css", "Site.htm"}) {
        table->Key(name);
        EXPECT_EQ(publish("site"), kBadFileName) << name;
    }
    engine_.DBName(".cdb");
    EXPECT_EQ(publish(""), kBadFileName);
    EXPECT_TRUE(fs::is_empty(folder_.path()));
    for (const char* name : {"...a", "com", "com10", "conx.txt", "a b", "Łódź", "lptx", "title"}) {
        table->Key(name);
        EXPECT_EQ(publish("site"), 0) << name;
    }
    for (const auto& [name, page] : {std::pair("My.CDB", "My/My.htm"),
                                     {"x.db", "x.db/x.db.htm"},
                                     {"a.cdb.old", "a.old/a.htm.old.htm"}}) {
        engine_.DBName(name);
        EXPECT_EQ(publish(""), 0);
        EXPECT_TRUE(fs::exists(folder_.path() / page)) << page;
    }
}

// They lead to what the last export wrote, whatever fails; also where files cannot have two names.
TEST_F(HtmlExportTest, LeavesNoLinkStale) {
    orders_->LinkedTable(1, "BUYERS");
    const auto buyer = engine_.GetRecord("Buyers", 1);
    const std::pair<const char*, const char*> names[] = {
        {"Buyers\\Records.htm", "Buyers\\records.htm"},
        {"Buyers\\Records.htm", "BUYERS\\records.htm"},
        {"Buyers\\Contents.htm", "Buyers\\contents.htm"},
        {"Orders\\InlineFrameRecords.htm", "Orders\\inlineFrameRecords.htm"},
        {"Title.htm", "title.htm"}};
    for (const bool links : {true, false, true}) {
        FailingFileSystem files;
        if (!links) files.RefuseLinks();
        const ScopedFileSystem scope(files);
        buyer->prop(1, links ? "linked" : "copied");
        Publish();
        for (const auto& [name, alias] : names) EXPECT_EQ(Read(alias), Read(name)) << alias;
        EXPECT_EQ(files.IsSameFile(Site("Title.htm"), Site("title.htm")), links || !CaseCounts());
        for (const auto& [name, alias] : names) {
            if (files.Exists(Site(alias))) files.Delete(Site(alias));
        }
    }
    FileSystem& real = MachineFileSystem();
    const std::size_t failures = FailEachCall(
        [&] {
            for (const auto& [name, alias] : names) {
                for (const char* path : {name, alias}) {
                    if (real.Exists(Site(path))) real.Delete(Site(path));
                    real.Write(Site(path), {});
                }
            }
            Publish();
        },
        [&](const std::string& call, bool threw) {
            EXPECT_TRUE(threw) << call;
            for (const auto& [name, alias] : names) {
                const bool fresh = !real.Exists(Site(alias)) || Read(alias) == Read(name);
                EXPECT_TRUE(fresh) << alias << " after failing to " << call;
            }
        });
    EXPECT_GT(failures, 30u);
}

}  // namespace
}  // namespace tavolin
