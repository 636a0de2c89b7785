// LMDB: folded key to flat record, in a file that is synced when it is saved.
#include <fcntl.h>
#include <lmdb.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>

#include "bench/flat_record.h"
#include "bench/workload.h"

namespace tavolin::bench {
namespace {

void Need(int result) {
    if (result == 0) return;
    std::cerr << mdb_strerror(result) << '\n';
    std::exit(1);
}

MDB_val Value(std::string& text) { return {text.size(), text.data()}; }
std::string_view Text(const MDB_val& value) {
    return {static_cast<const char*>(value.mv_data), value.mv_size};
}

class LmdbStore {
  public:
    static constexpr bool kKeepsOrder = false;

    explicit LmdbStore(const std::string& folder) : folder_(folder + "/lmdb") {
        std::filesystem::remove_all(folder_);
        std::filesystem::create_directories(folder_);
        Open(folder_);
    }
    ~LmdbStore() { Close(); }
    LmdbStore(const LmdbStore&) = delete;
    LmdbStore& operator=(const LmdbStore&) = delete;

    // One transaction for a run of changes, and one for all reading in between.
    void Begin() {
        EndReading();
        Need(mdb_txn_begin(env_, nullptr, 0, &writing_));
    }
    void End() {
        Need(mdb_txn_commit(writing_));
        writing_ = nullptr;
    }

    void Add(const Fields& fields) { Put(Data::Key(fields), fields); }
    void Update(std::string_view key, const Fields& fields) { Put(key, fields); }
    void Delete(std::string_view key) {
        const bool alone = writing_ == nullptr;
        if (alone) Begin();
        std::string folded = FoldAscii(key);
        MDB_val name = Value(folded);
        Need(mdb_del(writing_, db_, &name, nullptr));
        if (alone) End();
    }

    std::uint64_t Get(std::string_view key) {
        std::string folded = FoldAscii(key);
        MDB_val name = Value(folded);
        MDB_val value;
        Need(mdb_get(Reading(), db_, &name, &value));
        return Touch(Unflatten(Text(value))[1]);
    }

    void Save() {
        EndReading();
        const std::string copy = folder_ + "/copy";
        std::filesystem::remove_all(copy);
        std::filesystem::create_directories(copy);
        Need(mdb_env_copy(env_, copy.c_str()));
        const int file = open((copy + "/data.mdb").c_str(), O_RDWR);
        if (file < 0 || fsync(file) != 0 || close(file) != 0) std::exit(1);
    }
    void Forget() { Close(); }
    void Load() { Open(folder_ + "/copy"); }

    template <class Visit>
    void Walk(Visit&& visit) {
        MDB_cursor* cursor = nullptr;
        Need(mdb_cursor_open(Reading(), db_, &cursor));
        MDB_val key;
        MDB_val value;
        while (mdb_cursor_get(cursor, &key, &value, MDB_NEXT) == 0) visit(Unflatten(Text(value)));
        mdb_cursor_close(cursor);
    }

  private:
    void Open(const std::string& folder) {
        Need(mdb_env_create(&env_));
        Need(mdb_env_set_mapsize(env_, std::size_t{16} << 30));
        Need(mdb_env_open(env_, folder.c_str(), MDB_NOSYNC | MDB_WRITEMAP | MDB_NOLOCK, 0644));
        MDB_txn* txn = nullptr;
        Need(mdb_txn_begin(env_, nullptr, 0, &txn));
        Need(mdb_dbi_open(txn, nullptr, 0, &db_));
        Need(mdb_txn_commit(txn));
    }
    void Close() {
        EndReading();
        mdb_env_close(env_);
    }
    MDB_txn* Reading() {
        if (writing_ != nullptr) return writing_;
        if (reading_ == nullptr) Need(mdb_txn_begin(env_, nullptr, MDB_RDONLY, &reading_));
        return reading_;
    }
    void EndReading() {
        if (reading_ != nullptr) mdb_txn_abort(reading_);
        reading_ = nullptr;
    }
    void Put(std::string_view key, const Fields& fields) {
        std::string folded = FoldAscii(key);
        std::string flat = Flatten(fields);
        MDB_val name = Value(folded);
        MDB_val value = Value(flat);
        Need(mdb_put(writing_, db_, &name, &value, 0));
    }

    std::string folder_;
    MDB_env* env_ = nullptr;
    MDB_dbi db_ = 0;
    MDB_txn* writing_ = nullptr;
    MDB_txn* reading_ = nullptr;
};

}  // namespace
}  // namespace tavolin::bench

int main(int argc, char** argv) {
    int parts[3];
    mdb_version(&parts[0], &parts[1], &parts[2]);
    const std::string version = "LMDB " + std::to_string(parts[0]) + "." +
                                std::to_string(parts[1]) + "." + std::to_string(parts[2]);
    return tavolin::bench::RunBench<tavolin::bench::LmdbStore>(argc, argv, version);
}
