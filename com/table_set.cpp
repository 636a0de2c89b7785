#include "tavolin/model/table_set.h"

#include "com/properties.h"
#include "com/set_object.h"

namespace tavolin::com {

// The table's face of a record, for the members that are declared to give one.
void Give(const std::shared_ptr<CVLTable>& table, ::_CVLRecord** result) {
    if (!table) return;
    const auto object = Ref<::_CVLTable>::Owning(Before(table));
    *result = Ref<::_CVLRecord>::Of(object.get()).Detach();
}

namespace {

class TableSetObject : public SetObject<CVLTableSet> {
  public:
    using SetObject::SetObject;

    STDMETHODIMP Add(BSTR Key, ::TableEnum TableType, ::_CVLRecordSet* RecordSet,
                     TAVOLIN_TEN_PARAMETERS(FieldName), ::_CVLTable** result) override {
        return Return(result, [&] {
            return core().Add(Utf8(Key), static_cast<TableEnum>(TableType),
                              CoreOf<CVLRecordSet>(RecordSet), Fields(TAVOLIN_TEN(FieldName)));
        });
    }
    STDMETHODIMP Update(VARIANT varKey, ::TableEnum TableType, ::_CVLRecordSet* RecordSet,
                        TAVOLIN_TEN_PARAMETERS(FieldLabel), ::_CVLTable** result) override {
        return Return(result, [&] {
            return core().Update(Argument(varKey).Key(), static_cast<TableEnum>(TableType),
                                 CoreOf<CVLRecordSet>(RecordSet), Fields(TAVOLIN_TEN(FieldLabel)));
        });
    }
    TAVOLIN_ITEM(CVLTable)
    STDMETHODIMP MakeItMDB(BSTR DirPath, BSTR DBShortName) override {
        return Call([&] { core().MakeItMDB(Utf8(DirPath), Utf8(DBShortName)); });
    }
    STDMETHODIMP MakeItText(BSTR* result) override {
        return Return(result, [&] { return core().MakeItText(); });
    }
    STDMETHODIMP MakeItHTML(BSTR DirPath, BSTR FileName) override {
        return Call([&] { core().MakeItHTML(Utf8(DirPath), Utf8(FileName)); });
    }
    TAVOLIN_PRINT_TO_FILE
    TAVOLIN_NAVIGATION(Table, ::_CVLTable, ::_CVLRecord)

    TAVOLIN_EVENTS(core().OnTableAdd, core().OnTableUpDate, core().OnTableRemove)
};

}  // namespace

ObjectBase* NewObject(std::shared_ptr<CVLTableSet> core) {
    return new TableSetObject(std::move(core));
}

}  // namespace tavolin::com
