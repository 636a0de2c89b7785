// A table under the declared type of a record.
//
// Three members of the table set are declared as giving a record and give a table. What they give
// is this face of the table: the same object to COM, the table to late binding, and safe to call as
// a record. Of a record's members a table has `Key`; the others raise 438.
#pragma once

#include "com/object.h"

namespace tavolin::com {

class RecordFace : public ::_CVLRecord {
  public:
    explicit RecordFace(::_CVLTable& table) : table_(table) {}

    STDMETHODIMP QueryInterface(REFIID iid, void** result) override {
        return table_.QueryInterface(iid, result);
    }
    STDMETHODIMP_(ULONG) AddRef() override { return table_.AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return table_.Release(); }

    STDMETHODIMP GetTypeInfoCount(UINT* count) override { return table_.GetTypeInfoCount(count); }
    STDMETHODIMP GetTypeInfo(UINT index, LCID lcid, ITypeInfo** info) override {
        return table_.GetTypeInfo(index, lcid, info);
    }
    STDMETHODIMP GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID lcid,
                               DISPID* ids) override {
        return table_.GetIDsOfNames(iid, names, count, lcid, ids);
    }
    STDMETHODIMP Invoke(DISPID member, REFIID iid, LCID lcid, WORD flags, DISPPARAMS* arguments,
                        VARIANT* result, EXCEPINFO* exception, UINT* bad_argument) override {
        return table_.Invoke(member, iid, lcid, flags, arguments, result, exception, bad_argument);
    }

    STDMETHODIMP get_Key(BSTR* result) override { return table_.get_Key(result); }
    STDMETHODIMP put_Key(BSTR value) override { return table_.put_Key(value); }
    STDMETHODIMP get_nKey(LONG* result) override { return NothingFor(result); }
    STDMETHODIMP put_nKey(LONG) override { return NoSuchMember(); }
    STDMETHODIMP get_CVLAttachmentSet(::_CVLAttachmentSet** result) override {
        return NothingFor(result);
    }
    STDMETHODIMP putref_CVLAttachmentSet(::_CVLAttachmentSet*) override { return NoSuchMember(); }
    STDMETHODIMP put_prop(BYTE, BSTR) override { return NoSuchMember(); }
    STDMETHODIMP get_prop(BYTE, BSTR* result) override { return NothingFor(result); }
    STDMETHODIMP Attach(LONG, BSTR, ::attachmentEnum) override { return NoSuchMember(); }

  private:
    static HRESULT NoSuchMember() {
        constexpr std::int32_t kNoSuchMember = 438;
        return Report(Error(kNoSuchMember, {}, Message("A table has no such member of a record")),
                      __uuidof(::_CVLRecord));
    }
    template <class Result>
    static HRESULT NothingFor(Result* result) {
        if (!result) return Refused(E_POINTER);
        *result = Result{};
        return NoSuchMember();
    }

    ::_CVLTable& table_;
};

}  // namespace tavolin::com
