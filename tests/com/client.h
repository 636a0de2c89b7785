// What the tests share that call the component as a host does: through its interfaces, knowing
// nothing but the type library's header. The component is made without any registration, from the
// manifest beside it, and after each test nothing of it may be left.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "com/platform.h"
#include "com/ref.h"

namespace tavolin_client {

using tavolin::com::Ref;

// The folder with Tavolin.dll and Tavolin.Automation.manifest.
std::wstring ComponentFolder();

// A text argument.
class Text {
  public:
    Text(const wchar_t* text = L"") : text_(::SysAllocString(text)) {}  // NOLINT: its use
    explicit Text(BSTR taken, int) : text_(taken) {}
    Text(const Text& other)
        : text_(::SysAllocStringLen(other.text_, ::SysStringLen(other.text_))) {}
    ~Text() { ::SysFreeString(text_); }
    operator BSTR() const { return text_; }  // NOLINT
    BSTR* out() { return &text_; }
    std::wstring str() const { return {text_, ::SysStringLen(text_)}; }

  private:
    BSTR text_;
};

// A variant argument.
class Any {
  public:
    Any() { missing(); }
    Any(const wchar_t* text) {
        value_.vt = VT_BSTR, value_.bstrVal = ::SysAllocString(text);
    }                                                             // NOLINT
    Any(int number) { value_.vt = VT_I4, value_.lVal = number; }  // NOLINT
    Any(IDispatch* object) {                                      // NOLINT
        value_.vt = VT_DISPATCH, value_.pdispVal = object;
        if (object) object->AddRef();
    }
    ~Any() { ::VariantClear(&value_); }
    Any(const Any&) = delete;
    operator VARIANT() const { return value_; }  // NOLINT
    VARIANT* at() { return &value_; }

  private:
    void missing() { value_.vt = VT_ERROR, value_.scode = DISP_E_PARAMNOTFOUND; }
    VARIANT value_{};
};

// What a failed call left behind: "80040001 source: description".
std::wstring Failure(HRESULT result);

// The result of a getter.
template <class Interface, class Owner, class... Arguments, class... Given>
Ref<Interface> Got(Owner* owner, HRESULT (STDMETHODCALLTYPE Owner::*member)(Arguments...),
                   Given&&... given) {
    Ref<Interface> result;
    const HRESULT got = (owner->*member)(std::forward<Given>(given)..., result.slot());
    EXPECT_EQ(got, S_OK) << ::testing::PrintToString(Failure(got));
    return result;
}
template <class Owner>
std::wstring Read(Owner* owner, HRESULT (STDMETHODCALLTYPE Owner::*member)(BSTR*)) {
    Text text;
    EXPECT_EQ((owner->*member)(text.out()), S_OK);
    return text.str();
}

// Writes down every event that reaches it: "name id(arguments)". Objects stand as their names or
// keys. It
// has no interface but the late-bound one.
class Sink : public IDispatch {
  public:
    Sink(std::wstring name, std::vector<std::wstring>& events)
        : name_(std::move(name)), events_(events) {}
    STDMETHODIMP QueryInterface(REFIID iid, void** result) override;
    STDMETHODIMP_(ULONG) AddRef() override { return ++references; }
    STDMETHODIMP_(ULONG) Release() override { return --references; }
    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* arguments, VARIANT*, EXCEPINFO*,
                        UINT*) override;

    // Connects to an object's events, and lets go.
    void Listen(IUnknown* source);
    void Stop();
    void Leave();

    ULONG references = 1;

  private:
    std::wstring name_;
    std::vector<std::wstring>& events_;
    Ref<IConnectionPoint> point_;
    DWORD cookie_ = 0;
};

class ClientTest : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    template <class Interface>
    static Ref<Interface> New(REFCLSID clsid) {
        Ref<Interface> object;
        const HRESULT made = ::CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER,
                                                __uuidof(Interface), object.out());
        EXPECT_EQ(made, S_OK);
        return object;
    }

    // A database of ann's in a folder of its own, with a table of one record.
    void OpenShop();
    Ref<::_CVLRecord> AddRecord(const wchar_t* table, const wchar_t* prop0,
                                const wchar_t* prop1 = L"");
    std::wstring folder() const { return folder_; }

    Ref<::_CVLDBEngine> engine;
    Ref<::_CVLTable> customers;

    HANDLE context_ = INVALID_HANDLE_VALUE;

  private:
    ULONG_PTR activation_ = 0;
    std::wstring folder_;
};

}  // namespace tavolin_client
