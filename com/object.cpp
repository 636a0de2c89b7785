#include "com/object.h"

#include "com/invocation.h"
#include "com/members.h"

namespace tavolin::com {

ULONG ObjectBase::LetGo() {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
}

bool ObjectBase::TryHold() {
    ULONG count = references_;
    while (count != 0) {
        if (references_.compare_exchange_weak(count, count + 1)) return true;
    }
    return false;
}

HRESULT ObjectBase::QueryInterfaceOf(IDispatch* face, REFIID iid, void** result) {
    if (!result) return E_POINTER;
    *result = nullptr;
    if (iid == IID_IUnknown || iid == IID_IDispatch || iid == row_.iid) {
        *result = face;
    } else if (iid == IID_ISupportErrorInfo) {
        *result = static_cast<ISupportErrorInfo*>(this);
    } else if (iid == IID_IProvideClassInfo || iid == IID_IProvideClassInfo2) {
        *result = static_cast<IProvideClassInfo2*>(this);
    } else if (iid == IID_IConnectionPointContainer && row_.events) {
        *result = static_cast<IConnectionPointContainer*>(this);
    } else if (iid == kOwnObject) {
        *result = this;
    } else {
        return E_NOINTERFACE;
    }
    Hold();
    return S_OK;
}

STDMETHODIMP ObjectBase::InterfaceSupportsErrorInfo(REFIID iid) {
    return iid == row_.iid ? S_OK : S_FALSE;
}

STDMETHODIMP ObjectBase::GetClassInfo(ITypeInfo** info) {
    if (!info) return E_POINTER;
    *info = nullptr;
    return Call([&] { *info = DescriptionOf(row_.clsid).Detach(); });
}

STDMETHODIMP ObjectBase::GetGUID(DWORD kind, GUID* guid) {
    if (!guid) return E_POINTER;
    *guid = GUID{};
    if (kind != GUIDKIND_DEFAULT_SOURCE_DISP_IID) return E_INVALIDARG;
    if (!row_.events) return E_NOINTERFACE;
    *guid = *row_.events;
    return S_OK;
}

HRESULT ObjectBase::DescribeFace(UINT index, ITypeInfo** info) {
    if (!info) return E_POINTER;
    *info = nullptr;
    if (index != 0) return DISP_E_BADINDEX;
    return Call([&] { *info = DescriptionOf(row_.iid).Detach(); });
}

HRESULT ObjectBase::IdsOfNames(LPOLESTR* names, UINT count, DISPID* ids) {
    if (!names || !ids) return E_POINTER;
    HRESULT result = S_OK;
    const HRESULT called =
        Call([&] { result = DescriptionOf(row_.iid)->GetIDsOfNames(names, count, ids); });
    return FAILED(called) ? called : result;
}

HRESULT ObjectBase::InvokeMember(IDispatch* face, DISPID member, LCID lcid, WORD flags,
                                 DISPPARAMS* arguments, VARIANT* result, EXCEPINFO* exception,
                                 UINT* bad_argument) {
    if (!arguments) return Refused(E_POINTER);
    HRESULT invoked = S_OK;
    const HRESULT called = Call([&] {
        const Member* found = MembersOf(row_).Find(member, flags);
        invoked = found ? Invocation(face, *found, lcid)
                              .Run(*arguments, flags, result, exception, bad_argument)
                        : DISP_E_MEMBERNOTFOUND;
    });
    if (FAILED(called)) return called;
    return FAILED(invoked) ? Refused(invoked) : invoked;
}

}  // namespace tavolin::com
