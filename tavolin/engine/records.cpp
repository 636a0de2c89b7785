// Reading, adding, changing, deleting and searching records.
#include <unordered_set>

#include "tavolin/base/text.h"
#include "tavolin/engine/report.h"
#include "tavolin/errors/stop_scope.h"

namespace tavolin {

// Runs body(table). A table that cannot be found is reported under the number of a record.
template <class Body>
decltype(auto) CVLDBEngine::WithRecordsOf(const TableArgument& table, const char* source,
                                          Body&& body) {
    return Report(source, [&]() -> decltype(auto) {
        AskOpen(source);
        return WhenRaised(
            CVLErrorNum::GetTableNotFoundError(),
            [&]() -> decltype(auto) { return body(Resolve(table)); },
            [&] {
                Raise(CVLErrorNum::GetRecordNotFoundError(), source,
                      Message("Table ", table.Text(), " Not Found!"));
            });
    });
}

std::shared_ptr<CVLRecordSet> CVLDBEngine::GetRecordSet(const TableArgument& forTable) {
    return WithRecordsOf(
        forTable, "CVLDBEngine:GetRecordSet Method",
        [](const std::shared_ptr<CVLTable>& table) { return table->CVLRecordSet(); });
}

std::shared_ptr<CVLRecord> CVLDBEngine::GetRecord(const TableArgument& fromTable,
                                                  const IndexKey& RecordNumOrKey) {
    static constexpr const char* kSource = "CVLDBEngine:GetRecord Method";
    return WithRecordsOf(fromTable, kSource, [&](const std::shared_ptr<CVLTable>& table) {
        return WhenRaised(
            CVLErrorNum::GetRecordNotFoundError(),
            [&] { return table->CVLRecordSet()->Item(RecordNumOrKey); },
            [&] {
                Raise(CVLErrorNum::GetRecordNotFoundError(), kSource,
                      Message("Record ", RecordNumOrKey.Text(), " Not Found!"));
            });
    });
}

std::vector<std::shared_ptr<CVLRecord>> CVLDBEngine::GetRecords(const TableArgument& fromTable,
                                                                std::span<const IndexKey> which) {
    return WithRecordsOf(fromTable, "CVLDBEngine:GetRecords Method",
                         [&](const std::shared_ptr<CVLTable>& table) {
                             return table->CVLRecordSet()->Items(which);
                         });
}

std::shared_ptr<CVLRecord> CVLDBEngine::AddRecord(
    const TableArgument& toTable, std::int32_t nKey, const FieldTexts& props,
    std::shared_ptr<CVLAttachmentSet> AttachmentsTable, const Placement& place) {
    return WithRecordsOf(
        toTable, "CVLDBEngine:AddRecord Method", [&](const std::shared_ptr<CVLTable>& table) {
            const auto tables = database_->tables;  // a handler may open another database
            auto record = table->Add(tables, nKey, props, std::move(AttachmentsTable), place);
            OnRecordAdd.Fire(record);
            LogAdded(*record, *table, tables);
            return record;
        });
}

// Mostly for the report alone, into which it is written without detours.
template <std::size_t N, std::size_t M>
void CVLDBEngine::LogRecord(const char (&event)[N], const CVLRecord& record,
                            const char (&preposition)[M], const CVLTable& table,
                            const std::shared_ptr<tavolin::CVLTableSet>& tables,
                            bool LogType::*activity) noexcept {
    if (database_->tables == tables && database_->switches.*activity) {
        Log([&] { return Message(event, record.Key(), preposition, table.Key()); }, true);
        return;
    }
    const std::size_t size = log_report_.size();
    try {
        log_report_.append(event, N - 1).append(record.Key()).append(preposition, M - 1);
        log_report_.append(table.Key()).append(kLineBreak);
    } catch (...) {
        log_report_.resize(size);
    }
}

void CVLDBEngine::LogAdded(const CVLRecord& record, const CVLTable& table,
                           const std::shared_ptr<tavolin::CVLTableSet>& tables) noexcept {
    LogRecord("New Record Added. Key: ", record, " To ", table, tables, &LogType::logRecordAdd);
}

void CVLDBEngine::LogDeleted(const CVLRecord& record, const CVLTable& table,
                             const std::shared_ptr<tavolin::CVLTableSet>& tables) noexcept {
    LogRecord("Record Deleted. Key: ", record, " From ", table, tables, &LogType::logRecordDelete);
}

std::shared_ptr<CVLRecord> CVLDBEngine::UpDateRecord(
    const TableArgument& inTable, const std::shared_ptr<CVLRecord>& record, std::int32_t,
    const FieldTexts& props, std::shared_ptr<CVLAttachmentSet> AttachmentsTable, const Placement&) {
    return WithRecordsOf(inTable, "CVLDBEngine:UpDateRecord Method",
                         [&](const std::shared_ptr<CVLTable>& table) {
                             const auto tables = database_->tables;
                             table->Update(tables, record, props, std::move(AttachmentsTable));
                             OnRecordUpDate.Fire(record);
                             LogRecord("Record Updated. Key: ", *record, " In ", *table, tables,
                                       &LogType::logRecordUpDate);
                             return record;
                         });
}

// A deletion with everything that it takes along, depth first, without a call within a call for
// every record on the way down. What is in deletion is not entered again.
class CVLDBEngine::RecordDeletion {
  public:
    explicit RecordDeletion(CVLDBEngine& engine) : engine_(engine) {}
    ~RecordDeletion() {
        while (!frames_.empty()) Leave();
    }

