#include "cli/import_target.h"

#include <cstdint>
#include <utility>

#include "tavolin/base/text.h"

namespace tavolin::cli {
namespace {

constexpr std::int32_t kRecordNumber = 1;

class Existing : public ImportTarget {
  public:
    Existing(Host& host, std::shared_ptr<CVLTable> table)
        : ImportTarget(table->PrimaryKey()), host_(host), table_(std::move(table)) {
        if (host_.in_session()) Remember(table_);
    }

    bool Holds(std::string_view key) const override { return !table_->CanAdd(key); }
    void Add(const FieldTexts& values) override {
        host_.engine().AddRecord(table_, kRecordNumber, values);
    }
    void Finish() override {}
    void Undo() override {
        for (const auto& [table, state] : before_) table->CVLRecordSet()->ObjectState(state);
    }

  private:
    // Adding a record adds the records that it refers to, along chains of links.
    void Remember(const std::shared_ptr<CVLTable>& table) {
        for (const auto& [known, state] : before_) {
            if (known == table) return;
        }
        before_.emplace_back(table, table->CVLRecordSet()->ObjectState());
        const auto tables = host_.engine().CVLTableSet();
        for (int field = 0; field < kFieldCount; ++field) {
            const std::string& target = table->LinkedTable(field);
            if (!target.empty() && !tables->CanAdd(target)) Remember(tables->Item(target));
        }
    }

    Host& host_;
    std::shared_ptr<CVLTable> table_;
    std::vector<std::pair<std::shared_ptr<CVLTable>, std::vector<std::uint8_t>>> before_;
};

class Staged : public ImportTarget {
  public:
    Staged(Host& host, std::string name, std::vector<std::string> fields, PrimaryKeyType key)
        : ImportTarget(key), host_(host), name_(std::move(name)), fields_(std::move(fields)) {}

    bool Holds(std::string_view key) const override { return !records_->CanAdd(key); }
    void Add(const FieldTexts& values) override { records_->Add(key(), kRecordNumber, values); }
    void Finish() override {
        const PrimaryKeyType parts = key();
        const auto table = host_.engine().CreateNewPrimaryTable(
            name_, fields_, parts.Part0, parts.Part1, parts.Part2, parts.Part3);
        table->CVLRecordSet(std::exchange(records_, nullptr));
    }
    void Undo() override { records_.reset(); }

  private:
    Host& host_;
    std::string name_;
    std::vector<std::string> fields_;
    std::shared_ptr<CVLRecordSet> records_ = std::make_shared<CVLRecordSet>();
};

}  // namespace

std::unique_ptr<ImportTarget> ExistingTable(Host& host, std::shared_ptr<CVLTable> table) {
    return std::make_unique<Existing>(host, std::move(table));
}

std::unique_ptr<ImportTarget> NewTable(Host& host, std::string name,
                                       std::vector<std::string> fields,
                                       const std::array<int, 4>& key) {
    auto part = [&](std::size_t i) { return static_cast<std::uint8_t>(key[i]); };
    return std::make_unique<Staged>(host, std::move(name), std::move(fields),
                                    PrimaryKeyType{part(0), part(1), part(2), part(3)});
}

}  // namespace tavolin::cli
