// A database as text and back: nothing is lost, and nothing bad is taken.
#include <gtest/gtest.h>

#include "cli/dump_reader.h"
#include "cli/dump_writer.h"
#include "tavolin/base/clock.h"
#include "tavolin/base/text.h"
#include "tests/cli/host_fixture.h"

namespace tavolin::cli {
namespace {

std::string Dump(CVLDBEngine& engine) {
    std::string text;
    DumpWriter(engine, text, [] {}).Write();
    return text;
}

// Makes a database file of a dump, and gives the dump of what is loaded from that file.
std::string Restored(const std::string& text, const fs::path& file, std::size_t step = SIZE_MAX) {
    {
        RestoredDatabase database(file.string(), {}, [](const std::string&) { return "secret"; });
        DumpReader(TextSource(text, step), database, [](const LineReader&) {}).Read();
        database.Save();
    }
    CVLDBEngine engine;
    engine.LogOn("ann", "secret");
    engine.LoadDB(file.string());
    engine.DBLegalUser(engine.LogedOnUser(), Ownership);
    return Dump(engine);
}

// Databases with everything in them that the library's public members can put there.
class RandomDatabase {
  public:
    explicit RandomDatabase(unsigned seed) : random_(seed) {}

    void Fill(CVLDBEngine& engine) {
        FillUsers(engine);
        const auto tables = engine.CVLTableSet();
        for (int i = Number(4); i >= 0; --i) AddTable(engine, std::to_string(i) + Text());
        for (const auto& table : tables->NewEnum()) {
            if (Number(2) == 0) Link(*table, tables->Item(1 + Number(tables->Count())));
            if (Number(3) == 0) table->LinkedTable(Number(10), Text());
            if (Number(3) == 0) table->ReferencedTable(Number(10), Text());
            if (Number(3) == 0) table->PrimaryKey({9, kNoField, 1, kNoField});
            for (int i = Number(4); i > 0 && table->Count() > 0; --i) Change(*table);
        }
        if (Number(2) == 0) tables->Remove(1);
        if (Number(2) == 0) engine.ChangePassword("", "");
        engine.LogDBActivities(Number(2) == 0, false, Number(2) == 0, true);
    }

  private:
    int Number(int below) { return static_cast<int>(random_() % static_cast<unsigned>(below)); }

    std::string Text() {
        const std::string pieces[] = {"a",      "B",        "7",      "\"",   "\\",
                                      "\\n",    "\n",       "\r\n",   " ",    "#",
                                      "\xFF",   "\xC3",     "é",      "日本", "\xED\xA0\xBD",
                                      "\t",     "😀",        "end",    ",",    "'",
                                      "~",      "\xE2\x80", "\u202E", "\x7F", "\xED\xB8\x80",
                                      "\u2028", "\xC2\x85"};
        std::string text;
        for (int i = Number(5); i > 0; --i) {
            const int piece = Number(static_cast<int>(std::size(pieces)) + 1);
            text += piece == 0 ? std::string(1, '\0') : pieces[piece - 1];
        }
        return text;
    }

    void FillUsers(CVLDBEngine& engine) {
        for (int i = Number(4); i > 0; --i) {
            const std::string name = Text() + std::to_string(i);
            const auto user = engine.CreateNewUser(name, Text(), Number(2) == 0, Number(2) == 0,
                                                   Number(2) == 0, Text(), Text(), Number(2) == 0);
            if (Number(2) == 0) user->Key(Text());
            for (int n = Number(4); n > 0; --n) {
                const Date date{MakeDate(2026, 11, 15).seconds + Number(1 << 20) * 60};
                const auto note = user->CVLUserNoteSet()->Add(date, Number(9) - 4, Text());
                if (Number(2) == 0) note->dateKey = Number(2) == 0 ? "soon" : Text();
            }
        }
    }

    void AddTable(CVLDBEngine& engine, const std::string& name) {
        const auto table = engine.CreateNewPrimaryTable(name, {Text(), Text(), "C"}, Number(10),
                                                        Number(2) == 0 ? Number(10) : kNoField);
        table->FieldLabel(Number(10), Text());
        for (int i = Number(12); i > 0; --i) AddRecord(*table);
    }

