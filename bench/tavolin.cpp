// Tavolin, through its public classes. Log switches are off.
#include "tavolin/tavolin.h"

#include <filesystem>

#include "bench/workload.h"

namespace tavolin::bench {
namespace {

constexpr std::string_view kTable = "Records";
constexpr std::string_view kNumbers = "Numbers";
constexpr Fields kLabels = {"Code",  "Name", "Region", "Street", "City",
                            "State", "Day",  "Amount", "Number", "Remark"};

class TavolinStore {
  public:
    static constexpr bool kFoldsUnicode = true;
    static constexpr bool kKeepsOrder = true;
    static constexpr bool kSortRearranges = true;
    static constexpr bool kSortsField1 = true;

    explicit TavolinStore(const std::string& folder) : folder_(folder) {
        std::filesystem::remove(file());
        user_ = LogOn();
        engine_->CreateNewDB("bench", folder_, "secret");
        table_ = engine_->CreateNewPrimaryTable(kTable, kLabels, 0, 2);
    }

    void Begin() {}
    void End() {}

    void Add(const Fields& fields) { engine_->AddRecord(kTable, 1, fields); }
    void AddDirectly(const Fields& fields) { table_->Add(engine_->CVLTableSet(), 1, fields); }

    std::uint64_t Get(std::string_view key) {
        return Touch(engine_->GetRecord(kTable, key)->prop(1));
    }
    std::uint64_t GetDirectly(std::string_view key) {
        return Touch(table_->GetRecord(key)->prop(1));
    }
    std::uint64_t At(std::size_t position) {
        return Touch(engine_->GetRecord(kTable, position + 1)->prop(1));
    }
    std::uint64_t AtDirectly(std::size_t position) {
        return Touch(table_->GetRecord(position + 1)->prop(1));
    }

    // A page is got, and what it holds read one after the other.
    template <class Which>
    std::uint64_t InPages(const std::vector<Which>& which, std::size_t i) {
        if (i % kPage == 0) {
            wanted_.clear();
            for (std::size_t at = i; at < std::min(i + kPage, which.size()); ++at) {
                wanted_.push_back(KeyFor(which[at]));
            }
            page_ = table_->GetRecords(wanted_);
        }
        return Touch(page_[i % kPage]->prop(1));
    }

    void Update(std::string_view key, const Fields& fields) {
        engine_->UpDateRecord(kTable, engine_->GetRecord(kTable, key), 1, fields);
    }
    void InsertAt(std::size_t position, const Fields& fields) {
        if (position == 0) {
            engine_->AddRecord(kTable, 1, fields, nullptr, {.before = 1});
        } else {
            engine_->AddRecord(kTable, 1, fields, nullptr, {.after = position});
        }
    }
    void Delete(std::string_view key) { engine_->DeleteRecord(kTable, key, false); }
    void DeleteDirectly(std::string_view key) { table_->Remove(key); }

    std::uint64_t Find(int field, std::string_view needle, bool digest) {
        const auto found = engine_->Find(needle, false, table_, field < 0 ? int{kNoField} : field);
        if (!digest) return static_cast<std::uint64_t>(found->Count());
        std::uint64_t sum = 0;
        for (const auto& record : found->CVLRecordSet()->NewEnum()) sum += DigestOf(*record);
        return sum;
    }

    void Sort(int field) { table_->Sort(field); }

    std::string file() const { return folder_ + "/bench.cdb"; }
    void Save() { engine_->SaveDB(); }
    // What would free the old database's memory within the time.
    void Forget() {
        table_.reset();
        user_ = LogOn();
    }
    void Load() {
        engine_->LoadDB(file());
        engine_->DBLegalUser(user_, Ownership);
        table_ = engine_->GetTable(kTable);
    }

    void Snapshot() { engine_->TransactionBegin(); }
    void Restore() {
        engine_->TansactionAbort();
        table_ = engine_->GetTable(kTable);
    }
    void EndSnapshot() {
        if (engine_->TransactionStarted()) Restore();
    }

