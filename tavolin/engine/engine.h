// The engine: one open database, who is logged on to it, and everything that he does with it.
//
//     tavolin::CVLDBEngine engine;
//     engine.LogOn("ann", "secret");
//     engine.CreateNewDB("shop", "C:\\Data");
//     engine.CreateNewPrimaryTable("Customers", {"ID", "Name", "City"});
//     engine.AddRecord("Customers", 1, {"7", "Ann", "Paris"});
//     engine.SaveDB();
//
// A database lives in memory and reaches the disk by SaveDB alone. Everything runs on the caller's
// thread; an engine and the objects that it hands out belong to one thread at a time.
//
// Log-on says who acts and checks nothing. DBLegalUser checks, and sets the permission state, which
// the sets of the database consult until it is set again: `Undefined` after the engine's creation,
// after LogOn and LogOnAsUser, after setting LogedOnUser and on an engine from GetDB, `Ownership`
// after CreateNewDB. Rights guide honest programs; they do not encrypt a file, and a program that
// wants to get around them can.
//
// Failures are Error, with the numbers of CVLErrorNum or of the platform's run-time errors. Unless
// a member says otherwise nothing has changed after one. Members that need somebody logged on raise
// GetUserLogedOnNotFoundError otherwise, and members that need an open database GetDBNotSetError
// "DataBase Is Not Set!".
//
// Linking and deleting can be stopped by a StopScope (tavolin/errors/stop_scope.h).
//
// A table argument is a position, a name or a table; a field argument a number or a name, and a
// name that the table does not have is field 0. Of several `FieldTexts` those left out are empty.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tavolin/base/byte_buffer.h"
#include "tavolin/base/date.h"
#include "tavolin/base/event.h"
#include "tavolin/base/export.h"
#include "tavolin/errors/error.h"
#include "tavolin/errors/error_num.h"
#include "tavolin/model/attachment_set.h"
#include "tavolin/model/field_argument.h"
#include "tavolin/model/field_texts.h"
#include "tavolin/model/index_key.h"
#include "tavolin/model/object_collection.h"
#include "tavolin/model/owner_db_set.h"
#include "tavolin/model/owner_set.h"
#include "tavolin/model/record.h"
#include "tavolin/model/record_set.h"
#include "tavolin/model/table.h"
#include "tavolin/model/table_argument.h"
#include "tavolin/model/table_set.h"
#include "tavolin/model/types.h"
#include "tavolin/model/updater.h"
#include "tavolin/model/user.h"
#include "tavolin/model/user_argument.h"
#include "tavolin/model/user_note_set.h"
#include "tavolin/model/user_set.h"
#include "tavolin/persist/state_mark.h"

namespace tavolin {

struct Authority;
struct Database;
class Session;
class TextSink;
enum class BagSeal;
enum class TextEncoding;

class TAVOLIN_API CVLDBEngine {
  public:
    // The newest living engine of a thread is the current one, which objects that the host makes
    // itself belong to.
    CVLDBEngine();
    ~CVLDBEngine();
    CVLDBEngine(const CVLDBEngine&) = delete;
    CVLDBEngine& operator=(const CVLDBEngine&) = delete;

    // Fired after the change that each reports, and before its line in LogReport.
    Event<std::string, Date, std::string> OnDBCreation;  // path, moment, creator
    Event<std::string, Date, std::string> OnDBDeletion;  // path, day, deletor
    Event<std::string> OnOwnerChange;                    // the new owner's name
    Event<std::shared_ptr<CVLDBUser>> OnUserLogOn;
    Event<std::string> OnTableCreation;
    Event<std::string> OnLinkedTableCreation;
    Event<std::string> OnTableDeletion;
    Event<std::string> OnLinkedTableDeletion;
    Event<std::shared_ptr<CVLRecord>> OnRecordAdd;
    Event<std::shared_ptr<CVLRecord>> OnRecordUpDate;
    Event<std::shared_ptr<CVLRecord>> OnRecordRemove;

