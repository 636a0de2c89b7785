// Creating, finding, linking, unlinking and deleting tables.
#include "tavolin/engine/report.h"

namespace tavolin {
namespace {

constexpr std::int32_t kTableNotFound = CVLErrorNum::GetTableNotFoundError();

void CheckKeyFields(std::initializer_list<int> fields, const char* source) {
    for (const int field : fields) {
        if (field != kNoField) CheckedField(field, source);
    }
}

[[noreturn]] void RaiseTableNotFound(const char* source, const Message& message) {
    Raise(kTableNotFound, source, message);
}

}  // namespace

// Without a table the error is that of a missing one.
std::shared_ptr<CVLTable> CVLDBEngine::Resolve(const TableArgument& table) const {
    if (!table.is_table()) return database_->tables->Item(table.which());
    if (!table.table()) throw Error(kTableNotFound, {}, Message("Table Not Found!"));
    return table.table();
}

std::shared_ptr<CVLTable> CVLDBEngine::CreateNewPrimaryTable(
    std::string_view TableName, const FieldTexts& FieldLabels, int FieldNumAsPrimKey,
    int withFieldNumAsPrimKey, int andFieldNumAsPrimKey, int plusFieldNumAsPrimKey) {
    static constexpr const char* kSource = "CVLDBEngine:CreateNewPrimaryTable Method";
    return Report(kSource, [&] {
        AskOpen(kSource);
        CheckKeyFields(
            {FieldNumAsPrimKey, withFieldNumAsPrimKey, andFieldNumAsPrimKey, plusFieldNumAsPrimKey},
            kSource);
        const auto tables = database_->tables;  // a handler may open another database
        auto table = WhenRaised(
            CVLErrorNum::GetTableAddError(),
            [&] { return tables->Add(TableName, isPrimaryTable, nullptr, FieldLabels); },
            [&] {
                Raise(CVLErrorNum::GetNewTableCreationError(), kSource,
                      Message("The Table ", TableName, " That Is Being Created Already Exists!"));
            });
        table->SetPrimaryKeyFields(FieldNumAsPrimKey, withFieldNumAsPrimKey, andFieldNumAsPrimKey,
                                   plusFieldNumAsPrimKey);
        OnTableCreation.Fire(table->Key());
        Log([&] { return Message("New Table Created: ", table->Key()); }, tables,
            &LogType::logTableCreation);
        return table;
    });
}

std::shared_ptr<CVLTable> CVLDBEngine::CreateNewLinkedTable(
    const TableArgument& linkToTable, const FieldArgument& referencesFldNumOrName,
    const FieldTexts& FieldLabels) {
    static constexpr const char* kSource = "CVLDBEngine:CreateNewLinkedTable Method";
    std::string name;
    const auto tables = database_->tables;
    const auto create = [&] {
        const auto parent = Resolve(linkToTable);
        const int field = parent->FieldNumber(referencesFldNumOrName);
        name = parent->FieldName(field) + linkToTable.Text();
        auto table = tables->Add(name, isLinkedTable, nullptr, FieldLabels);
        table->SetPrimaryKeyFields(0);
        WhenRaised(
            kCancelled, [&] { parent->Link(field, table); },
            [&] {
                if (table->set() == tables.get()) tables->TakeOut(table);
            });
        return table;
    };
    return Report(kSource, [&] {
        AskOpen(kSource);
        auto table = WhenRaised(
            CVLErrorNum::GetTableAddError(),
            [&] {
                return WhenRaised(kTableNotFound, create, [&] {
                    RaiseTableNotFound(
                        kSource, Message("Referenced Table ", linkToTable.Text(), " Not Found!"));
                });
            },
            [&] {
                Raise(CVLErrorNum::GetNewTableCreationError(), kSource,
                      Message("The Linked Table ", name, " That Is Being Created Already Exists!"));
            });
        OnLinkedTableCreation.Fire(table->Key());
        Log([&] { return Message("New Linked Table Created: ", table->Key()); }, tables,
            &LogType::logLkTableCreation);
        return table;
    });
}

// Runs body(table, target), and logs `text` with both names under the switch of linking.
template <class Body>
bool CVLDBEngine::ChangeLinks(const TableArgument& Table1, const TableArgument& Table2,
                              const char* source, std::string_view text, Body&& body) {
    return Report(source, [&] {
        AskOpen(source);
        return WhenRaised(
            kTableNotFound,
            [&] {
                const auto tables = database_->tables;
                const auto table = Resolve(Table1);
                const auto target = Resolve(Table2);
                body(*table, target);
                Log([&] { return Message(text, table->Key(), " And ", target->Key()); }, tables,
                    &LogType::logTablesLinking);
                return true;
            },
            [&] {
                RaiseTableNotFound(source, Message("Referenced Table ", Table1.Text(), " OR ",
                                                   Table2.Text(), " Not Found!"));
            });
    });
}

bool CVLDBEngine::LinkTables(const TableArgument& Table1,
                             const FieldArgument& referenceFldNumOrName,
                             const TableArgument& Table2) {
    return ChangeLinks(Table1, Table2, "CVLDBEngine:LinkTables Method", "Tables Linking: ",
                       [&](CVLTable& table, const std::shared_ptr<CVLTable>& target) {
                           table.Link(table.FieldNumber(referenceFldNumOrName), target);
                       });
}

// Logged under the switch of linking as well: the one of unlinking is asked nowhere.
bool CVLDBEngine::UnlinkTables(const TableArgument& Table1, const TableArgument& Table2) {
    return ChangeLinks(
        Table1, Table2, "CVLDBEngine:UnlinkTables Method", "Tables Unlinking: ",
        [](CVLTable& table, const std::shared_ptr<CVLTable>& target) { table.Unlink(target); });
}

std::shared_ptr<CVLTable> CVLDBEngine::GetLinkedTable(const TableArgument& ParentTableNumOrName,
                                                      const FieldArgument& forFldNumOrName) {
    static constexpr const char* kSource = "CVLDBEngine:GetLinkedTable Method";
    return Report(kSource, [&] {
        AskOpen(kSource);
        return WhenRaised(
            kTableNotFound,
            [&] {
                const auto parent = Resolve(ParentTableNumOrName);
                const int field = parent->FieldNumber(forFldNumOrName);
                return database_->tables->Item(parent->LinkedTable(field));
            },
            [&] {
                RaiseTableNotFound(kSource,
                                   Message("Table ", ParentTableNumOrName.Text(), " Not Found!"));
            });
    });
}

std::shared_ptr<CVLTable> CVLDBEngine::GetTable(const TableArgument& TableNumOrName) {
    static constexpr const char* kSource = "CVLDBEngine:GetTable Method";
    return Report(kSource, [&] {
        AskOpen(kSource);
        return WhenRaised(
            kTableNotFound, [&] { return Resolve(TableNumOrName); },
            [&] {
                RaiseTableNotFound(kSource,
                                   Message("Table ", TableNumOrName.Text(), " Not Found!"));
            });
    });
}

bool CVLDBEngine::DeleteTable(const TableArgument& varTable, bool CascadeDelete) {
    static constexpr const char* kSource = "CVLDBEngine:DeleteTable Method";
    return Report(kSource, [&] {
        AskOpen(kSource);
        const auto raise_not_found = [&] {
            RaiseTableNotFound(kSource, Message("Linked Table ", varTable.Text(), " Not Found!"));
        };
        const auto table = WhenRaised(
            kTableNotFound, [&] { return Resolve(varTable); }, raise_not_found);
        // A search's result bears the name of a table, and a table that was deleted may.
        const auto tables = database_->tables;  // a handler may open another database
        if (table->set() != tables.get()) raise_not_found();
        tables->AskToRemove();
        const bool linked = table->SpecificType() == isLinkedTable;
        const std::string name = table->Key();
        WhenRaised(
            kTableNotFound,
            [&] {
                if (CascadeDelete) table->DeleteLinks(tables);
                table->FreeFromInOutLinks();
                tables->Remove(*table);
            },
            raise_not_found);
        if (linked) {
            OnLinkedTableDeletion.Fire(name);
            Log([&] { return Message("Linked Table Deleted: ", name); }, tables,
                &LogType::logLkTableDeletion);
        } else {
            OnTableDeletion.Fire(name);
            Log([&] { return Message("Table Deleted: ", name); }, tables,
                &LogType::logTableDeletion);
        }
        return true;
    });
}

}  // namespace tavolin