    void Run(const std::shared_ptr<CVLTable>& table, const std::shared_ptr<CVLRecord>& record) {
        OrTakeBack(
            [&] {
                Enter(table, record);
                while (!frames_.empty()) {
                    stop_.Ask();
                    Step();
                }
            },
            [&] { TakeBack(); });
    }

  private:
    struct Frame {
        std::shared_ptr<CVLTable> table;
        std::shared_ptr<CVLRecord> record;
        int field = 0;
    };
    struct Removal {
        Frame frame;
        std::uint32_t position;
        bool put_back = false;
    };

    void Enter(const std::shared_ptr<CVLTable>& table, const std::shared_ptr<CVLRecord>& record) {
        frames_.push_back({table, record});
        in_deletion_.insert(record.get());
        table->SetCascadeGuard(false);
    }

    Frame Leave() {
        Frame frame = std::move(frames_.back());
        frames_.pop_back();
        in_deletion_.erase(frame.record.get());
        frame.table->SetCascadeGuard(true);
        return frame;
    }

    // A handler may have taken the record out while what it refers to was being deleted.
    static bool Stands(const Frame& frame) {
        const auto records = frame.table->CVLRecordSet()->Collection();
        return records->Holds(frame.record->arena(), frame.record->handle());
    }

    void Step() {
        Frame& frame = frames_.back();
        const bool follows = !frame.table->IsResult();
        if (follows && frame.field < kFieldCount) {
            Follow(frame, frame.field++);
            return;
        }
        if (follows && !Stands(frame)) {
            Leave();
            return;
        }
        if (frames_.size() > 1) NoteRemoval(frame);
        frame.table->Remove(frame.record);
        const Frame done = Leave();
        engine_.OnRecordRemove.Fire(done.record);
        engine_.LogDeleted(*done.record, *done.table, tables_);
    }

    // For a record that goes before the one that it goes with: memory may run out in between.
    void NoteRemoval(const Frame& frame) {
        const auto records = frame.table->CVLRecordSet()->Collection();
        removals_.push_back({frame, records->PositionOf(frame.record->handle())});
    }

    // Puts back what is gone, in the opposite order, and when all is there says so to those who
    // were told. Not when the record that all went with is gone: then it was a handler who ran out
    // of memory.
    void TakeBack() {
        if (frames_.empty() || !Stands(frames_.front())) return;
        for (auto each = removals_.rbegin(); each != removals_.rend(); ++each) PutBack(*each);
        for (auto each = removals_.rbegin(); each != removals_.rend(); ++each) {
            if (!each->put_back) continue;
            const Frame& frame = each->frame;
            frame.table->CVLRecordSet()->OnRecordAdd.Fire(frame.record);
            frame.table->OnRecordAdd.Fire(frame.record);
            engine_.OnRecordAdd.Fire(frame.record);
            engine_.LogAdded(*frame.record, *frame.table, tables_);
        }
    }