    // --- Users and rights

    // Who acts, or nothing. Setting it makes the permission state `Undefined`.
    std::shared_ptr<CVLDBUser> LogedOnUser() const;
    void LogedOnUser(std::shared_ptr<CVLDBUser> user);

    // Records who acts, and reads the owner registry; the password is not verified here. A registry
    // that cannot be read counts as empty, and the file is kept aside when a new one is written,
    // unless all that kept it from being read was that somebody held it. One of a newer format is
    // never written over: what would do so raises 321, SaveDB when the database has been saved,
    // DeleteDB before it is deleted.
    bool LogOn(std::string_view UserName, std::string_view UserPassword);
    // LogOn with that user's name and password.
    bool LogOnAsUser(const std::shared_ptr<CVLDBUser>& user);

    // Whether the user equals the stored user who owns the open database; rights do not matter.
    bool LogedOnIsOwner(const std::shared_ptr<CVLDBUser>& user);

    // Whether `pwd` is the database password, ignoring case.
    bool PasswordCorrect(std::string_view pwd);

    // Sets the database password. The owner needs no old one; anyone else must give it, ignoring
    // case, else GetDBPasswordChangeError.
    bool ChangePassword(std::string_view oldPWD, std::string_view newPWD);

    bool UserExists(std::string_view UserName);

    // Adds a user to the database. Asks for `Ownership` (GetUserIsNotDBOwnerError); a name that is
    // taken raises GetNewUserCreationError.
    std::shared_ptr<CVLDBUser> CreateNewUser(std::string_view UserName,
                                             std::string_view UserPassword, bool CanRead,
                                             bool CanReadWrite, bool CanDelete,
                                             std::string_view FullName = {},
                                             std::string_view Description = {},
                                             bool Disabled = false);

    // The stored user of that name, whose password must be the one given (a user object brings its
    // own). GetUserNotFoundError, GetUserPasswordError.
    std::shared_ptr<CVLDBUser> GetUser(const UserArgument& user,
                                       std::string_view UserPassword = {});

    // Sets the permission state for a user from the open database, and refuses him if he lacks
    // `NeededPermission`. The owner gets `Ownership`; a stored user the highest of his rights; one
    // who is not stored, but whose password is the database password, `ToRead`. Refusals:
    // GetUserDisabledError and GetDBPasswordError leave the state `Undefined`,
    // GetUserPermissionTo... and GetUserIsNotDBOwnerError leave it at what the user may do.
    // `Undefined` asks for nothing; what is no value of the enumeration raises 5, but not for the
    // owner.
    bool DBLegalUser(const std::shared_ptr<CVLDBUser>& LogedUser, PermitStateEnum NeededPermission);

    // --- The open database

    // The file's name and its folder. They are where SaveDB writes to; setting them moves nothing.
    // A name stands in its folder, here and wherever one is given: one with `\`, `/` or `:` in it,
    // of dots alone, or of a device raises 52.
    std::string DBName() const;
    void DBName(std::string_view name);
    std::string DBPath() const;
    void DBPath(std::string_view path);
    std::string DBOwner() const;
    Date DBCreationDate() const;

    // Nothing when no database is open. Setting them replaces all tables, or all users, of the open
    // database; nothing raises 91.
    std::shared_ptr<tavolin::CVLTableSet> CVLTableSet() const;
    void CVLTableSet(std::shared_ptr<tavolin::CVLTableSet> tables);
    std::shared_ptr<tavolin::CVLDBUserSet> CVLDBUserSet() const;
    void CVLDBUserSet(std::shared_ptr<tavolin::CVLDBUserSet> users);

    // The owner registry as it was read at log-on; empty before.
    std::shared_ptr<tavolin::CVLDBOwnerSet> CVLDBOwnerSet() const { return owners_; }

