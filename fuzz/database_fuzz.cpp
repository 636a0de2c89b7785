// A database file: refused, with the open database untouched, or loaded; what was loaded holds
// together, can be worked on, and comes back from its own file as it is.
#include "fuzz/walk.h"
#include "tavolin/persist/database_file.h"

namespace tavolin::fuzz {
namespace {

constexpr const char* kFile = "/m\\x.cdb";

// The states that damage may leave in place of a value, chosen by the input.
class DatabaseWriter {
  public:
    explicit DatabaseWriter(Input& input) : input_(input) {}

    Bytes Write() {
        Text("n", "x.cdb");
        Text("p", "/m");
        Text("o", "ann");
        Object("objgl", [&] { Collection("ListsCount", "List", [&] { Table(); }); });
        Item("v0", [&] { bag_.Write("v0", true); });
        Text("m", "");
        Object("objusr", [&] { Collection("UserCount", "User", [&] { User(); }); });
        Item("dd", [&] { bag_.Write("dd", Date{static_cast<std::int64_t>(input_.Number())}); });
        return std::move(bag_).Finish();
    }

  private:
    // Zeros write an item as it belongs.
    template <class Body>
    void Item(const std::string& key, Body&& write) {
        switch (input_.Below(64)) {
            case 60:
                return;
            case 61:
                bag_.Write(key, input_.Text());
                return;
            case 62:
                bag_.WriteByte(key, input_.Byte());
                return;
            case 63:
                write();
                break;
            default:
                break;
        }
        write();
    }
    void Text(const std::string& key, std::string_view usual) {
        Item(key, [&] {
            const int size = input_.Below(4);
            bag_.Write(key, size == 0 ? usual : input_.Text(static_cast<std::size_t>(size)));
        });
    }
    void Number(const std::string& key) {
        Item(key, [&] { bag_.Write(key, static_cast<std::int32_t>(input_.Number())); });
    }
    void Flag(const std::string& key) {
        Item(key, [&] { bag_.Write(key, input_.Below(2) == 1); });
    }
    template <class Body>
    void Object(const std::string& key, Body&& body) {
        Item(key, [&] { bag_.WriteObject(key, body); });
    }
    template <class Body>
    void Collection(const std::string& count_key, const std::string& prefix, Body&& one) {
        const int count = input_.Below(5);
        Item(count_key, [&] { bag_.Write(count_key, static_cast<std::int32_t>(count)); });
        Item(prefix, [&] {
            bag_.WriteSeries(prefix, static_cast<std::size_t>(count), [&](std::size_t) { one(); });
        });
    }

    void User() {
        for (const char* key : {"k", "un", "f", "uf", "ud"}) Text(key, "ann");
        for (const char* key : {"r", "w", "d", "s"}) Flag(key);
        Object("objn", [&] {
            Collection("NoteCount", "Note", [&] {
                Text("k", "1/1/2026");
                Number("nk");
                Text("n", "note");
            });
        });
    }
    void Table() {
        Text("k", "T");
        Item("nk", [&] { bag_.WriteByte("nk", input_.Byte()); });
        for (int i = 0; i < 4; ++i) {
            const std::string key = "pkt" + std::to_string(i);
            const int part = input_.Below(12);
            Item(key,
                 [&] { bag_.WriteByte(key, static_cast<std::uint8_t>(part < 10 ? part : 99)); });
        }
        for (int i = input_.Below(4); i > 0; --i) {
            const std::string field = std::to_string(input_.Below(11));
            for (const char* key : {"f", "fn", "fk", "LK"}) Text(key + field, "T");
            Flag("fka" + field);
        }
        Object("rl", [&] { Records(); });
    }
    void Records() {
        std::int32_t count = 0;
        Bytes images = Images(count);
        for (int i = input_.Below(3); i > 0 && !images.empty(); --i) {
            images[input_.Number() % images.size()] ^= input_.Byte();
        }
        Item("RecordsCount", [&] { bag_.Write("RecordsCount", count); });
        Item("Record", [&] { bag_.WriteBlocks("Record", images); });
        const auto special = static_cast<std::size_t>(input_.Below(4));
        Item("RecordExtra", [&] {
            bag_.WriteSeries("RecordExtra", special, [&](std::size_t i) {
                Item("i", [&] { bag_.Write("i", static_cast<std::int32_t>(i)); });
                Text("k", "1");
                Object("att", [&] {
                    Collection("AttCount", "Attachment", [&] {
                        Text("k", "a");
                        Number("nk");
                        Text("a", "a.png");
                        Number("t");
                    });
                });
            });
        });
    }
    Bytes Images(std::int32_t& count) {
        CVLRecordSet records;
        for (int i = input_.Below(6); i > 0; --i) {
            PrimaryKeyType key{static_cast<std::uint8_t>(input_.Below(3)), 99, 99, 99};
            const std::string first(input_.Text(input_.Byte() % 4u));
            Refusal([&] {
                records.Add(key, i, {first, input_.Text(input_.Byte() % 4u), input_.Text()});
            });
        }
        count = records.Count();
        const Bytes state = records.ObjectState();
        PropertyBagReader reader(state);
        const auto images = reader.ReadBlocks("Record");
        return {images.begin(), images.end()};
    }

