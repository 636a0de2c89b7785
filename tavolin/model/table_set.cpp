#include "tavolin/model/table_set.h"

#include <vector>

#include "tavolin/base/text.h"
#include "tavolin/errors/error_num.h"
#include "tavolin/errors/trap.h"
#include "tavolin/model/field_argument.h"
#include "tavolin/model/navigation.h"
#include "tavolin/model/permission.h"
#include "tavolin/model/session.h"
#include "tavolin/model/stored_collection.h"

namespace tavolin {
namespace {

constexpr NavigationTexts kTableNavigation = {"CVLTableSet",
                                              "Table Not Found Error ",
                                              CVLErrorNum::GetFirstTableError(),
                                              CVLErrorNum::GetLastTableError(),
                                              CVLErrorNum::GetPreviousTableError(),
                                              CVLErrorNum::GetNextTableError()};

[[noreturn]] void RaiseTableNotFound(const char* source) {
    Raise(CVLErrorNum::GetTableNotFoundError(), source, Message("Table Not Found!"));
}

[[noreturn]] void RaiseTableTaken(const char* source) {
    Raise(CVLErrorNum::GetTableAddError(), source,
          Message("The Table That Is Being Added Already Exists In DataBase!"));
}

}  // namespace

CVLTableSet::CVLTableSet() : CVLTableSet(Session::Current()) {}

CVLTableSet::CVLTableSet(std::shared_ptr<Session> session) : session_(std::move(session)) {}

CVLTableSet::~CVLTableSet() { Detach(); }

void CVLTableSet::Detach() {
    tables_->ForEach([this](const std::shared_ptr<CVLTable>& table) {
        if (table->set() == this) table->JoinSet(nullptr);
    });
    links_.Clear();
}

bool CVLTableSet::CanAdd(IndexKey Key) const {
    return Trap("CVLTableSet:CanAdd Method", [&] {
        if (!Key.is_position() && Key.key().empty()) return false;
        return tables_->Find(Key) == nullptr;
    });
}

std::shared_ptr<CVLTable> CVLTableSet::Add(std::string_view Key, TableEnum TableType,
                                           std::shared_ptr<CVLRecordSet> RecordSet,
                                           const FieldTexts& FieldNames) {
    static constexpr const char* kSource = "CVLTableSet:Add Method";
    return Trap(kSource, [&] {
        AskWrite(*session_, kSource);
        CheckedByte(TableType);
        if (Key.empty()) RaiseRunTime(kInvalidCall);
        if (tables_->Contains(Key)) RaiseTableTaken(kSource);
        auto table = std::make_shared<CVLTable>(session_);
        table->Key(Key);
        table->SetSpecificType(TableType);
        if (RecordSet) table->CVLRecordSet(std::move(RecordSet));
        for (int i = 0; i < kFieldCount; ++i) {
            table->FieldName(i, FieldNames[i]);
            table->FieldLabel(i, FieldNames[i]);
        }
        tables_->Add(Key, table);
        table->JoinSet(this);
        OnTableAdd.Fire(table);
        return table;
    });
}

std::shared_ptr<CVLTable> CVLTableSet::Update(IndexKey varKey, TableEnum TableType,
                                              std::shared_ptr<CVLRecordSet> RecordSet,
                                              const FieldTexts& FieldLabels) {
    static constexpr const char* kSource = "CVLTableSet:Update Method";
    return Trap(kSource, [&] {
        AskWrite(*session_, "CVLTableSet:UpDate Method");
        auto table = tables_->Find(varKey);
        if (!table) {
            Raise(CVLErrorNum::GetTableUpDateError(), kSource, Message("Table Does Not Exist!"));
        }
        CheckedByte(TableType);
        if (RecordSet) table->CVLRecordSet(std::move(RecordSet));
        table->SetSpecificType(TableType);
        for (int i = 0; i < kFieldCount; ++i) {
            if (!FieldLabels[i].empty()) table->FieldLabel(i, FieldLabels[i]);
        }
        OnTableUpDate.Fire(table);
        return table;
    });
}

std::shared_ptr<CVLTable> CVLTableSet::Item(IndexKey vntIndexKey) const {
    static constexpr const char* kSource = "CVLTableSet:Item Property Get";
    return Trap(kSource, [&] {
        AskRead(*session_, kSource);
        const bool by_name = !vntIndexKey.is_position();
        if (by_name && last_found_ && last_found_->Key() == vntIndexKey.key()) return last_found_;
        auto table = tables_->Find(vntIndexKey);
        if (!table) RaiseTableNotFound(kSource);
        if (by_name) last_found_ = table;
        return table;
    });
}

void CVLTableSet::AskToRemove() const {
    static constexpr const char* kSource = "CVLTableSet:Remove Method";
    Trap(kSource, [&] {
        if (session_->IsOwner()) return;
        Raise(CVLErrorNum::GetUserIsNotDBOwnerError(), kSource,
              Message("User: ", session_->UserName(),
                      " Is Not The DataBase Owner\r\n"
                      "Thus Does Not Have The Right To Delete Tables!"));
    });
}

void CVLTableSet::Remove(IndexKey vntIndexKey) {
    static constexpr const char* kSource = "CVLTableSet:Remove Method";
    Trap(kSource, [&] {
        AskToRemove();
        const auto table = tables_->Find(vntIndexKey);
        if (!table) RaiseTableNotFound(kSource);
        TakeOut(table);
    });
}

void CVLTableSet::TakeOut(const std::shared_ptr<CVLTable>& table) {
    table->ForEachMention([&](const std::string& name) { links_.Remove(name, *table); });
    last_found_.reset();
    tables_->Remove(tables_->PositionOf(table.get()));
    table->JoinSet(nullptr);
    OnTableRemove.Fire(table);
}

void CVLTableSet::Remove(const CVLTable& table) {
    const std::int32_t position = tables_->PositionOf(&table);
    Remove(position);  // 0 is that of no table
}

void CVLTableSet::Rename(const CVLTable& table, std::string_view name, const char* source) {
    if (name.empty()) RaiseRunTime(kInvalidCall);
    const auto other = tables_->Find(name);
    if (other && other.get() != &table) RaiseTableTaken(source);
    const std::string old_name = table.Key();
    struct Mention {
        CVLTable* by;
        std::string* text;
        std::string new_text;
    };
    std::vector<Mention> mentions;
    for (CVLTable* const each : links_.All(old_name)) {
        each->ForEachMention([&](std::string& text) {
            if (EqualFold(text, old_name)) mentions.push_back({each, &text, std::string(name)});
        });
    }
    std::size_t added = 0;
    try {
        for (; added < mentions.size(); ++added) links_.Add(name, *mentions[added].by);
        if (tables_->Find(old_name).get() == &table) tables_->Rename(old_name, name);
    } catch (...) {
        while (added > 0) links_.Remove(name, *mentions[--added].by);
        throw;
    }
    // Nothing fails from here on.
    for (Mention& mention : mentions) {
        links_.Remove(old_name, *mention.by);
        mention.text->swap(mention.new_text);
    }
}

void CVLTableSet::JoinSession(std::shared_ptr<Session> session) {
    session_ = std::move(session);
    tables_->ForEach(
        [this](const std::shared_ptr<CVLTable>& table) { table->JoinSession(session_); });
}

void CVLTableSet::WriteProperties(PropertyBagWriter& bag) const {
    WriteCollection(bag, *tables_, "ListsCount", "List");
}

void CVLTableSet::ReadProperties(PropertyBagReader& bag) {
    auto tables = ReadCollection<CVLTable>(
        bag, "ListsCount", "List", [this] { return std::make_shared<CVLTable>(session_); },
        [](const CVLTable& table) { return std::string_view(table.Key()); });
    LinkIndex links;
    tables->ForEach([&](const std::shared_ptr<CVLTable>& table) {
        table->ForEachMention([&](const std::string& name) { links.Add(name, *table); });
    });
    Detach();
    last_found_.reset();
    tables_ = std::move(tables);
    links_ = std::move(links);
    tables_->ForEach([this](const std::shared_ptr<CVLTable>& table) { table->JoinSet(this); });
}

std::shared_ptr<CVLTable> CVLTableSet::LastTable() const {
    return Navigation(*this, kTableNavigation).Last();
}

std::shared_ptr<CVLTable> CVLTableSet::FirstTable() const {
    return Navigation(*this, kTableNavigation).First();
}

std::shared_ptr<CVLTable> CVLTableSet::PreviousTable(std::int32_t nKey) const {
    return Navigation(*this, kTableNavigation).Previous(nKey);
}

std::shared_ptr<CVLTable> CVLTableSet::NextTable(std::int32_t nKey) const {
    return Navigation(*this, kTableNavigation).Next(nKey);
}

bool CVLTableSet::PreviousTableIsAvailable(std::int32_t nKey) const {
    return Navigation(*this, kTableNavigation).PreviousIsAvailable(nKey);
}

bool CVLTableSet::NextTableIsAvailable(std::int32_t nKey) const {
    return Navigation(*this, kTableNavigation).NextIsAvailable(nKey);
}

bool CVLTableSet::FirstTableIsAvailable() const {
    return Navigation(*this, kTableNavigation).FirstIsAvailable();
}

}  // namespace tavolin