    // Makes a new, empty database of the logged-on user's, in memory, and opens it in the place of
    // the open one. A name without "." gets ".cdb". An empty password is the user's own. A file of
    // that name raises GetNewDBCreationError; so does nobody being logged on. Any other failure is
    // GetDBAddError with the failure's description. The logged-on user becomes its first user; if
    // he stands in another set than the open database's, a copy of him, who is logged on from then.
    std::shared_ptr<tavolin::CVLTableSet> CreateNewDB(std::string_view DBShortName,
                                                      std::string_view DBDir,
                                                      std::string_view DBPwd = {},
                                                      std::string_view CreatorFullName = {});

    // Opens a database file in the place of the open database. DBPath and DBName are those of the
    // path given, whatever the file says. The new one is read whole first: a failure leaves the
    // open one, its log and its transaction as they were. A missing file raises GetDBNotFoundError;
    // one that cannot be read, or is damaged, GetDBNotSetError, with what was wrong in
    // Error::detail(). The permission state stays `Undefined` if it was; else it becomes
    // what the same user may do here. `DBPwd` and `observer` are accepted and have no effect:
    // DBLegalUser is the gate.
    std::shared_ptr<tavolin::CVLTableSet> LoadDB(
        std::string_view DBPathName, std::string_view DBPwd = {}, std::uint8_t FileNumber = 0,
        const std::shared_ptr<IUpdater>& observer = nullptr);

    // Writes the database to its file, or to another folder or name, which then become its own;
    // then the owner registry and the pending log. A new name without "." gets ".cdb". The
    // registry lists it under its owner if he is logged on or has become the owner since it was
    // opened; a copy that somebody else saves is not listed. The file is replaced in one step. Asks
    // for a right to write (GetUserPermissionToRWError). Another existing file is never written
    // over (GetDBOverwriteError): the database's own file is the one that this engine created, last
    // loaded or last saved, even when a roll-back has put an older name back, and one that a save
    // of its own has left whose last step failed. A password is set when the state is `Ownership`,
    // and ignored otherwise. `compact` drops what a longer earlier state left behind in the file.
    // 2^31 bytes or more raise 6 before any file is touched. When the registry alone fails, the
    // database has been saved.
    //
    // Another process, or another engine, may have saved the same file meanwhile: see
    // FileChangedByOthers and KeepChangesOfOthers.
    bool SaveDB(std::string_view DBDir = {}, std::string_view newDBName = {},
                std::string_view DBPwd = {}, bool compact = false, std::uint8_t FileNumber = 0);

    // Whether the open database's file holds another state than the one that this engine loaded
    // from it or saved to it last, so that SaveDB would take somebody's work away: somebody else
    // has saved it, put another file in its place, or damaged it. A copy of the same state, an
    // older one that was this engine's last, or a file that is gone is no change; a file that is
    // there when this engine has created the database and not saved it yet is one. False when no
    // database is open. It takes the reading of 52 bytes; what keeps them from being read is the
    // machine's file error.
    bool FileChangedByOthers() const;

    // With true, SaveDB, TransactionCommit and ChangeOwner refuse to write over such a file:
    // GetDBOverwriteError, with a detail that tells this case, and the file and the open database
    // are as before. The file is looked at again right before the new one takes its place, while
    // all saving into its folder waits, so that of any number of processes and engines that save
    // with this switched on none takes another's work away; see docs/reliability.md for disks that
    // cannot lock. False on a new engine.
    bool KeepChangesOfOthers() const { return keep_changes_of_others_; }
    void KeepChangesOfOthers(bool keep) { keep_changes_of_others_ = keep; }

    // Deletes a database's file, its log and its entry in the registry. Only its owner may
    // (GetUserIsNotDBOwnerError). If it is the open one's file, that stays in memory as never
    // saved.
    bool DeleteDB(std::string_view DBPathName);

    // Another engine with that database, on which the current user is logged on. Any failure is
    // GetDBNotSetError.
    std::shared_ptr<CVLDBEngine> GetDB(std::string_view DBPathName, std::string_view DBPwd = {},
                                       std::uint8_t FileNumber = 0);

