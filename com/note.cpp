#include "com/properties.h"
#include "tavolin/model/user_note.h"

namespace tavolin::com {
namespace {

class NoteObject : public Object<CVLUserNote> {
  public:
    using Object::Object;

    STDMETHODIMP get_dateKey(BSTR* result) override {
        return Return(result, [&] { return core().dateKey; });
    }
    STDMETHODIMP put_dateKey(BSTR value) override {
        return Call([&] { core().dateKey = Utf8(value); });
    }
    STDMETHODIMP get_nKey(LONG* result) override {
        return Return(result, [&] { return core().nKey; });
    }
    STDMETHODIMP put_nKey(LONG value) override {
        return Call([&] { core().nKey = value; });
    }
    STDMETHODIMP get_Note(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP put_Note(BSTR) override { return E_NOTIMPL; }
};

class NoteSetObject : public Object<CVLUserNoteSet> {
  public:
    using Object::Object;
    STDMETHODIMP CanAdd(VARIANT, VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP Add(DATE, LONG, BSTR, ::_CVLUserNote**) override { return E_NOTIMPL; }
    STDMETHODIMP Update(VARIANT, BSTR, ::_CVLUserNote**) override { return E_NOTIMPL; }
    STDMETHODIMP get_Item(VARIANT, ::_CVLUserNote**) override { return E_NOTIMPL; }
    STDMETHODIMP get_Count(LONG*) override { return E_NOTIMPL; }
    STDMETHODIMP Remove(VARIANT) override { return E_NOTIMPL; }
    STDMETHODIMP get_NewEnum(IUnknown**) override { return E_NOTIMPL; }
    STDMETHODIMP get_ObjectState(SAFEARRAY**) override { return E_NOTIMPL; }
    STDMETHODIMP put_ObjectState(SAFEARRAY*) override { return E_NOTIMPL; }
    STDMETHODIMP LastNote(::_CVLUserNote**) override { return E_NOTIMPL; }
    STDMETHODIMP FirstNote(::_CVLUserNote**) override { return E_NOTIMPL; }
    STDMETHODIMP PreviousNote(LONG, ::_CVLUserNote**) override { return E_NOTIMPL; }
    STDMETHODIMP NextNote(LONG, ::_CVLUserNote**) override { return E_NOTIMPL; }
    STDMETHODIMP PreviousNoteIsAvailable(LONG, VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP NextNoteIsAvailable(LONG, VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP FirstNoteIsAvailable(VARIANT_BOOL*) override { return E_NOTIMPL; }
};

}  // namespace

ObjectBase* NewObject(std::shared_ptr<CVLUserNote> core) { return new NoteObject(std::move(core)); }
ObjectBase* NewObject(std::shared_ptr<CVLUserNoteSet> core) {
    return new NoteSetObject(std::move(core));
}

}  // namespace tavolin::com
