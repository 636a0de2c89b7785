// LevelDB: folded key to flat record, in files. What it has written it need not save.
#include <leveldb/cache.h>
#include <leveldb/db.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>

#include "bench/flat_record.h"
#include "bench/workload.h"

namespace tavolin::bench {
namespace {

void Need(const leveldb::Status& status) {
    if (status.ok()) return;
    std::cerr << status.ToString() << '\n';
    std::exit(1);
}

class LevelDbStore {
  public:
    static constexpr bool kKeepsOrder = false;

    explicit LevelDbStore(const std::string& folder) : folder_(folder + "/leveldb") {
        std::filesystem::remove_all(folder_);
        Load();
    }
    LevelDbStore(const LevelDbStore&) = delete;
    LevelDbStore& operator=(const LevelDbStore&) = delete;

    void Begin() {}
    void End() {}

    void Add(const Fields& fields) { Update(Data::Key(fields), fields); }
    void Update(std::string_view key, const Fields& fields) {
        Need(db_->Put({}, FoldAscii(key), Flatten(fields)));
    }
    void Delete(std::string_view key) { Need(db_->Delete({}, FoldAscii(key))); }
    std::uint64_t Get(std::string_view key) {
        Need(db_->Get({}, FoldAscii(key), &value_));
        return Touch(Unflatten(value_)[1]);
    }

    void Save() {
        leveldb::WriteOptions synced;
        synced.sync = true;
        Need(db_->Put(synced, "", value_));
        Need(db_->Delete({}, ""));
    }
    void Forget() { db_.reset(); }
    void Load() {
        leveldb::Options options;
        options.create_if_missing = true;
        options.block_cache = cache_.get();
        options.write_buffer_size = std::size_t{64} << 20;
        leveldb::DB* db = nullptr;
        Need(leveldb::DB::Open(options, folder_, &db));
        db_.reset(db);
    }

    template <class Visit>
    void Walk(Visit&& visit) {
        const std::unique_ptr<leveldb::Iterator> walk(db_->NewIterator({}));
        for (walk->SeekToFirst(); walk->Valid(); walk->Next())
            visit(Unflatten({walk->value().data(), walk->value().size()}));
    }

  private:
    std::string folder_;
    std::string value_;
    std::unique_ptr<leveldb::Cache> cache_{leveldb::NewLRUCache(std::size_t{1} << 30)};
    std::unique_ptr<leveldb::DB> db_;
};

}  // namespace
}  // namespace tavolin::bench

int main(int argc, char** argv) {
    const std::string version = "LevelDB " + std::to_string(leveldb::kMajorVersion) + "." +
                                std::to_string(leveldb::kMinorVersion);
    return tavolin::bench::RunBench<tavolin::bench::LevelDbStore>(argc, argv, version);
}