    // Hands a database to another user, who is added to its users if he is not there and gets every
    // right. An existing user keeps his password when the one given is empty, and the texts that
    // are left out. The open database is changed in memory; another one, named by its path, on disk
    // at once. Only the owner may: GetDBOwnerChangeError. Nobody logged on raises
    // GetNewDBCreationError.
    bool ChangeOwner(std::string_view newOwnerName = "Public", std::string_view newOwnerPwd = {},
                     std::string_view newOwnerFullName = "Public Owner",
                     std::string_view newOwnerDescription = "Public Owns This DataBase",
                     std::string_view DBPathName = "Current");

    // --- Tables

    // Key fields are 0 to 9, 99 for none; all left out is field 0. A name that is taken raises
    // GetNewTableCreationError, an empty one 5. Asks for a right to write.
    std::shared_ptr<CVLTable> CreateNewPrimaryTable(std::string_view TableName,
                                                    const FieldTexts& FieldLabels,
                                                    int FieldNumAsPrimKey = kNoField,
                                                    int withFieldNumAsPrimKey = kNoField,
                                                    int andFieldNumAsPrimKey = kNoField,
                                                    int plusFieldNumAsPrimKey = kNoField);

    // Makes a table named by the field's name and the table argument's text ("IDCustomers"), keyed
    // on field 0, and links the field to it. If the link fails, the table stays, unless a StopScope
    // stopped it.
    std::shared_ptr<CVLTable> CreateNewLinkedTable(const TableArgument& linkToTable,
                                                   const FieldArgument& referencesFldNumOrName,
                                                   const FieldTexts& FieldLabels);

    // CVLTable::Link and CVLTable::Unlink. A missing table raises GetTableNotFoundError.
    bool LinkTables(const TableArgument& Table1, const FieldArgument& referenceFldNumOrName,
                    const TableArgument& Table2);
    bool UnlinkTables(const TableArgument& Table1, const TableArgument& Table2);

    // The table that a field links to; none raises GetTableNotFoundError.
    std::shared_ptr<CVLTable> GetLinkedTable(const TableArgument& ParentTableNumOrName,
                                             const FieldArgument& forFldNumOrName);
    std::shared_ptr<CVLTable> GetTable(const TableArgument& TableNumOrName);

    // Deletes a table and, with `CascadeDelete`, every table that only its links refer to; tables
    // that link to it are unlinked. Asks for `Ownership` before anything is changed.
    bool DeleteTable(const TableArgument& varTable, bool CascadeDelete = true);

    // --- Records. A missing table raises GetRecordNotFoundError.

    std::shared_ptr<CVLRecordSet> GetRecordSet(const TableArgument& forTable);

    // A bad position raises GetRecordNotFoundError, an unknown key GetDBNotSetError.
    std::shared_ptr<CVLRecord> GetRecord(const TableArgument& fromTable,
                                         const IndexKey& RecordNumOrKey);

    // CVLRecordSet::Items: many at once, sooner than one by one.
    std::vector<std::shared_ptr<CVLRecord>> GetRecords(const TableArgument& fromTable,
                                                       std::span<const IndexKey> which);

    // CVLTable::Add.
    std::shared_ptr<CVLRecord> AddRecord(
        const TableArgument& toTable, std::int32_t nKey, const FieldTexts& props,
        std::shared_ptr<CVLAttachmentSet> AttachmentsTable = nullptr, const Placement& place = {});

    // CVLTable::Update. `nKey` and `place` are accepted and have no effect.
    std::shared_ptr<CVLRecord> UpDateRecord(
        const TableArgument& inTable, const std::shared_ptr<CVLRecord>& record, std::int32_t nKey,
        const FieldTexts& props, std::shared_ptr<CVLAttachmentSet> AttachmentsTable = nullptr,
        const Placement& place = {});

