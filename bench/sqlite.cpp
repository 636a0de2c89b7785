// SQLite in memory: a table with integer rowids and a unique index of the key without regard to
// case, or one whose rows stand in that index (WITHOUT ROWID).
#include <sqlite3.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iostream>

#include "bench/files.h"
#include "bench/workload.h"

namespace tavolin::bench {
namespace {

// A statement that is made once and used many times.
class Statement {
  public:
    Statement(sqlite3* db, const std::string& sql) {
        if (sqlite3_prepare_v3(db, sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &statement_,
                               nullptr) != SQLITE_OK) {
            std::cerr << sqlite3_errmsg(db) << ": " << sql << '\n';
            std::exit(1);
        }
    }
    ~Statement() { sqlite3_finalize(statement_); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    Statement& Bind(int at, std::string_view text) {
        sqlite3_bind_text(statement_, at, text.data(), static_cast<int>(text.size()),
                          SQLITE_STATIC);
        return *this;
    }
    Statement& Bind(int at, std::int64_t number) {
        sqlite3_bind_int64(statement_, at, number);
        return *this;
    }
    bool Step() {
        const int result = sqlite3_step(statement_);
        if (result == SQLITE_ROW) return true;
        if (result != SQLITE_DONE) {
            std::cerr << sqlite3_errmsg(sqlite3_db_handle(statement_)) << '\n';
            std::exit(1);
        }
        sqlite3_reset(statement_);
        return false;
    }
    void Reset() { sqlite3_reset(statement_); }
    std::int64_t Number(int column) { return sqlite3_column_int64(statement_, column); }
    std::string_view Text(int column) {
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
        return {text, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
    }
    Fields Record(int first) {
        Fields fields;
        for (int field = 0; field < 10; ++field)
            fields[static_cast<std::size_t>(field)] = Text(first + field);
        return fields;
    }

  private:
    sqlite3_stmt* statement_ = nullptr;
};

constexpr const char* kColumns = "f0,f1,f2,f3,f4,f5,f6,f7,f8,f9";
constexpr const char* kAllFields = "(f0||f1||f2||f3||f4||f5||f6||f7||f8||f9)";

template <bool kRowId>
class SqliteStore {
  public:
    static constexpr bool kFoldsUnicode = false;
    static constexpr bool kKeepsOrder = kRowId;
    static constexpr bool kSortRearranges = false;
    static constexpr bool kSortsField1 = false;

    explicit SqliteStore(const std::string& folder) : file_(folder + "/bench.db") {
        Open();
        Run(kRowId ? "CREATE TABLE r(id INTEGER PRIMARY KEY, key TEXT COLLATE NOCASE UNIQUE,"
                   : "CREATE TABLE r(key TEXT COLLATE NOCASE PRIMARY KEY,",
            "f0 TEXT,f1 TEXT,f2 TEXT,f3 TEXT,f4 TEXT,f5 TEXT,f6 TEXT,f7 TEXT,f8 TEXT,f9 TEXT)",
            kRowId ? "" : " WITHOUT ROWID");
        Prepare();
    }
    ~SqliteStore() { Close(); }
    SqliteStore(const SqliteStore&) = delete;
    SqliteStore& operator=(const SqliteStore&) = delete;

    void Begin() { Run("BEGIN"); }
    void End() { Run("COMMIT"); }

    void Add(const Fields& fields) { Insert(*insert_, last_id_ += gap_, fields); }

    std::uint64_t Get(std::string_view key) {
        if (!get_->Bind(1, key).Step()) return 0;
        const std::uint64_t touched = Touch(get_->Text(0));
        get_->Reset();
        return touched;
    }
    std::uint64_t At(std::size_t position) requires kRowId {
        Statement& query = edited_ ? *at_offset_ : *at_id_;
        query.Bind(1, static_cast<std::int64_t>(edited_ ? position : position + 1));
        if (!query.Step()) return 0;
        const std::uint64_t touched = Touch(query.Text(0));
        query.Reset();
        return touched;
    }

    void Update(std::string_view key, const Fields& fields) {
        for (int field = 0; field < 10; ++field)
            update_->Bind(field + 1, fields[static_cast<std::size_t>(field)]);
        update_->Bind(11, key).Step();
    }
    void Delete(std::string_view key) {
        delete_->Bind(1, key).Step();
        edited_ = true;
    }

    // Renumbering all later rows to keep positions takes seconds at a million. This gives positions
    // up (they are OFFSETs from then on) and keeps the order by numbers with gaps between them.
    void LeaveGaps() requires kRowId { gap_ = kGap; }
    void InsertAt(std::size_t position, const Fields& fields) requires kRowId {
        edited_ = true;
        if (position == 0) {
            Insert(*insert_, -in_front_++, fields);
        } else {
            const std::int64_t before = static_cast<std::int64_t>(position) - in_front_;
            Insert(*insert_, (before + 1) * gap_ - ++in_gap_, fields);
        }
    }

    std::uint64_t Find(int field, std::string_view needle, bool digest) {
        const std::string pattern = std::string("%").append(needle).append("%");
        const std::string text = field < 0 ? kAllFields : Column(field);
        Statement query(db_, (digest ? std::string("SELECT ") + kColumns
                                     : std::string(kRowId ? "SELECT id" : "SELECT key")) +
                                 " FROM r WHERE " + text + " LIKE ?");
        query.Bind(1, pattern);
        std::uint64_t sum = 0;
        if (digest) {
            while (query.Step()) sum += Digest(query.Record(0));
        } else if constexpr (kRowId) {
            std::vector<std::int64_t> found;
            while (query.Step()) found.push_back(query.Number(0));
            sum = found.size();
        } else {
            std::vector<std::string> found;
            while (query.Step()) found.emplace_back(query.Text(0));
            sum = found.size();
        }
        return sum;
    }

    // The query alone: SQLite rearranges nothing.
    void Sort(int field) requires kRowId {
        const std::string by = Column(field) + " COLLATE NOCASE";
        Statement query(db_, "SELECT id FROM r ORDER BY " + by + ", f0 COLLATE NOCASE");
        order_.clear();
        while (query.Step()) order_.push_back(query.Number(0));
    }

    void Save() {
        sqlite3_int64 size = 0;
        unsigned char* image = sqlite3_serialize(db_, "main", &size, 0);
        WriteAndSync(file_, {reinterpret_cast<char*>(image), static_cast<std::size_t>(size)});
        sqlite3_free(image);
    }
    void Forget() { Close(); }
    void Load() {
        const std::size_t size = FileSize(file_);
        auto* image = static_cast<char*>(sqlite3_malloc64(size));
        ReadInto(file_, {image, size});
        Adopt(image, size);
    }

    void Snapshot() {
        sqlite3_int64 size = 0;
        snapshot_ = sqlite3_serialize(db_, "main", &size, 0);
        snapshot_size_ = static_cast<std::size_t>(size);
    }
    void Restore() {
        Close();
        Adopt(reinterpret_cast<char*>(snapshot_), snapshot_size_);
        snapshot_ = nullptr;
    }
    void EndSnapshot() {
        sqlite3_free(snapshot_);
        snapshot_ = nullptr;
    }

    void Link(int field) requires kRowId {
        const std::string column = Column(field);
        Run("BEGIN; CREATE TABLE n(key TEXT COLLATE NOCASE PRIMARY KEY); CREATE INDEX i ON r(",
            column, " COLLATE NOCASE); INSERT OR IGNORE INTO n SELECT ", column, " FROM r; COMMIT");
        linked_ = std::make_unique<LinkStatements>(db_, column);
    }
    std::uint64_t Linked() requires kRowId {
        Statement query(db_, "SELECT count(*) FROM n");
        query.Step();
        return static_cast<std::uint64_t>(query.Number(0));
    }
    void DeleteCascading(std::string_view key) requires kRowId {
        if (!linked_->get.Bind(1, key).Step()) return;
        const std::int64_t id = linked_->get.Number(0);
        const std::string value(linked_->get.Text(1));
        linked_->get.Reset();
        if (linked_->other.Bind(1, value).Bind(2, id).Step()) {
            linked_->other.Reset();
        } else {
            linked_->remove_number.Bind(1, value).Step();
        }
        linked_->remove.Bind(1, id).Step();
    }

    template <class Visit>
    void Walk(Visit&& visit) {
        if (order_.empty()) {
            Statement query(db_, std::string("SELECT ") + kColumns + " FROM r");
            while (query.Step()) visit(query.Record(0));
            return;
        }
        Statement query(db_, std::string("SELECT ") + kColumns + " FROM r WHERE id=?");
        for (const std::int64_t id : order_) {
            query.Bind(1, id).Step();
            visit(query.Record(0));
            query.Reset();
        }
        order_.clear();
    }

  private:
    struct LinkStatements {
        LinkStatements(sqlite3* db, const std::string& column)
            : get(db, "SELECT id," + column + " FROM r WHERE key=?"),
              other(db, "SELECT 1 FROM r WHERE " + column + "=? COLLATE NOCASE AND id<>? LIMIT 1"),
              remove(db, "DELETE FROM r WHERE id=?"),
              remove_number(db, "DELETE FROM n WHERE key=?") {}
        Statement get;
        Statement other;
        Statement remove;
        Statement remove_number;
    };

    static std::string Column(int field) { return std::string("f").append(std::to_string(field)); }

    template <class... Parts>
    void Run(Parts&&... parts) {
        const std::string sql = (std::string() + ... + parts);
        char* error = nullptr;
        if (sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, &error) != SQLITE_OK) {
            std::cerr << error << ": " << sql << '\n';
            std::exit(1);
        }
    }

    void Open() {
        sqlite3_open_v2(":memory:", &db_,
                        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
        Run("PRAGMA cache_size=-4000000; PRAGMA temp_store=MEMORY; PRAGMA locking_mode=EXCLUSIVE");
    }

    // SQLite owns the image from here on.
    void Adopt(char* image, std::size_t size) {
        Open();
        sqlite3_deserialize(db_, "main", reinterpret_cast<unsigned char*>(image),
                            static_cast<sqlite3_int64>(size), static_cast<sqlite3_int64>(size),
                            SQLITE_DESERIALIZE_FREEONCLOSE | SQLITE_DESERIALIZE_RESIZEABLE);
        Prepare();
    }

    void Prepare() {
        const auto make = [&](std::unique_ptr<Statement>& statement, const std::string& sql) {
            statement = std::make_unique<Statement>(db_, sql);
        };
        make(insert_, std::string("INSERT INTO r VALUES(") + (kRowId ? "?11," : "") +
                          "?1||?3,?1,?2,?3,?4,?5,?6,?7,?8,?9,?10)");
        if (kRowId) {
            make(at_id_, "SELECT f1 FROM r WHERE id=?");
            make(at_offset_, "SELECT f1 FROM r LIMIT 1 OFFSET ?");
        }
        make(get_, "SELECT f1 FROM r WHERE key=?");
        make(update_, "UPDATE r SET f0=?,f1=?,f2=?,f3=?,f4=?,f5=?,f6=?,f7=?,f8=?,f9=? WHERE key=?");
        make(delete_, "DELETE FROM r WHERE key=?");
    }

    void Insert(Statement& insert, std::int64_t id, const Fields& fields) {
        for (int field = 0; field < 10; ++field)
            insert.Bind(field + 1, fields[static_cast<std::size_t>(field)]);
        if (kRowId) insert.Bind(11, id);
        insert.Step();
    }

    void Close() {
        for (auto* statement : {&insert_, &get_, &at_id_, &at_offset_, &update_, &delete_})
            statement->reset();
        linked_.reset();
        sqlite3_close(db_);
        db_ = nullptr;
    }

    sqlite3* db_ = nullptr;
    std::string file_;
    static constexpr std::int64_t kGap = 1 << 16;
    std::int64_t last_id_ = 0;
    std::int64_t gap_ = 1;
    std::int64_t in_front_ = 0;
    std::int64_t in_gap_ = 0;
    bool edited_ = false;
    std::vector<std::int64_t> order_;
    unsigned char* snapshot_ = nullptr;
    std::size_t snapshot_size_ = 0;
    std::unique_ptr<Statement> insert_, get_, at_id_, at_offset_, update_, delete_;
    std::unique_ptr<LinkStatements> linked_;
};

}  // namespace
}  // namespace tavolin::bench

int main(int argc, char** argv) {
    using namespace tavolin::bench;
    const std::string version = std::string("SQLite ") + sqlite3_libversion();
#ifdef TAVOLIN_BENCH_WITHOUT_ROWID
    return RunBench<SqliteStore<false>>(argc, argv, version);
#else
    return RunBench<SqliteStore<true>>(argc, argv, version);
#endif
}