    void Link(int field) {
        engine_->CreateNewPrimaryTable(kNumbers, {"Number"}, 0);
        engine_->LinkTables(kTable, field, kNumbers);
    }
    std::uint64_t Linked() {
        return static_cast<std::uint64_t>(engine_->GetTable(kNumbers)->Count());
    }
    void DeleteCascading(std::string_view key) { engine_->DeleteRecord(kTable, key, true); }

    template <class Visit>
    void Walk(Visit&& visit) {
        for (const auto& record : table_->CVLRecordSet()->NewEnum()) Show(*record, visit);
    }

    void Publish(Bench& bench) {
        if (bench.checks()) return;
        PublishAs(bench, "export-text", [&](const std::string& to) { engine_->MakeItText(to); });
        PublishAs(bench, "export-html", [&](const std::string& to) { engine_->MakeItHTML(to); });
        PublishAs(bench, "export-mdb", [&](const std::string& to) { engine_->MakeItMDB(to); });
    }

  private:
    static constexpr std::size_t kPage = 16;
    static IndexKey KeyFor(std::string_view key) { return key; }
    static IndexKey KeyFor(std::size_t position) { return position + 1; }

    template <class Visit>
    static void Show(const CVLRecord& record, Visit&& visit) {
        std::array<std::string, 10> texts;
        for (int field = 0; field < 10; ++field)
            texts[static_cast<std::size_t>(field)] = record.prop(field);
        visit(Fields{texts[0], texts[1], texts[2], texts[3], texts[4], texts[5], texts[6], texts[7],
                     texts[8], texts[9]});
    }
    static std::uint64_t DigestOf(const CVLRecord& record) {
        std::uint64_t digest = 0;
        Show(record, [&](const Fields& fields) { digest = Digest(fields); });
        return digest;
    }

    std::shared_ptr<CVLDBUser> LogOn() {
        engine_ = std::make_unique<CVLDBEngine>();
        engine_->LogOn("bench", "secret");
        return engine_->LogedOnUser();
    }

    struct Written {
        std::string path;
        std::vector<char> bytes;
    };
    static std::vector<Written> FilesIn(const std::string& folder) {
        std::vector<Written> files;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
            if (!entry.is_regular_file()) continue;
            files.push_back({entry.path(), std::vector<char>(entry.file_size())});
            ReadInto(files.back().path, files.back().bytes);
        }
        return files;
    }

    // Megabytes a second, and those of a plain write of the same files in the same place.
    template <class Body>
    void PublishAs(Bench& bench, const std::string& operation, Body&& body) {
        if (!bench.Wants(operation)) return;
        const std::string target = folder_ + "/out";
        std::filesystem::create_directories(target);
        SyncDisk(target);
        const auto start = Clock::now();
        body(target);
        const double seconds = Seconds(start);
        const auto files = FilesIn(target);
        double megabytes = 0;
        for (const auto& file : files) {
            megabytes += static_cast<double>(file.bytes.size()) / 1e6;
            std::filesystem::remove(file.path);
        }
        SyncDisk(target);
        const auto start_writing = Clock::now();
        for (const auto& file : files) Write(file.path, file.bytes);
        bench.Value(operation + "-plain", "MB/s", megabytes / Seconds(start_writing));
        bench.Value(operation, "MB/s", megabytes / seconds);
        std::filesystem::remove_all(target);
    }

    std::string folder_;
    std::unique_ptr<CVLDBEngine> engine_;
    std::shared_ptr<CVLDBUser> user_;
    std::shared_ptr<CVLTable> table_;
    std::vector<IndexKey> wanted_;
    std::vector<std::shared_ptr<CVLRecord>> page_;
};

}  // namespace
}  // namespace tavolin::bench

int main(int argc, char** argv) {
    return tavolin::bench::RunBench<tavolin::bench::TavolinStore>(argc, argv, "Tavolin");
}