    // Deletes a record and, with `CascadeDelete`, first whatever it refers to and no other record
    // refers to, at every depth. What refers to it stays. Asks for a right to delete.
    void DeleteRecord(const TableArgument& fromTable, const IndexKey& RecordNumOrKey,
                      bool CascadeDelete = true);

    // The first table with a match, as CVLTable::Find gives it, under that table's Key; none raises
    // GetValueNotFoundError. Large tables are searched by several processors, as there.
    std::shared_ptr<CVLTable> Find(std::string_view Value, bool ValueIsAKey = false,
                                   const std::shared_ptr<CVLTable>& inTable = nullptr,
                                   int inFldNumber = kNoField);

    // --- The transaction: one at a time, of the whole database

    bool TransactionStarted() const { return transaction_; }
    // GetTransAlreadyStartedError when one is open.
    bool TransactionBegin();
    // Saves. The transaction has ended even if saving fails. GetNoTransStartedError.
    bool TransactionCommit();
    // Puts everything back as it was at the beginning: users, tables, records, log switches.
    // Objects from before are not the engine's any more. GetNoTransStartedError. After any other
    // failure the transaction is still open and can be aborted again.
    bool TansactionAbort();

    // --- Publishing. All ask for a right to read, before anything is written, and write nothing
    // onto the open database's file or its log (58).

    // Writes the text that CVLTableSet::MakeItText makes, between two quotation marks and with a
    // line break behind it, as it is made: memory does not grow with it. The file is named as the
    // database without "cdb", or as `FileName` if that is another name, and with "txt" right behind
    // it: "shop.cdb" gives "shop.txt", and "report" "reporttxt". It is created or replaced; after a
    // failure what was written so far stays. Code page 1252 if all characters are in it, else UTF-8
    // with a byte-order mark.
    void MakeItText(std::string_view DirPath, std::string_view FileName = {});
    // CVLTableSet::MakeItHTML.
    void MakeItHTML(std::string_view DirPath, std::string_view FileName = {});
    // CVLTableSet::MakeItMDB, into a file named after the database, or after `FileName` if that is
    // another name: "shop.cdb" gives "shop.mdb", and "report." "report.mdb".
    void MakeItMDB(std::string_view DirPath, std::string_view FileName = {});

    // --- The log

    // Sets all fourteen switches, those left out to off. Asks for `Ownership`.
    void LogDBActivities(bool DBLogOn = false, bool Transactions = false, bool OwnerChange = false,
                         bool UserCreation = false, bool TableCreation = false,
                         bool LinkedTableCreation = false, bool TableDeletion = false,
                         bool LinkedTableDeletion = false, bool LinkingTables = false,
                         bool UnlinkingTables = false, bool RecordAdd = false,
                         bool RecordUpDate = false, bool RecordDelete = false, bool Errors = false);
    LogType LoggedActivities() const;
    // A line, ended by "\r\n", for everything done with this engine, whatever the switches say.
    // Where memory is so short that a line cannot be made, it is left out here and in the log file.
    const std::string& LogReport() const { return log_report_; }

    // --- Catalog arrays: names for filling a list, in the order of their set
    //
    // Except for GetArrayFields they end with one empty text behind the names, so that there is one
    // for an empty set too. A path names a database file that is opened with GetDB, without a
    // password, for the length of the call; an empty one is the open database. Going through a set
    // asks for no right; finding a table, an owner or a record in it does what Item does there, and
    // raises what Item raises.

    // The owners in the registry as it was read at log-on.
    std::vector<std::string> GetArrayOwners();
    // The full paths of an owner's databases; those of the logged-on user without a name.
    std::vector<std::string> GetArrayOwnedDBs(std::string_view forOwnerName = {});
    std::vector<std::string> GetArrayTables(std::string_view forDBPathName = {});
    // The ten labels.
    std::vector<std::string> GetArrayFields(std::string_view forTableName);
    // The records' keys.
    std::vector<std::string> GetArrayRecords(std::string_view forTableName);
    // The paths of a record's attachments. An error has GetArrayRecords as its source.
    std::vector<std::string> GetArrayAttachments(std::string_view forTableName,
                                                 std::string_view forRecordKey);
    std::vector<std::string> GetArrayUsers(std::string_view forDBPathName = {});