    // Filling in may fail on a chain of links to tables that are not there; the link stays.
    void Link(CVLTable& table, const std::shared_ptr<CVLTable>& target) {
        try {
            table.Link(Number(10), target);
        } catch (const Error&) {
        }
    }

    void AddRecord(CVLTable& table) {
        std::array<std::string, kFieldCount> fields;
        for (std::string& field : fields) field = Text();
        try {
            table.CVLRecordSet()->Add(table.PrimaryKey(), Number(9) - 4, fields);
        } catch (const Error&) {  // the key is taken
        }
    }

    void Change(CVLTable& table) {
        const auto record = table.GetRecord(1 + Number(table.Count()));
        record->prop(Number(10), Text());
        const auto other = table.GetRecord(1 + Number(table.Count()));
        for (int i = 0; i < 10 && Number(9); ++i) record->prop(i, other->prop(i));
        if (Number(2) == 0) record->Key(Number(2) == 0 ? other->Key() : Text());
        for (int i = Number(4); i > 0; --i) {
            const auto attachments = record->CVLAttachmentSet();
            const std::string key = Text() + std::to_string(attachments->Count());
            if (!attachments->CanAdd(key)) continue;
            const auto kind = static_cast<attachmentEnum>(Number(7) - 1);
            const auto added = attachments->Add(key, Number(9), Number(2) ? key : Text(), kind);
            if (Number(3) == 0) added->Key("same");
        }
    }

