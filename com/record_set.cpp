#include "tavolin/model/record_set.h"

#include "com/properties.h"
#include "com/set_object.h"
#include "tavolin/model/attachment_set.h"
#include "tavolin/model/table.h"

namespace tavolin::com {
namespace {

PrimaryKeyType KeyFields(const ::PrimaryKeyType& key) {
    return {key.Part0, key.Part1, key.Part2, key.Part3};
}

class RecordSetObject : public SetObject<CVLRecordSet> {
  public:
    using SetObject::SetObject;

    STDMETHODIMP Add(::PrimaryKeyType* Key, LONG nKey, TAVOLIN_TEN_PARAMETERS(prop),
                     ::_CVLAttachmentSet* AttachmentSet, VARIANT Before, VARIANT After,
                     ::_CVLRecord** result) override {
        return Return(
            result,
            [&] {
                const Argument before(Before);
                const Argument after(After);
                return core().Add(KeyFields(*Key), nKey, Fields(TAVOLIN_TEN(prop)),
                                  CoreOf<CVLAttachmentSet>(AttachmentSet),
                                  {before.OptionalKey(), after.OptionalKey()});
            },
            Key);
    }
    STDMETHODIMP Update(::PrimaryKeyType* Key, ::_CVLRecord** record, TAVOLIN_TEN_PARAMETERS(prop),
                        ::_CVLAttachmentSet* AttachmentSet, ::_CVLRecord** result) override {
        return Return(
            result,
            [&] {
                return core().Update(KeyFields(*Key), CoreOf<CVLRecord>(*record),
                                     Fields(TAVOLIN_TEN(prop)),
                                     CoreOf<CVLAttachmentSet>(AttachmentSet));
            },
            Key, record);
    }
    TAVOLIN_ITEM(CVLRecord)
    TAVOLIN_OBJECT_STATE
    TAVOLIN_PRINT_TO_FILE
    STDMETHODIMP AttachToRecord(::_CVLRecord* record, LONG attachNkey, BSTR attachFilePathName,
                                ::attachmentEnum aType) override {
        return Call([&] {
            core().AttachToRecord(CoreOf<CVLRecord>(record), attachNkey, Utf8(attachFilePathName),
                                  static_cast<attachmentEnum>(aType));
        });
    }
    STDMETHODIMP MakeItMDB(BSTR DirPath, BSTR DBShortName, BSTR TableName,
                           TAVOLIN_TEN_PARAMETERS(FieldLbl)) override {
        return Call([&] {
            core().MakeItMDB(Utf8(DirPath), Utf8(DBShortName), Utf8(TableName),
                             Fields(TAVOLIN_TEN(FieldLbl)));
        });
    }
    STDMETHODIMP MakeItText(TAVOLIN_TEN_PARAMETERS(FieldLbl), BSTR* result) override {
        return Return(result, [&] { return core().MakeItText(Fields(TAVOLIN_TEN(FieldLbl))); });
    }
    STDMETHODIMP MakeItHTML(BSTR DirPath, BSTR FileName, ::_CVLTable** table,
                            TAVOLIN_TEN_PARAMETERS(FieldLbl), BSTR* result) override {
        return Return(
            result,
            [&] {
                return core().MakeItHTML(Utf8(DirPath), Utf8(FileName), CoreOf<CVLTable>(*table),
                                         Fields(TAVOLIN_TEN(FieldLbl)));
            },
            table);
    }
    TAVOLIN_NAVIGATION(Record, ::_CVLRecord, ::_CVLRecord)
    STDMETHODIMP Sort(BYTE ByFieldNum, VARIANT_BOOL* result) override {
        return Return(result, [&] { return core().Sort(ByFieldNum); });
    }

    TAVOLIN_EVENTS(core().OnRecordAdd, core().OnRecordUpDate, core().OnRecordRemove)
};

}  // namespace

ObjectBase* NewObject(std::shared_ptr<CVLRecordSet> core) {
    return new RecordSetObject(std::move(core));
}

}  // namespace tavolin::com