    // --- Observers: whom the host has told to look again, under names of its choice
    //
    // They belong to the engine, whichever database is open, and asking for them takes no log-on.
    // No other member calls them. Errors come as they are raised, without a source of the engine's
    // and without a line in the log.

    // A name that is taken, in any letter case, raises 457, no observer 91.
    void AddObserver(std::shared_ptr<IUpdater> observer, std::string_view forUser);
    // Calls Update once for each observer, in the order of adding. What one throws ends the call
    // and passes. An Update may add observers, who are not called before the next time, and remove
    // them, who are not called any more.
    void NotifyObservers();
    // A name that is not there raises 5.
    void RemoveObserver(std::string_view forUser);
    std::int32_t ObserversCount() const;

  private:
    friend struct EngineInternals;

    enum class OnFailure { kLog, kLogNothing };

    struct PendingLine {
        std::string text;
        bool is_log_on;
    };

    struct RegistryChange {
        bool added;
        bool saved;  // the database that it belongs to is on the disk with it
        std::string owner;
        std::string dir;
        std::string name;
    };

    struct ForAnotherEngine {};
    explicit CVLDBEngine(ForAnotherEngine);

    // The trap of the engine's members.
    template <class Body>
    decltype(auto) Report(const char* context, Body&& body, OnFailure on_failure = OnFailure::kLog);
    [[noreturn]] void ReportError(Error error, const char* context, OnFailure on_failure);

    void AskLogOn(const char* source) const;
    void AskOpen(const char* source) const;
    void AskToCreate(const char* source) const;

    // users
    bool IsOwner(const CVLDBUser& user) const;
    bool IsDatabasePassword(std::string_view pwd) const;
    PermitStateEnum RightsOf(const CVLDBUser& user) const;
    void LogOnUser(std::string_view name, std::string_view password);
    void CheckPermission(PermitStateEnum needed, const CVLDBUser& user, bool can_read,
                         bool can_write, bool can_delete, const char* source) const;
    std::shared_ptr<CVLDBUser> CheckedUser(std::string_view name, std::string_view password,
                                           const char* source) const;

    // lifecycle
    class Naming;
    std::unique_ptr<Database> NewDatabase() const;
    void Install(std::unique_ptr<Database> database);
    void Open(std::unique_ptr<Database> database, std::string absolute_path,
              std::optional<StateMark> mark);
    PermitStateEnum Rechecked() const;
    PermitStateEnum PermissionIn(std::unique_ptr<Database>& database);
    std::unique_ptr<Database> ReadState(std::shared_ptr<ByteBuffer> state, BagSeal seal) const;
    ByteBuffer ObjectState(BagSeal seal) const;
    bool IsOpenFile(std::string_view path) const;
    bool IsOwnFile(std::string_view path) const;
    bool HoldsTriedSave(const std::string& file, std::optional<StateMark> mark = {}) const;
    void AskToReplace(const std::string& path, const char* source) const;
    void WriteState(const ByteBuffer& state, const std::string& path, bool compact,
                    std::uint8_t FileNumber, const char* source);
    std::optional<Error> DeleteFiles(const std::string& path, const CVLDBEngine& opened);
    ByteBuffer StateNamed(Naming& naming) const;
    void MakeOwner(const std::string& name, std::string_view password, std::string_view full_name,
                   std::string_view description);

    // registry
    void ReadRegistry();
    void NeedRegistry();
    void WriteRegistry();
    void Register(const Database& database);
    bool ChangeRegistry(RegistryChange change);
    bool Apply(const RegistryChange& change);
    void MoveEntry(std::string from, std::string to, const Database& database);
    void ForgetUnsavedEntries();
    void ForOtherDatabase(const std::function<void()>& body);

