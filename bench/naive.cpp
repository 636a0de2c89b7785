// What one would write without thinking: a vector of shared records of ten strings, and a hash map
// from the folded key.
#include <unordered_map>

#include "bench/files.h"
#include "bench/workload.h"

namespace tavolin::bench {
namespace {

using Record = std::array<std::string, 10>;
using RecordPtr = std::shared_ptr<Record>;

class NaiveStore {
  public:
    static constexpr bool kFoldsUnicode = false;
    static constexpr bool kKeepsOrder = true;
    static constexpr bool kSortRearranges = true;
    static constexpr bool kSortsField1 = false;

    explicit NaiveStore(const std::string& folder) : file_(folder + "/bench.bin") {}

    void Begin() {}
    void End() {}

    void Add(const Fields& fields) { InsertAt(records_.size(), fields); }
    std::uint64_t Get(std::string_view key) { return Touch((*by_key_.at(FoldAscii(key)))[1]); }
    std::uint64_t At(std::size_t position) { return Touch((*records_[position])[1]); }
    void InsertAt(std::size_t position, const Fields& fields) {
        auto record = std::make_shared<Record>();
        std::ranges::copy(fields, record->begin());
        if (!by_key_.emplace(KeyOf(*record), record).second) return;
        records_.insert(records_.begin() + static_cast<std::ptrdiff_t>(position), record);
    }
    void Update(std::string_view key, const Fields& fields) {
        std::ranges::copy(fields, by_key_.at(FoldAscii(key))->begin());
    }
    void Delete(std::string_view key) {
        const auto found = by_key_.find(FoldAscii(key));
        records_.erase(std::ranges::find(records_, found->second));
        by_key_.erase(found);
    }

    std::uint64_t Find(int field, std::string_view needle, bool digest) {
        const std::string folded = FoldAscii(needle);
        std::vector<RecordPtr> found;
        for (const auto& record : records_) {
            const std::string text =
                FoldAscii(field < 0 ? Joined(*record) : (*record)[static_cast<std::size_t>(field)]);
            if (text.find(folded) != std::string::npos) found.push_back(record);
        }
        if (!digest) return found.size();
        std::uint64_t sum = 0;
        for (const auto& record : found) sum += Digest(FieldsOf(*record));
        return sum;
    }

    void Sort(int field) {
        std::vector<std::pair<std::string, RecordPtr>> entries;
        for (const auto& record : records_) {
            const std::string& first = (*record)[static_cast<std::size_t>(field)];
            std::string text = first;
            for (const auto& other : *record) {
                if (&other != &first) text += other;
            }
            entries.emplace_back(FoldAscii(text), record);
        }
        std::ranges::stable_sort(
            entries, {}, [](const auto& entry) -> const std::string& { return entry.first; });
        std::ranges::transform(entries, records_.begin(), [](auto& entry) { return entry.second; });
    }

    void Save() { WriteAndSync(file_, Bytes()); }
    void Forget() {
        records_.clear();
        by_key_.clear();
    }
    void Load() {
        std::vector<char> bytes(FileSize(file_));
        ReadInto(file_, bytes);
        Rebuild(bytes);
    }

    void Snapshot() { snapshot_ = Bytes(); }
    void Restore() {
        Forget();
        Rebuild(snapshot_);
    }
    void EndSnapshot() { snapshot_ = {}; }

    void Link(int field) {
        field_ = static_cast<std::size_t>(field);
        for (const auto& record : records_) {
            const std::string& value = (*record)[field_];
            linked_.emplace(FoldAscii(value), value);
        }
    }
    std::uint64_t Linked() { return linked_.size(); }
    void DeleteCascading(std::string_view key) {
        const auto record = by_key_.at(FoldAscii(key));
        const std::string value = FoldAscii((*record)[field_]);
        const bool shared = std::ranges::any_of(records_, [&](const RecordPtr& other) {
            return other != record && FoldAscii((*other)[field_]) == value;
        });
        if (!shared) linked_.erase(value);
        Delete(key);
    }

    template <class Visit>
    void Walk(Visit&& visit) {
        for (const auto& record : records_) visit(FieldsOf(*record));
    }

  private:
    static std::string KeyOf(const Record& record) { return FoldAscii(record[0] + record[2]); }
    static std::string Joined(const Record& record) {
        std::string joined;
        for (const auto& field : record) joined += field;
        return joined;
    }
    static Fields FieldsOf(const Record& record) {
        Fields fields;
        std::ranges::copy(record, fields.begin());
        return fields;
    }

    std::vector<char> Bytes() const {
        std::vector<char> bytes;
        for (const auto& record : records_) {
            for (const auto& field : *record) {
                bytes.push_back(static_cast<char>(field.size()));
                bytes.insert(bytes.end(), field.begin(), field.end());
            }
        }
        return bytes;
    }
    void Rebuild(const std::vector<char>& bytes) {
        for (std::size_t at = 0; at < bytes.size();) {
            auto record = std::make_shared<Record>();
            for (auto& field : *record) {
                const auto size = static_cast<unsigned char>(bytes[at]);
                field.assign(bytes.data() + at + 1, size);
                at += 1u + size;
            }
            by_key_.emplace(KeyOf(*record), record);
            records_.push_back(std::move(record));
        }
    }

    std::string file_;
    std::vector<RecordPtr> records_;
    std::unordered_map<std::string, RecordPtr> by_key_;
    std::vector<char> snapshot_;
    std::size_t field_ = 0;
    std::unordered_map<std::string, std::string> linked_;
};

}  // namespace
}  // namespace tavolin::bench

int main(int argc, char** argv) {
    return tavolin::bench::RunBench<tavolin::bench::NaiveStore>(argc, argv, "object tree");
}