    // Not where a handler has given the table other records, or the key to another record.
    void PutBack(Removal& removal) {
        const CVLRecord& record = *removal.frame.record;
        const auto records = removal.frame.table->CVLRecordSet()->Collection();
        if (records->shared_arena() != record.arena() || records->Holds(record.handle())) return;
        try {
            records->PutBack(record.handle(), removal.position);
            removal.put_back = true;
        } catch (const Error& error) {
            if (error.number() != kDuplicateKey) throw;
        }
    }

    // Enters the record that this field refers to, if nothing else refers to it.
    void Follow(const Frame& frame, int field) {
        if (!frame.table->FieldIsForeignKey(field)) return;
        const auto linked = tables_->Lookup(frame.table->LinkedTable(field));
        const std::string value = frame.record->prop(field);
        if (!linked || value.empty()) return;
        const auto& records = *linked->CVLRecordSet()->Collection();
        const RecordHandle handle = records.Find(value);
        if (handle == kNoHandle) return;
        const auto dependent = records.Object(handle);
        if (in_deletion_.contains(dependent.get())) return;
        if (!OthersHold(value, linked->Key(), *frame.record)) Enter(linked, dependent);
    }

    // Whether a record other than this one holds the value in a field that links to the table.
    bool OthersHold(const std::string& value, const std::string& table,
                    const CVLRecord& record) const {
        return tables_->links().Any(table, [&](const CVLTable& referrer) {
            const auto& records = *referrer.CVLRecordSet()->Collection();
            for (int field = 0; field < kFieldCount; ++field) {
                if (EqualFold(referrer.LinkedTable(field), table) &&
                    records.HeldByOthers(field, value, record)) {
                    return true;
                }
            }
            return false;
        });
    }

    const StopCheck stop_;
    CVLDBEngine& engine_;
    // A handler may open another database.
    const std::shared_ptr<tavolin::CVLTableSet> tables_ = engine_.database_->tables;
    std::vector<Frame> frames_;
    std::vector<Removal> removals_;
    std::unordered_set<const CVLRecord*> in_deletion_;
};

void CVLDBEngine::DeleteRecord(const TableArgument& fromTable, const IndexKey& RecordNumOrKey,
                               bool CascadeDelete) {
    WithRecordsOf(fromTable, "CVLDBEngine:RemoveRecord Method",
                  [&](const std::shared_ptr<CVLTable>& table) {
                      const auto record = table->CVLRecordSet()->Item(RecordNumOrKey);
                      if (CascadeDelete) {
                          RecordDeletion(*this).Run(table, record);
                      } else {
                          DeleteAlone(table, record);
                      }
                  });
}

void CVLDBEngine::DeleteAlone(const std::shared_ptr<CVLTable>& table,
                              const std::shared_ptr<CVLRecord>& record) {
    StopCheck().Ask();
    const auto tables = database_->tables;
    {
        const struct Unguarded {
            explicit Unguarded(CVLTable& guarded) : table(guarded) { table.SetCascadeGuard(false); }
            ~Unguarded() { table.SetCascadeGuard(true); }
            CVLTable& table;
        } unguarded(*table);
        table->Remove(record);
    }
    OnRecordRemove.Fire(record);
    LogDeleted(*record, *table, tables);
}

std::shared_ptr<CVLTable> CVLDBEngine::Find(std::string_view Value, bool ValueIsAKey,
                                            const std::shared_ptr<CVLTable>& inTable,
                                            int inFldNumber) {
    static constexpr const char* kSource = "CVLDBEngine:Find Method";
    const auto find_in = [&](const std::shared_ptr<CVLTable>& table) {
        auto result = table->Find(Value, ValueIsAKey, inFldNumber);
        if (result->Count() == 0) return std::shared_ptr<CVLTable>();
        result->NameResult(table->Key());
        return result;
    };
    auto result = Report(kSource, [&] {
        AskOpen(kSource);
        if (inTable) return find_in(inTable);
        for (const auto& table : database_->tables->NewEnum()) {
            if (auto found = find_in(table)) return found;
        }
        return std::shared_ptr<CVLTable>();
    });
    if (result) return result;
    // Not a failure that the log tells of.
    const Error nothing(CVLErrorNum::GetValueNotFoundError(), kSource,
                        Message("Value: ", Value, " Not Found In DataBase!"));
    ReportError(nothing, kSource, OnFailure::kLogNothing);
}

}  // namespace tavolin
