#include "com/late_updater.h"

#include <dispex.h>

namespace tavolin::com {
namespace {

// What a script raised becomes the error information of this call.
HRESULT Pass(EXCEPINFO& exception) {
    if (exception.pfnDeferredFillIn) exception.pfnDeferredFillIn(&exception);
    Ref<ICreateErrorInfo> writer;
    if (SUCCEEDED(::CreateErrorInfo(writer.slot()))) {
        writer->SetGUID(__uuidof(::_IUpdater));
        writer->SetSource(exception.bstrSource);
        writer->SetDescription(exception.bstrDescription);
        ::SetErrorInfo(0, Ref<IErrorInfo>::Of(writer.get()).get());
    }
    ::SysFreeString(exception.bstrSource);
    ::SysFreeString(exception.bstrDescription);
    ::SysFreeString(exception.bstrHelpFile);
    return FAILED(exception.scode) ? exception.scode : DISP_E_EXCEPTION;
}

// Objects whose members come and go with the script may tell their ids in the extended way alone.
HRESULT FindMember(IDispatch* target, const wchar_t* name, DISPID* id) {
    auto* wanted = const_cast<LPOLESTR>(name);
    const HRESULT found = target->GetIDsOfNames(IID_NULL, &wanted, 1, LOCALE_USER_DEFAULT, id);
    const auto extended = Ref<IDispatchEx>::Of(target);
    if (SUCCEEDED(found) || !extended) return found;
    const BSTR text = ::SysAllocString(name);
    const HRESULT result = extended->GetDispID(text, fdexNameCaseInsensitive, id);
    ::SysFreeString(text);
    return result;
}

VARIANTARG TextArgument(BSTR text) {
    VARIANTARG argument{};
    argument.vt = VT_BSTR;
    argument.bstrVal = text;
    return argument;
}

}  // namespace

Ref<IUnknown> LateUpdater::Before(IUnknown* object) {
    auto target = Ref<IDispatch>::Of(object);
    if (!target) return {};
    for (const wchar_t* name : {L"Update", L"AddAffectedRecords"}) {
        DISPID id = DISPID_UNKNOWN;
        if (FAILED(FindMember(target.get(), name, &id))) return {};
    }
    return Ref<IUnknown>::Owning(new LateUpdater(std::move(target)));
}

STDMETHODIMP LateUpdater::QueryInterface(REFIID iid, void** result) {
    if (!result) return E_POINTER;
    *result = nullptr;
    if (iid != IID_IUnknown && iid != IID_IDispatch && iid != __uuidof(::_IUpdater)) {
        return E_NOINTERFACE;
    }
    *result = static_cast<::_IUpdater*>(this);
    AddRef();
    return S_OK;
}

STDMETHODIMP_(ULONG) LateUpdater::Release() {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
}

STDMETHODIMP LateUpdater::Update() { return CallByName(L"Update", DISPPARAMS{}); }

STDMETHODIMP LateUpdater::AddAffectedRecords(BSTR database, BSTR table, BSTR recordKey) {
    VARIANTARG arguments[] = {TextArgument(recordKey), TextArgument(table), TextArgument(database)};
    return CallByName(L"AddAffectedRecords", DISPPARAMS{arguments, nullptr, 3, 0});
}

HRESULT LateUpdater::CallByName(const wchar_t* name, DISPPARAMS arguments) {
    DISPID id = DISPID_UNKNOWN;
    const HRESULT found = FindMember(target_.get(), name, &id);
    if (FAILED(found)) return found;
    EXCEPINFO exception{};
    const HRESULT called = target_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                                           &arguments, nullptr, &exception, nullptr);
    return called == DISP_E_EXCEPTION ? Pass(exception) : called;
}

}  // namespace tavolin::com
