#include "tavolin/engine/engine.h"

#include "com/host_updater.h"
#include "com/properties.h"

namespace tavolin::com {
namespace {

class EngineObject : public Object<CVLDBEngine> {
  public:
    using Object::Object;

    TAVOLIN_READ(::_CVLDBUser*, LogedOnUser)
    STDMETHODIMP putref_LogedOnUser(::_CVLDBUser* user) override {
        return Call([&] { core().LogedOnUser(CoreOf<CVLDBUser>(user)); });
    }
    TAVOLIN_TEXT(DBName)
    TAVOLIN_TEXT(DBPath)
    TAVOLIN_READ(BSTR, DBOwner)
    TAVOLIN_READ(DATE, DBCreationDate)
    TAVOLIN_OBJECT(CVLTableSet)
    TAVOLIN_OBJECT(CVLDBUserSet)
    TAVOLIN_READ(::_CVLDBOwnerSet*, CVLDBOwnerSet)
    TAVOLIN_READ(::LogType, LoggedActivities)
    TAVOLIN_READ(BSTR, LogReport)
    TAVOLIN_READ(VARIANT_BOOL, TransactionStarted)

    // Users and rights.
    STDMETHODIMP LogOn(BSTR UserName, BSTR UserPassword, VARIANT_BOOL* result) override {
        return Return(result, [&] { return core().LogOn(Utf8(UserName), Utf8(UserPassword)); });
    }
    STDMETHODIMP LogOnAsUser(::_CVLDBUser* user, VARIANT_BOOL* result) override {
        return Return(result, [&] { return core().LogOnAsUser(CoreOf<CVLDBUser>(user)); });
    }
    STDMETHODIMP LogedOnIsOwner(::_CVLDBUser* user, VARIANT_BOOL* result) override {
        return Return(result, [&] { return core().LogedOnIsOwner(CoreOf<CVLDBUser>(user)); });
    }
    STDMETHODIMP PasswordCorrect(BSTR pwd, VARIANT_BOOL* result) override {
        return Return(result, [&] { return core().PasswordCorrect(Utf8(pwd)); });
    }
    STDMETHODIMP ChangePassword(BSTR oldPWD, BSTR newPWD, VARIANT_BOOL* result) override {
        return Return(result, [&] { return core().ChangePassword(Utf8(oldPWD), Utf8(newPWD)); });
    }
    STDMETHODIMP UserExists(BSTR UserName, VARIANT_BOOL* result) override {
        return Return(result, [&] { return core().UserExists(Utf8(UserName)); });
    }
    STDMETHODIMP CreateNewUser(BSTR UserName, BSTR UserPassword, VARIANT_BOOL CanRead,
                               VARIANT_BOOL CanReadWrite, VARIANT_BOOL CanDelete, BSTR FullName,
                               BSTR Description, VARIANT_BOOL Disabled,
                               ::_CVLDBUser** result) override {
        return Return(result, [&] {
            return core().CreateNewUser(Utf8(UserName), Utf8(UserPassword), IsTrue(CanRead),
                                        IsTrue(CanReadWrite), IsTrue(CanDelete), Utf8(FullName),
                                        Utf8(Description), IsTrue(Disabled));
        });
    }
    STDMETHODIMP GetUser(VARIANT user, BSTR UserPassword, ::_CVLDBUser** result) override {
        return Return(result,
                      [&] { return core().GetUser(Argument(user).User(), Utf8(UserPassword)); });
    }
    STDMETHODIMP DBLegalUser(::_CVLDBUser* LogedUser, ::PermitStateEnum NeededPermission,
                             VARIANT_BOOL* result) override {
        return Return(result, [&] {
            return core().DBLegalUser(CoreOf<CVLDBUser>(LogedUser),
                                      static_cast<PermitStateEnum>(NeededPermission));
        });
    }

