// The library's own error numbers: compare them with the number of a caught Error.
//
//     catch (const tavolin::Error& e) {
//         if (e.number() == tavolin::CVLErrorNum::GetRecordAddError()) ...
//     }
//
// All numbers are 0x80040000 plus an offset, as signed 32-bit integers. No member can fail.
#pragma once

#include <cstdint>

namespace tavolin {

class CVLErrorNum {
  public:
    static constexpr std::int32_t GetTransAlreadyStartedError() { return Number(50006); }
    static constexpr std::int32_t GetNoTransStartedError() { return Number(50007); }
    static constexpr std::int32_t GetRecordUpDateError() { return Number(60111); }
    static constexpr std::int32_t GetNoteUpDateError() { return Number(60112); }
    static constexpr std::int32_t GetUserUpDateError() { return Number(60113); }
    static constexpr std::int32_t GetAttachmentUpDateError() { return Number(60114); }
    static constexpr std::int32_t GetTableUpDateError() { return Number(60115); }
    static constexpr std::int32_t GetRecordAddError() { return Number(60121); }
    static constexpr std::int32_t GetNoteAddError() { return Number(60122); }
    static constexpr std::int32_t GetUserAddError() { return Number(60123); }
    static constexpr std::int32_t GetAttachmentAddError() { return Number(60124); }
    static constexpr std::int32_t GetTableAddError() { return Number(60125); }
    static constexpr std::int32_t GetOwnerAddError() { return Number(60126); }
    static constexpr std::int32_t GetDBAddError() { return Number(60127); }
    static constexpr std::int32_t GetFirstRecordError() { return Number(60001); }
    static constexpr std::int32_t GetLastRecordError() { return Number(60002); }
    static constexpr std::int32_t GetPreviousRecordError() { return Number(60003); }
    static constexpr std::int32_t GetNextRecordError() { return Number(60004); }
    static constexpr std::int32_t GetFirstNoteError() { return Number(60025); }
    static constexpr std::int32_t GetLastNoteError() { return Number(60026); }
    static constexpr std::int32_t GetPreviousNoteError() { return Number(60027); }
    static constexpr std::int32_t GetNextNoteError() { return Number(60028); }
    static constexpr std::int32_t GetFirstUserError() { return Number(60021); }
    static constexpr std::int32_t GetLastUserError() { return Number(60022); }
    static constexpr std::int32_t GetPreviousUserError() { return Number(60023); }
    static constexpr std::int32_t GetNextUserError() { return Number(60024); }
    static constexpr std::int32_t GetFirstAttachmentError() { return Number(60031); }
    static constexpr std::int32_t GetLastAttachmentError() { return Number(60032); }
    static constexpr std::int32_t GetPreviousAttachmentError() { return Number(60033); }
    static constexpr std::int32_t GetNextAttachmentError() { return Number(60034); }
    static constexpr std::int32_t GetFirstTableError() { return Number(60041); }
    static constexpr std::int32_t GetLastTableError() { return Number(60042); }
    static constexpr std::int32_t GetPreviousTableError() { return Number(60043); }
    static constexpr std::int32_t GetNextTableError() { return Number(60044); }
    static constexpr std::int32_t GetRecordNotFoundError() { return Number(60005); }
    static constexpr std::int32_t GetDBNotFoundError() { return Number(60006); }
    static constexpr std::int32_t GetNoteNotFoundError() { return Number(60007); }
    static constexpr std::int32_t GetAttachmentNotFoundError() { return Number(60008); }
    static constexpr std::int32_t GetTableNotFoundError() { return Number(60009); }
    static constexpr std::int32_t GetDBOwnerNotFoundError() { return Number(60010); }
    static constexpr std::int32_t GetValueNotFoundError() { return Number(60012); }
    static constexpr std::int32_t GetReferencedFldNotFoundError() { return Number(60011); }
    static constexpr std::int32_t GetFieldOutOfRangeError() { return Number(60016); }
    static constexpr std::int32_t GetNewTableCreationError() { return Number(60099); }
    static constexpr std::int32_t GetNewDBCreationError() { return Number(60199); }
    static constexpr std::int32_t GetNewUserCreationError() { return Number(60299); }
    static constexpr std::int32_t GetUserLogedOnNotFoundError() { return Number(60499); }
    static constexpr std::int32_t GetDBPasswordError() { return Number(61799); }
    static constexpr std::int32_t GetUserPasswordError() { return Number(60699); }
    static constexpr std::int32_t GetDBOwnerChangeError() { return Number(61898); }
    static constexpr std::int32_t GetDBPasswordChangeError() { return Number(61899); }
    static constexpr std::int32_t GetUserPasswordChangeError() { return Number(60799); }
    static constexpr std::int32_t GetDBNotSetError() { return Number(61699); }
    static constexpr std::int32_t GetDBOverwriteError() { return Number(61599); }
    static constexpr std::int32_t GetDBToMDBError() { return Number(60013); }
    static constexpr std::int32_t GetDBToTextError() { return Number(60014); }
    static constexpr std::int32_t GetDBToHTMLError() { return Number(60015); }
    static constexpr std::int32_t GetUserPermissionToRdError() { return Number(60700); }
    static constexpr std::int32_t GetUserPermissionToRWError() { return Number(60701); }
    static constexpr std::int32_t GetUserPermissionToDelError() { return Number(60702); }
    static constexpr std::int32_t GetUserDisabledError() { return Number(60703); }
    static constexpr std::int32_t GetUserNotFoundError() { return Number(60599); }
    static constexpr std::int32_t GetUserIsNotDBOwnerError() { return Number(60704); }

  private:
    static constexpr std::int32_t Number(std::uint32_t offset) {
        return static_cast<std::int32_t>(0x80040000u + offset);
    }
};

}  // namespace tavolin