    // tables and records
    std::shared_ptr<CVLTable> Resolve(const TableArgument& table) const;
    template <class Body>
    decltype(auto) WithRecordsOf(const TableArgument& table, const char* source, Body&& body);
    template <class Body>
    bool ChangeLinks(const TableArgument& Table1, const TableArgument& Table2, const char* source,
                     std::string_view text, Body&& body);
    class RecordDeletion;
    void DeleteAlone(const std::shared_ptr<CVLTable>& table,
                     const std::shared_ptr<CVLRecord>& record);

    // catalog
    template <class Body>
    std::vector<std::string> Catalog(const char* source, std::string_view path, Body&& body);

    // log
    std::string LogLine(const Message& message) const;
    template <class Make>
    void Log(Make&& message, bool switched_on) noexcept;
    template <class Make>
    void Log(Make&& message, const std::shared_ptr<tavolin::CVLTableSet>& tables,
             bool LogType::*activity) noexcept;
    template <std::size_t N, std::size_t M>
    void LogRecord(const char (&event)[N], const CVLRecord& record, const char (&preposition)[M],
                   const CVLTable& table, const std::shared_ptr<tavolin::CVLTableSet>& tables,
                   bool LogType::*activity) noexcept;
    void LogDeleted(const CVLRecord& record, const CVLTable& table,
                    const std::shared_ptr<tavolin::CVLTableSet>& tables) noexcept;
    void LogAdded(const CVLRecord& record, const CVLTable& table,
                  const std::shared_ptr<tavolin::CVLTableSet>& tables) noexcept;
    template <class Make>
    void LogPending(Make&& message, bool is_log_on = false) noexcept;
    void LogMessage(const Message& message, bool switched_on);
    void LogPendingMessage(const Message& message, bool is_log_on);
    void LogTransaction(const char* text) noexcept;
    void LogFailure(const Error& error) noexcept;
    void LogAtOnce(std::string line);
    bool WriteLog(std::string_view text) const;
    void FlushPending() noexcept;
    std::string LogPath() const;

    // files
    void PrintToTextFile(const std::function<void(TextSink&)>& write, TextEncoding encoding,
                         std::string_view path, std::uint8_t number = 0);
    void PrintToBinaryFile(std::span<const std::uint8_t> data, std::string_view path,
                           std::uint8_t number = 0, bool cut_tail = false,
                           const std::function<void()>& last_look = {});
    ByteBuffer GetBinaryFile(std::string_view path, std::uint8_t number = 0);

    std::shared_ptr<Authority> authority_;
    std::shared_ptr<Session> session_;  // that of the objects which the host makes
    // The last to go: nothing of what was kept for the next state stays behind.
    struct NothingKept {
        ~NothingKept() { FreeKept(); }
    };
    NothingKept nothing_kept_;
    std::unique_ptr<Database> database_;
    std::string file_;  // the open database's file from the root on; empty when it has none
    // What this engine knows to be in that file: what it read or wrote last, nothing when it has
    // done neither.
    std::optional<StateMark> file_mark_;
    // And what it has tried to write since, there or elsewhere, which an error may have left there.
    struct TriedSave {
        std::string file;
        StateMark mark;
    };
    std::vector<TriedSave> tried_;
    bool keep_changes_of_others_ = false;
    std::shared_ptr<tavolin::CVLDBOwnerSet> owners_;
    bool registry_read_ = false;
    std::string listed_owner_;               // the open database's when it was opened or saved last
    std::vector<RegistryChange> unwritten_;  // what has been done to the registry since
    bool transaction_ = false;
    std::shared_ptr<ByteBuffer> snapshot_;
    std::string log_report_;
    std::vector<PendingLine> pending_;
    // One object may observe for several users.
    struct Observation {
        std::shared_ptr<IUpdater> observer;
    };
    std::shared_ptr<ObjectCollection<Observation>> observers_ =
        std::make_shared<ObjectCollection<Observation>>();
};

}  // namespace tavolin