    Input& input_;
    PropertyBagWriter bag_;
};

// Whatever the file says of keys and links, work goes on.
void Work(CVLDBEngine& engine) {
    std::vector<Keys> shared;
    for (const auto& table : engine.CVLTableSet()->NewEnum()) shared.push_back(SharedKeys(*table));
    for (int i = engine.CVLTableSet()->Count(); i > 0; --i) {
        const auto table = engine.GetTable(i);
        Refusal([&] { engine.AddRecord(table, 1, {"new", "a", "b", "a"}); });
        Refusal([&] { engine.Find("a", true, table); });
        Refusal([&] { table->MakeItText(); });
        for (const int field : {0, 1}) Refusal([&] { table->Sort(field); });
        if (table->Count() > 0) {
            Refusal([&] { engine.UpDateRecord(table, engine.GetRecord(table, 1), 1, {"u"}); });
            Refusal([&] { engine.DeleteRecord(table, 1, true); });
        }
        Refusal([&] { engine.LinkTables(table, 1, 1); });
        WalkTable(*table, shared[static_cast<std::size_t>(i) - 1]);
    }
    for (int i = engine.CVLTableSet()->Count(); i > 0; --i) {
        Refusal([&] { engine.DeleteTable(1, i % 2 == 0); });
    }
}

void LoadAndWalk(const Bytes& file) {
    MemoryFiles files;
    const ScopedFileSystem scope(files);
    files[kFile] = file;
    CVLDBEngine engine;
    engine.LogOn("ann", "secret");
    engine.CreateNewDB("open", MemoryFiles::kFolder);
    engine.CreateNewPrimaryTable("Open", {"ID"});
    const auto open = engine.AddRecord("Open", 1, {"1"});
    const auto tables = engine.CVLTableSet();

    const std::int32_t refusal = Refusal([&] { engine.LoadDB(kFile); });
    Require(files[kFile] == file, "loading changes no file");
    if (refusal != 0) {
        Require(refusal == CVLErrorNum::GetDBNotSetError(), "a damaged file has its number");
        Require(engine.CVLTableSet() == tables && engine.GetRecord("Open", "1") == open &&
                    engine.DBName() == "open.cdb",
                "the open database is untouched");
        return;
    }
    if (!ActAsOwner(engine)) return;
    WalkDatabase(engine);
    Require(engine.SaveDB({}, {}, {}, true), "what was loaded can be saved");
    const Bytes saved = files[kFile];
    engine.LoadDB(kFile);
    Require(engine.SaveDB({}, {}, {}, true) && files[kFile] == saved,
            "what was saved comes back as it is");
    Require(ActAsOwner(engine), "the owner stays the owner");
    engine.TransactionBegin();
    Work(engine);
    engine.TansactionAbort();
    engine.SaveDB({}, {}, {}, true);
    Require(files[kFile] == saved, "a transaction takes everything back");
}

}  // namespace
}  // namespace tavolin::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tavolin::fuzz;
    setenv("TAVOLIN_FOLDER", MemoryFiles::kFolder, 1);
    if (size == 0) return 0;
    if (data[0] % 3 != 2) {
        LoadAndWalk(FileOf(data, size));
        return 0;
    }
    // Before there is a database to load it into, there is one to make it of.
    Bytes file;
    {
        MemoryFiles files;
        const tavolin::ScopedFileSystem scope(files);
        tavolin::CVLDBEngine engine;
        engine.LogOn("ann", "secret");
        engine.CreateNewDB("made", MemoryFiles::kFolder);
        Input input(data + 1, size - 1);
        const Bytes bag = DatabaseWriter(input).Write();
        tavolin::WriteDatabaseFile(kFile, bag);
        file = files[kFile];
    }
    LoadAndWalk(file);
    return 0;
}