    std::mt19937 random_;
};

class DumpTest : public HostTest {};

TEST_F(DumpTest, WhatIsRestoredDumpsTheSame) {
    fs::create_directories(Path("again"));
    for (unsigned seed = 0; seed < 100; ++seed) {
        SCOPED_TRACE(seed);
        fs::remove(Path("shop.cdb"));
        fs::remove(Path("again/shop.cdb"));
        CVLDBEngine engine;
        engine.LogOn("ann", "secret");
        SetClock([] { return MakeDate(2026, 11, 15, 1, 5, 59); });
        engine.CreateNewDB("shop", Path("").string());
        SetClock({});
        RandomDatabase(seed).Fill(engine);
        engine.SaveDB();
        engine.LoadDB(Path("shop.cdb").string());
        const std::string dump = Dump(engine);
        ASSERT_EQ(dump, Restored(dump, Path("again/shop.cdb"), 1 + seed));
    }
}

TEST_F(DumpTest, ADumpThatIsNotWholeOrRightIsRefusedWithItsLine) {
    const std::string head = "tavolin-dump 1\nowner \"ann\"\n";
    const std::string table = head + "table \"T\"\nkey 0\nfield 0 \"ID\"\n";
    const std::pair<std::string, std::string> cases[] = {
        {"", "1: the text is empty"},
        {"tavolin-dump 2\n", "1: the dump is of version 2; this program reads version 1"},
        {"ID,Name\n", "1: this is no dump of a database"},
        {table + "record 1 \"7\"\n", "6: the text ends without its last line"},
        {table + "record 1 \"7\nend\n", "6: the text does not end in this line"},
        {table + "record 1 \"7", "6: the text is cut off in this line"},
        {table + "record 1 \"\xFF\"\nend\n", "6: the text is not UTF-8"},
        {table + "record 1 \"\\q\"\nend\n", "6: a backslash is followed by none of"},
        {table + "record 1 \"\\u12\"\nend\n", "6: an escape needs 4 hexadecimal digits"},
        {table + "record 1 \"7\"\nrecord 2 \"7\"\nend\n", "7: the key \"7\" is in the table T"},
        {table + "record 3000000000 \"7\"\nend\n", "6: 3000000000 is no 32-bit number"},
        {table + "record 1 \"7\" 8\nend\n", "6: a text between quotes is missing"},
        {table + "record 1 \"7\"\nattachment 1 2 \"a\"\nattachment 1 2 \"A\"\nend\n",
         "8: the record has an attachment \"A\" already"},
        {table + "record 1" + ReplaceFold("...........", ".", " \"\"") + "\n",
         "6: a record has ten"},
        {table + "link 1 \"U\"\nend\n", "6: there is no table U"},
        {table + "linked-by 1 \"U\"\nend\n", "6: there is no table U"},
        {table + "table \"t\"\nend\n", "6: the table t is there already"},
        {table + "field 10 \"X\"\nend\n", "6: the fields are 0 to 9"},
        {table + "user \"bob\"\nend\n", "6: users stand in front of tables"},
        {table + "colour \"red\"\nend\n", "6: \"colour\" has no place here"},
        {table + "end\nrecord 1\n", "7: there is something behind the end"},
        {head + "user \"bob\"\nuser \"BOB\"\nend\n", "4: the user BOB is there already"},
        {head + "user \"bob\" reed\nend\n", "3: there is something behind"},
        {head + "user \"b\"\nnote 1 \"x\" \"\"\nnote 2 \"X\" \"\"\nend\n",
         "5: the user has a note"},
        {head + "created 2026-02-30 00:00:00\nend\n", "3: there is no such date and time"},
        {head + "owner \"bob\"\nend\n", "3: there is a line owner already"},
        {"tavolin-dump 1\nend\n", "2: a line \"owner\" is missing"},
    };
    for (const auto& [text, message] : cases) {
        Write("bad.txt", text);
        const Outcome outcome = Run("new restore bad.txt");
        EXPECT_EQ(1, outcome.status) << text;
        EXPECT_NE(outcome.err.npos, outcome.err.find("bad.txt:" + message)) << outcome.err;
        EXPECT_FALSE(fs::exists(Path("new.cdb"))) << text;
    }
}

TEST_F(DumpTest, UsersComeBackWithoutTheirPasswords) {
    MakeShop();
    ASSERT_EQ(0, Run("shop add-user bob --read --write --disabled --no-password").status);
    ASSERT_EQ(0, Run("shop note add --user bob \"the owner's alone\"").status);
    ASSERT_EQ(0, Run("shop dump shop.txt").status);
    const std::string dump = ReplaceFold(Read("shop.txt"), "\n", "\r\n");
    EXPECT_NE(dump.npos, dump.find("\nuser \"bob\" read write disabled\r\n"));
    const auto status = [&](const std::string& words, const std::string& settings) {
        return Run(words, dump, settings).status;
    };
    EXPECT_EQ(2, status("new restore shop.txt", "TAVOLIN_PASSWORD="));
    EXPECT_EQ(0, status("new restore -", "TAVOLIN_PASSWORD=fresh"));
    const std::string written = Read("new.cdb");
    EXPECT_EQ(1, status("new restore shop.txt", ""));  // is there already
    EXPECT_EQ(written, Read("new.cdb"));
    EXPECT_EQ(1, status("new tables", "TAVOLIN_PASSWORD=secret"));
    EXPECT_EQ(0, status("new set-user bob --disabled off", "TAVOLIN_PASSWORD=fresh"));
    EXPECT_EQ(1, status("new tables", "TAVOLIN_USER=bob TAVOLIN_PASSWORD="));
    EXPECT_EQ(0, status("new set-user bob --no-password", "TAVOLIN_PASSWORD=fresh"));
    EXPECT_EQ(0, status("new add People 9", "TAVOLIN_USER=bob TAVOLIN_PASSWORD="));
    EXPECT_EQ(1, status("new dump", "TAVOLIN_USER=bob TAVOLIN_PASSWORD="));
    for (const auto& [user, told] : {std::pair("ann", true), std::pair("bob", false)}) {
        const std::string settings = "TAVOLIN_USER=" + std::string(user) + " TAVOLIN_PASSWORD=";
        const std::string sql = Run("new export sql -", "", settings + (told ? "fresh" : "")).out;
        EXPECT_NE(sql.npos, sql.find("'Ann Lee'"));
        EXPECT_EQ(told, sql.find("the owner''s alone") != sql.npos);
    }
    for (const char* const own : {"shop.cdb", "shop.log"}) {
        const std::string before = Read(own);
        EXPECT_EQ(1, Run(std::string("shop dump --yes ") + own).status);
        EXPECT_EQ(before, Read(own));
    }
    EXPECT_EQ("7,Ann Lee,Paris\n8,,Rome\n", Csv("People"));
}

}  // namespace
}  // namespace tavolin::cli
