#include "tavolin/model/table.h"

#include "com/properties.h"
#include "com/record_face.h"
#include "tavolin/model/attachment_set.h"
#include "tavolin/model/table_set.h"

namespace tavolin::com {
namespace {

#define TAVOLIN_TEXT_AT(Name)                                       \
    STDMETHODIMP get_##Name(BYTE number, BSTR* result) override {   \
        return Return(result, [&] { return core().Name(number); }); \
    }                                                               \
    STDMETHODIMP put_##Name(BYTE number, BSTR value) override {     \
        return Call([&] { core().Name(number, Utf8(value)); });     \
    }

class TableObject : public Object<CVLTable> {
  public:
    using Object::Object;

    STDMETHODIMP QueryInterface(REFIID iid, void** result) override {
        if (iid != __uuidof(::_CVLRecord)) return Object::QueryInterface(iid, result);
        if (!result) return E_POINTER;
        *result = static_cast<::_CVLRecord*>(&record_face_);
        AddRef();
        return S_OK;
    }
    STDMETHODIMP InterfaceSupportsErrorInfo(REFIID iid) override {
        return iid == __uuidof(::_CVLRecord) ? S_OK : Object::InterfaceSupportsErrorInfo(iid);
    }

    TAVOLIN_TEXT(Key)
    TAVOLIN_TEXT_AT(ReferencedTable)
    TAVOLIN_READ(VARIANT_BOOL, IsReferenced)
    TAVOLIN_TEXT_AT(LinkedTable)
    TAVOLIN_READ(BYTE, NumberOfLinkedTables)
    STDMETHODIMP get_FieldIsForeignKey(BYTE field, VARIANT_BOOL* result) override {
        return Return(result, [&] { return core().FieldIsForeignKey(field); });
    }
    TAVOLIN_READ(::TableEnum, SpecificType)
    TAVOLIN_TEXT_AT(FieldLabel)
    TAVOLIN_TEXT_AT(FieldName)
    TAVOLIN_OBJECT(CVLRecordSet)
    TAVOLIN_READ(::PrimaryKeyType, PrimaryKey)
    STDMETHODIMP put_PrimaryKey(::PrimaryKeyType* key) override {
        return Call(
            [&] {
                core().PrimaryKey({key->Part0, key->Part1, key->Part2, key->Part3});
            },
            key);
    }
    TAVOLIN_READ(LONG, Count)

    STDMETHODIMP CanAdd(VARIANT recordKey, VARIANT_BOOL* result) override {
        return Return(result, [&] { return core().CanAdd(Argument(recordKey).NewKey()); });
    }
    STDMETHODIMP Add(::_CVLTableSet* useTableSet, LONG nKey, TAVOLIN_TEN_PARAMETERS(prop),
                     ::_CVLAttachmentSet* AttachmentsTable, VARIANT Before, VARIANT After,
                     ::_CVLRecord** result) override {
        return Return(result, [&] {
            const Argument before(Before);
            const Argument after(After);
            return core().Add(CoreOf<CVLTableSet>(useTableSet), nKey, Fields(TAVOLIN_TEN(prop)),
                              CoreOf<CVLAttachmentSet>(AttachmentsTable),
                              {before.OptionalKey(), after.OptionalKey()});
        });
    }
    STDMETHODIMP Update(::_CVLTableSet* useTableSet, ::_CVLRecord* record,
                        TAVOLIN_TEN_PARAMETERS(prop), ::_CVLAttachmentSet* AttachmentsTable,
                        ::_CVLRecord** result) override {
        return Return(result, [&] {
            return core().Update(CoreOf<CVLTableSet>(useTableSet), CoreOf<CVLRecord>(record),
                                 Fields(TAVOLIN_TEN(prop)),
                                 CoreOf<CVLAttachmentSet>(AttachmentsTable));
        });
    }
    STDMETHODIMP Remove(VARIANT RecordNumOrKey) override {
        return Call([&] { core().Remove(Argument(RecordNumOrKey).Key()); });
    }
    STDMETHODIMP Unlink(VARIANT LinkedTable, ::_CVLTable** result) override {
        return Return(result, [&] { return core().Unlink(Argument(LinkedTable).Table()); });
    }
    STDMETHODIMP Link(BYTE fldNum0to9, VARIANT toTable, ::_CVLTable** result) override {
        return Return(result, [&] { return core().Link(fldNum0to9, Argument(toTable).Table()); });
    }
    STDMETHODIMP GetRecord(VARIANT RecordNumOrKey, ::_CVLRecord** result) override {
        return Return(result, [&] { return core().GetRecord(Argument(RecordNumOrKey).Key()); });
    }
    STDMETHODIMP SetPrimaryKeyFields(BYTE FieldNum, BYTE withFieldNum, BYTE andFieldNum,
                                     BYTE plusFieldNum, ::PrimaryKeyType* result) override {
        return Return(result, [&] {
            return core().SetPrimaryKeyFields(FieldNum, withFieldNum, andFieldNum, plusFieldNum);
        });
    }
    STDMETHODIMP AttachToRecord(VARIANT record, BSTR attachPathName,
                                ::attachmentEnum attachmentType, ::_CVLRecord** result) override {
        return Return(result, [&] {
            return core().AttachToRecord(Argument(record).Record(), Utf8(attachPathName),
                                         static_cast<attachmentEnum>(attachmentType));
        });
    }
    STDMETHODIMP Find(BSTR Value, VARIANT_BOOL ValueIsAKey, BYTE inFldNum0to9,
                      ::_CVLTable** result) override {
        return Return(result,
                      [&] { return core().Find(Utf8(Value), IsTrue(ValueIsAKey), inFldNum0to9); });
    }
    STDMETHODIMP Sort(BYTE ByFieldNum0to9, VARIANT_BOOL* result) override {
        return Return(result, [&] { return core().Sort(ByFieldNum0to9); });
    }
    STDMETHODIMP MakeItText(BSTR* result) override {
        return Return(result, [&] { return core().MakeItText(); });
    }
    STDMETHODIMP MakeItHTML(BSTR DirPath, BSTR FileName, BSTR* result) override {
        return Return(result, [&] { return core().MakeItHTML(Utf8(DirPath), Utf8(FileName)); });
    }
    STDMETHODIMP MakeItMDB(BSTR DirPath, BSTR DBShortName) override {
        return Call([&] { core().MakeItMDB(Utf8(DirPath), Utf8(DBShortName)); });
    }
    STDMETHODIMP FreeFromInOutLinks() override {
        return Call([&] { core().FreeFromInOutLinks(); });
    }
    STDMETHODIMP DeleteLinks(::_CVLTableSet* useTableSet) override {
        return Call([&] { core().DeleteLinks(CoreOf<CVLTableSet>(useTableSet)); });
    }
    TAVOLIN_PRINT_TO_FILE

    TAVOLIN_EVENTS(core().OnFieldSetAsForeignKey, core().OnRecordAdd, core().OnRecordUpDate,
                   core().OnRecordRemove)

  private:
    RecordFace record_face_{*this};
};

}  // namespace

ObjectBase* NewObject(std::shared_ptr<CVLTable> core) { return new TableObject(std::move(core)); }

}  // namespace tavolin::com
