// What must stay where it is: files in the folders that are given, and passwords in memory.
#include <algorithm>
#include <map>

#include "tavolin/base/text.h"
#include "tavolin/persist/paths.h"
#include "tests/support/engine_state.h"

namespace tavolin {
namespace {

// With a record of every path outside some folders that it was asked about.
class WatchedFileSystem final : public ForwardingFileSystem {
  public:
    explicit WatchedFileSystem(std::vector<fs::path> folders) : folders_(std::move(folders)) {}
    std::vector<std::string> outside;

  private:
    bool Asked(std::string_view, std::string_view one, std::string_view other) override {
        for (const std::string_view path : {one, other.empty() ? one : other}) {
            std::error_code error;
            fs::path real = fs::weakly_canonical(NativePath(path), error);
            if (error) real = NativePath(path).lexically_normal();  // longer than the machine takes
            const auto holds = [&](const fs::path& folder) {
                return std::mismatch(folder.begin(), folder.end(), real.begin(), real.end())
                           .first == folder.end();
            };
            if (std::none_of(folders_.begin(), folders_.end(), holds)) outside.emplace_back(path);
        }
        return true;
    }

    std::vector<fs::path> folders_;
};

// How a member takes a name: as that of a file, as a part of one, or not for files at all.
enum class Use { kWhole, kPart, kNoFile };

struct Taker {
    const char* what;
    Use use;
    void (*call)(CVLDBEngine& engine, const std::string& folder, const std::string& name);
};

const Taker kTakers[] = {
    {"CreateNewDB", Use::kWhole, [](auto& e, auto& f, auto& n) { e.CreateNewDB(n, f); }},
    {"SaveDB", Use::kWhole, [](auto& e, auto&, auto& n) { e.SaveDB({}, n); }},
    {"DBName", Use::kWhole, [](auto& e, auto&, auto& n) { e.DBName(n), e.SaveDB(); }},
    {"text", Use::kPart, [](auto& e, auto& f, auto& n) { e.MakeItText(f, n); }},
    {"MDB", Use::kPart, [](auto& e, auto& f, auto& n) { e.MakeItMDB(f, n); }},
    {"MDB of a set", Use::kPart,
     [](auto& e, auto& f, auto& n) { e.CVLTableSet()->MakeItMDB(f, n); }},
    {"MDB of a table", Use::kPart,
     [](auto& e, auto& f, auto& n) { e.GetTable("T")->MakeItMDB(f, n); }},
    {"MDB of records", Use::kPart,
     [](auto& e, auto& f, auto& n) { e.GetRecordSet("T")->MakeItMDB(f, n, "T", {"ID"}); }},
    {"site", Use::kWhole, [](auto& e, auto& f, auto& n) { e.MakeItHTML(f, n); }},
    {"site with a table", Use::kWhole,
     [](auto& e, auto& f, auto& n) {
         e.CreateNewPrimaryTable(n, {"ID"});
         e.MakeItHTML(f, "site");
     }},
    {"table, fields, record, attachment", Use::kNoFile,
     [](auto& e, auto& f, auto& n) {
         const auto table = e.CreateNewPrimaryTable(n.empty() ? "U" : n, {"ID", n, "Link"});
         e.AddRecord(table, 1, {n, n, n})->Attach(1, n, aPicture);
         e.CreateNewLinkedTable("T", 1, {n});
         table->LinkedTable(2, n);
         e.SaveDB();
         e.MakeItText(f);
         ErrorNumber([&] { e.MakeItMDB(f); });
         ErrorNumber([&] { e.MakeItHTML(f); });
     }},
    {"user and owner", Use::kNoFile,
     [](auto& e, auto& f, auto& n) {
         e.LogOn(n, n);
         e.CreateNewDB("own", f, n, n);
         e.CreateNewUser("user" + n, n, true, true, true, n, n);
         e.SaveDB();
         ErrorNumber([&] { e.ChangeOwner("owner" + n); });
         ErrorNumber([&] { e.SaveDB(); });
         e.CVLDBOwnerSet()->Refresh();
         ErrorNumber([&] { e.GetArrayOwnedDBs(n); });
     }},
    {"deletion", Use::kNoFile,
     [](auto& e, auto& f, auto& n) {
         ErrorNumber([&] { e.SaveDB({}, n); });
         ErrorNumber([&] { e.DeleteDB(JoinPath(f, e.DBName())); });
     }},
};

TEST(ConfinementTest, NoNameLeadsOutOfTheFolderGiven) {
    using namespace std::string_literals;
    enum class Leads { kNowhereElse, kElsewhere, kElsewhereAlone, kAsTheMachineSays };
    const struct {
        std::string text;
        Leads leads;
    } names[] = {
        {"fine", Leads::kNowhereElse},      {"fine.too", Leads::kNowhereElse},
        {"Учёт 😀", Leads::kNowhereElse},    {"..\\x", Leads::kElsewhere},
        {"../x", Leads::kElsewhere},        {"x\\..\\..\\y", Leads::kElsewhere},
        {"..\\RDX.dat", Leads::kElsewhere}, {"C:\\x", Leads::kElsewhere},
        {"C:x", Leads::kElsewhere},         {"\\x", Leads::kElsewhere},
        {"/etc/x", Leads::kElsewhere},      {"\\\\host\\share\\x", Leads::kElsewhere},
        {"a\0b"s, Leads::kElsewhere},       {"..", Leads::kElsewhereAlone},
        {".", Leads::kElsewhereAlone},      {".. ", Leads::kElsewhereAlone},
        {"con", Leads::kElsewhereAlone},    {"nul.cdb", Leads::kElsewhereAlone},
        {"", Leads::kAsTheMachineSays},     {std::string(300, 'n'), Leads::kAsTheMachineSays},
    };
    for (const auto& name : names) {
        for (const Taker& taker : kTakers) {
            SCOPED_TRACE(std::string(taker.what) + " " + name.text);
            const ScopedLibraryFolder library;
            const TemporaryFolder around;
            const fs::path folder = fs::canonical(around.path()) / "data";
            fs::create_directory(folder);
            WatchedFileSystem files({folder, fs::canonical(library.folder().path())});
            const ScopedFileSystem scope(files);
            NewDatabase engine("shop", PortablePath(folder));
            engine.CreateNewPrimaryTable("T", {"ID", "Name"});
            engine.AddRecord("T", 1, {"1"});
            LogEverything(engine);
            engine.TransactionBegin();  // lines go to the log at once
            const auto error =
                ErrorNumber([&] { taker.call(engine, PortablePath(folder), name.text); });
            if (name.leads == Leads::kNowhereElse) {
                EXPECT_EQ(error, 0);
            }
            const bool refused = (name.leads == Leads::kElsewhere && taker.use != Use::kNoFile) ||
                                 (name.leads == Leads::kElsewhereAlone && taker.use == Use::kWhole);
            if (refused) {
                EXPECT_EQ(error, taker.what == std::string("CreateNewDB")
                                     ? CVLErrorNum::GetDBAddError()
                                     : kBadFileName);
            }
            EXPECT_EQ(files.outside, std::vector<std::string>());
            EXPECT_EQ(std::distance(fs::directory_iterator(around.path()), {}), 1);
        }
    }
}

// Whether the text is in the bytes as UTF-8 or UTF-16, in any letter case.
bool IsIn(const std::string& bytes, const std::string& text) {
    std::string wide;
    for (const char c : text) wide.append({c, '\0'});
    const auto lower = [](std::string ascii) {
        for (char& c : ascii) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
        return ascii;
    };
    const std::string all = lower(bytes);
    return all.find(lower(text)) != all.npos || all.find(lower(wide)) != all.npos;
}

TEST(ConfinementTest, NoPasswordLeavesTheMemory) {
    const ScopedLibraryFolder library;
    const TemporaryFolder& folder = library.folder();
    const std::string path = PortablePath(folder.path());
    const std::string own = "QzUser7Word", base = "QzBase8Word", next = "QzNext9Word",
                      wrong = "QzWrong6Word", bobs = "QzBobs5Word";
    std::string told;  // to the host
    const auto refused = [&](auto&& body) {
        try {
            body();
            ADD_FAILURE() << "no refusal";
        } catch (const Error& error) {
            told += error.description() + error.source() + error.detail() + error.log_text();
        }
    };
    CVLDBEngine engine;
    engine.LogOn("ann", own);
    engine.CreateNewDB("shop", path, base);
    LogEverything(engine);
    engine.CreateNewUser("bob", bobs, true, false, false);
    engine.CreateNewPrimaryTable("T", {"ID", "Name"});
    engine.AddRecord("T", 1, {"1", "QzMarkWord"});
    engine.GetUser("bob", bobs)->CVLUserNoteSet()->Add(Date{1}, 1, "note");
    engine.SaveDB();
    WriteContents(folder / "taken.cdb", "no database");
    engine.TransactionBegin();
    refused([&] { engine.CreateNewUser("bob", wrong, true, true, true); });
    refused([&] { engine.GetUser("bob", wrong); });
    refused([&] { engine.GetUser("eve", wrong); });
    refused([&] { engine.LoadDB(folder / "none.cdb", wrong); });
    refused([&] { engine.LoadDB(folder / "taken.cdb", wrong); });
    refused([&] { engine.GetDB(folder / "taken.cdb", wrong); });
    refused([&] { engine.CreateNewDB("taken", path, wrong); });
    refused([&] { engine.SaveDB({}, "taken", wrong); });
    refused([&] { engine.CVLDBUserSet()->Add("bob", wrong, true, true, true); });
    refused([&] { engine.GetUser("bob", bobs)->ChangePassword(bobs, wrong); });
    engine.LogOn("bob", wrong);
    refused([&] { engine.DBLegalUser(engine.LogedOnUser(), ToRead); });
    refused([&] { engine.ChangePassword(wrong, next); });
    refused([&] { engine.ChangeOwner("bob", wrong); });
    refused([&] { engine.SaveDB({}, {}, wrong); });
    refused([&] { engine.TransactionBegin(); });
    engine.LogOn("ann", own);
    engine.DBLegalUser(engine.LogedOnUser(), Ownership);
    engine.ChangePassword({}, next);
    engine.GetUser("bob", bobs)->ChangePassword(wrong, bobs + "2");
    engine.ChangeOwner("cid", next);
    engine.TransactionCommit();
    engine.SaveDB({}, "other", base);
    engine.MakeItText(path);
    engine.MakeItHTML(path);
    engine.MakeItMDB(path);
    const auto bytes = engine.CVLDBUserSet()->ObjectState();
    std::map<std::string, std::string> outputs = {
        {"errors", told},
        {"report", engine.LogReport()},
        {"state", std::string(bytes.begin(), bytes.end())},
        {"text", engine.CVLTableSet()->MakeItText()}};
    for (const auto& entry : fs::recursive_directory_iterator(folder.path())) {
        if (!entry.is_regular_file()) continue;
        outputs[entry.path().filename().string()] += Contents(PortablePath(entry.path()));
    }
    for (const auto& [name, output] : outputs) {
        for (const std::string& password : {own, base, next, wrong, bobs})
            EXPECT_FALSE(IsIn(output, password)) << password << " in " << name;
    }
    for (const char* name : {"other.cdb", "other.txt", "other.mdb", "Records.htm"})
        EXPECT_TRUE(IsIn(outputs[name], "QzMarkWord")) << name;  // the search finds what is there
    for (const char* name : {"report", "state", "shop.log", "RDX.dat"})
        EXPECT_TRUE(IsIn(outputs[name], name == std::string("RDX.dat") ? "cid" : "bob")) << name;
    EXPECT_TRUE(IsIn(outputs["shop.log"], "Incorrect DataBase Password"));
}

}  // namespace
}  // namespace tavolin