    // The open database.
    STDMETHODIMP CreateNewDB(BSTR DBShortName, BSTR DBDir, BSTR DBPwd, BSTR* CreatorFullName,
                             ::_CVLTableSet** result) override {
        return Return(result, [&] {
            return core().CreateNewDB(Utf8(DBShortName), Utf8(DBDir), Utf8(DBPwd),
                                      Utf8(CreatorFullName ? *CreatorFullName : nullptr));
        });
    }
    STDMETHODIMP LoadDB(BSTR DBPathName, BSTR DBPwd, BYTE FileNumber, ::_IUpdater* observer,
                        ::_CVLTableSet** result) override {
        return Return(result, [&] {
            return core().LoadDB(Utf8(DBPathName), Utf8(DBPwd), FileNumber,
                                 HostUpdater::Before(observer));
        });
    }
    STDMETHODIMP SaveDB(BSTR DBDir, BSTR newDBName, BSTR DBPwd, VARIANT_BOOL compact,
                        BYTE FileNumber, VARIANT_BOOL* result) override {
        return Return(result, [&] {
            return core().SaveDB(Utf8(DBDir), Utf8(newDBName), Utf8(DBPwd), IsTrue(compact),
                                 FileNumber);
        });
    }
    STDMETHODIMP DeleteDB(BSTR DBPathName, VARIANT_BOOL* result) override {
        return Return(result, [&] { return core().DeleteDB(Utf8(DBPathName)); });
    }
    STDMETHODIMP GetDB(BSTR DBPathName, BSTR DBPwd, BYTE FileNumber,
                       ::_CVLDBEngine** result) override {
        return Return(result,
                      [&] { return core().GetDB(Utf8(DBPathName), Utf8(DBPwd), FileNumber); });
    }
    STDMETHODIMP ChangeOwner(BSTR newOwnerName, BSTR newOwnerPwd, BSTR newOwnerFullName,
                             BSTR newOwnerDescription, BSTR DBPathName,
                             VARIANT_BOOL* result) override {
        return Return(result, [&] {
            return core().ChangeOwner(Utf8(newOwnerName), Utf8(newOwnerPwd), Utf8(newOwnerFullName),
                                      Utf8(newOwnerDescription), Utf8(DBPathName));
        });
    }

    // Tables.
    STDMETHODIMP CreateNewPrimaryTable(BSTR TableName, TAVOLIN_TEN_PARAMETERS(FieldLbl),
                                       BYTE FieldNumAsPrimKey, BYTE withFieldNumAsPrimKey,
                                       BYTE andFieldNumAsPrimKey, BYTE plusFieldNumAsPrimKey,
                                       ::_CVLTable** result) override {
        return Return(result, [&] {
            return core().CreateNewPrimaryTable(Utf8(TableName), Fields(TAVOLIN_TEN(FieldLbl)),
                                                FieldNumAsPrimKey, withFieldNumAsPrimKey,
                                                andFieldNumAsPrimKey, plusFieldNumAsPrimKey);
        });
    }
    STDMETHODIMP CreateNewLinkedTable(VARIANT* linkToTable, VARIANT referencesFldNumOrName,
                                      TAVOLIN_TEN_PARAMETERS(FieldLbl),
                                      ::_CVLTable** result) override {
        return Return(
            result,
            [&] {
                return core().CreateNewLinkedTable(Argument(*linkToTable).Table(),
                                                   Argument(referencesFldNumOrName).Field(),
                                                   Fields(TAVOLIN_TEN(FieldLbl)));
            },
            linkToTable);
    }
    STDMETHODIMP LinkTables(VARIANT* Table1, VARIANT referenceFldNumOrName, VARIANT* Table2,
                            VARIANT_BOOL* result) override {
        return Return(
            result,
            [&] {
                return core().LinkTables(Argument(*Table1).Table(),
                                         Argument(referenceFldNumOrName).Field(),
                                         Argument(*Table2).Table());
            },
            Table1, Table2);
    }
    STDMETHODIMP UnlinkTables(VARIANT* Table1, VARIANT* Table2, VARIANT_BOOL* result) override {
        return Return(
            result,
            [&] {
                return core().UnlinkTables(Argument(*Table1).Table(), Argument(*Table2).Table());
            },
            Table1, Table2);
    }
    STDMETHODIMP GetLinkedTable(VARIANT ParentTableNumOrName, VARIANT forFldNumOrName,
                                ::_CVLTable** result) override {
        return Return(result, [&] {
            return core().GetLinkedTable(Argument(ParentTableNumOrName).Table(),
                                         Argument(forFldNumOrName).Field());
        });
    }
    STDMETHODIMP GetTable(VARIANT TableNumOrName, ::_CVLTable** result) override {
        return Return(result, [&] { return core().GetTable(Argument(TableNumOrName).Table()); });
    }
    STDMETHODIMP DeleteTable(VARIANT* varTable, VARIANT_BOOL CascadeDelete,
                             VARIANT_BOOL* result) override {
        return Return(
            result,
            [&] { return core().DeleteTable(Argument(*varTable).Table(), IsTrue(CascadeDelete)); },
            varTable);
    }

    // Records.
    STDMETHODIMP GetRecordSet(VARIANT* forTable, ::_CVLRecordSet** result) override {
        return Return(
            result, [&] { return core().GetRecordSet(Argument(*forTable).Table()); }, forTable);
    }
    STDMETHODIMP GetRecord(VARIANT* fromTable, VARIANT RecordNumOrKey,
                           ::_CVLRecord** result) override {
        return Return(
            result,
            [&] {
                return core().GetRecord(Argument(*fromTable).Table(),
                                        Argument(RecordNumOrKey).Key());
            },
            fromTable);
    }
    STDMETHODIMP AddRecord(VARIANT* toTable, LONG nKey, TAVOLIN_TEN_PARAMETERS(prop),
                           ::_CVLAttachmentSet** AttachmentsTable, VARIANT Before, VARIANT After,
                           ::_CVLRecord** result) override {
        return Return(
            result,
            [&] {
                const Argument before(Before);
                const Argument after(After);
                return core().AddRecord(Argument(*toTable).Table(), nKey, Fields(TAVOLIN_TEN(prop)),
                                        CoreAt<CVLAttachmentSet>(AttachmentsTable),
                                        {before.OptionalKey(), after.OptionalKey()});
            },
            toTable);
    }
    STDMETHODIMP UpDateRecord(VARIANT* inTable, ::_CVLRecord** record, LONG nKey,
                              TAVOLIN_TEN_PARAMETERS(prop), ::_CVLAttachmentSet** AttachmentsTable,
                              VARIANT Before, VARIANT After, ::_CVLRecord** result) override {
        return Return(
            result,
            [&] {
                const Argument before(Before);
                const Argument after(After);
                return core().UpDateRecord(Argument(*inTable).Table(), CoreOf<CVLRecord>(*record),
                                           nKey, Fields(TAVOLIN_TEN(prop)),
                                           CoreAt<CVLAttachmentSet>(AttachmentsTable),
                                           {before.OptionalKey(), after.OptionalKey()});
            },
            inTable, record);
    }
    STDMETHODIMP DeleteRecord(VARIANT* fromTable, VARIANT RecordNumOrKey,
                              VARIANT_BOOL CascadeDelete) override {
        return Call(
            [&] {
                core().DeleteRecord(Argument(*fromTable).Table(), Argument(RecordNumOrKey).Key(),
                                    IsTrue(CascadeDelete));
            },
            fromTable);
    }
    STDMETHODIMP Find(BSTR Value, VARIANT_BOOL ValueIsAKey, ::_CVLTable** inTable, BYTE inFldNumber,
                      ::_CVLTable** result) override {
        return Return(result, [&] {
            return core().Find(Utf8(Value), IsTrue(ValueIsAKey), CoreAt<CVLTable>(inTable),
                               inFldNumber);
        });
    }

    // The transaction and the log.
    STDMETHODIMP TransactionBegin(VARIANT_BOOL* result) override {
        return Return(result, [&] { return core().TransactionBegin(); });
    }
    STDMETHODIMP TransactionCommit(VARIANT_BOOL* result) override {
        return Return(result, [&] { return core().TransactionCommit(); });
    }
    STDMETHODIMP TansactionAbort(VARIANT_BOOL* result) override {
        return Return(result, [&] { return core().TansactionAbort(); });
    }
    STDMETHODIMP LogDBActivities(VARIANT_BOOL DBLogOn, VARIANT_BOOL Transactions,
                                 VARIANT_BOOL OwnerChange, VARIANT_BOOL UserCreation,
                                 VARIANT_BOOL TableCreation, VARIANT_BOOL LinkedTableCreation,
                                 VARIANT_BOOL TableDeletion, VARIANT_BOOL LinkedTableDeletion,
                                 VARIANT_BOOL LinkingTables, VARIANT_BOOL UnlinkingTables,
                                 VARIANT_BOOL RecordAdd, VARIANT_BOOL RecordUpDate,
                                 VARIANT_BOOL RecordDelete, VARIANT_BOOL Errors) override {
        return Call([&] {
            core().LogDBActivities(
                IsTrue(DBLogOn), IsTrue(Transactions), IsTrue(OwnerChange), IsTrue(UserCreation),
                IsTrue(TableCreation), IsTrue(LinkedTableCreation), IsTrue(TableDeletion),
                IsTrue(LinkedTableDeletion), IsTrue(LinkingTables), IsTrue(UnlinkingTables),
                IsTrue(RecordAdd), IsTrue(RecordUpDate), IsTrue(RecordDelete), IsTrue(Errors));
        });
    }

    // Catalog arrays.
    STDMETHODIMP GetArrayOwners(SAFEARRAY** result) override {
        return Return(result, [&] { return core().GetArrayOwners(); });
    }
    STDMETHODIMP GetArrayOwnedDBs(BSTR forOwnerName, SAFEARRAY** result) override {
        return Return(result, [&] { return core().GetArrayOwnedDBs(Utf8(forOwnerName)); });
    }
    STDMETHODIMP GetArrayTables(BSTR forDBPathName, SAFEARRAY** result) override {
        return Return(result, [&] { return core().GetArrayTables(Utf8(forDBPathName)); });
    }
    STDMETHODIMP GetArrayFields(BSTR forTableName, SAFEARRAY** result) override {
        return Return(result, [&] { return core().GetArrayFields(Utf8(forTableName)); });
    }
    STDMETHODIMP GetArrayRecords(BSTR forTableName, SAFEARRAY** result) override {
        return Return(result, [&] { return core().GetArrayRecords(Utf8(forTableName)); });
    }
    STDMETHODIMP GetArrayAttachments(BSTR forTableName, BSTR forRecordKey,
                                     SAFEARRAY** result) override {
        return Return(result, [&] {
            return core().GetArrayAttachments(Utf8(forTableName), Utf8(forRecordKey));
        });
    }
    STDMETHODIMP GetArrayUsers(BSTR forDBPathName, SAFEARRAY** result) override {
        return Return(result, [&] { return core().GetArrayUsers(Utf8(forDBPathName)); });
    }

    // Observers.
    STDMETHODIMP AddObserver(::_IUpdater** observer, BSTR forUser) override {
        return Call([&] { core().AddObserver(HostUpdater::Before(*observer), Utf8(forUser)); },
                    observer);
    }
    STDMETHODIMP NotifyObservers() override {
        return Call([&] { core().NotifyObservers(); });
    }
    STDMETHODIMP RemoveObserver(BSTR forUser) override {
        return Call([&] { core().RemoveObserver(Utf8(forUser)); });
    }
    STDMETHODIMP ObserversCount(LONG* result) override {
        return Return(result, [&] { return core().ObserversCount(); });
    }

    // Exports.
    STDMETHODIMP MakeItText(BSTR DirPath, BSTR FileName) override {
        return Call([&] { core().MakeItText(Utf8(DirPath), Utf8(FileName)); });
    }
    STDMETHODIMP MakeItHTML(BSTR DirPath, BSTR FileName) override {
        return Call([&] { core().MakeItHTML(Utf8(DirPath), Utf8(FileName)); });
    }
    STDMETHODIMP MakeItMDB(BSTR DirPath, BSTR FileName) override {
        return Call([&] { core().MakeItMDB(Utf8(DirPath), Utf8(FileName)); });
    }

    TAVOLIN_EVENTS(core().OnDBCreation, core().OnDBDeletion, core().OnOwnerChange,
                   core().OnUserLogOn, core().OnTableCreation, core().OnLinkedTableCreation,
                   core().OnTableDeletion, core().OnLinkedTableDeletion, core().OnRecordAdd,
                   core().OnRecordUpDate, core().OnRecordRemove)
};

}  // namespace

ObjectBase* NewObject(std::shared_ptr<CVLDBEngine> core) {
    return new EngineObject(std::move(core));
}

}  // namespace tavolin::com
