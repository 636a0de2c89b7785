#include "com/class_factory.h"

#include "com/object.h"

namespace tavolin::com {

HRESULT ClassFactory::Get(REFCLSID clsid, REFIID iid, void** result) {
    if (!result) return E_POINTER;
    *result = nullptr;
    const ClassRow* row = CreatableClass(clsid);
    if (!row) return CLASS_E_CLASSNOTAVAILABLE;
    auto* factory = new (std::nothrow) ClassFactory(*row);
    if (!factory) return E_OUTOFMEMORY;
    const HRESULT got = factory->QueryInterface(iid, result);
    factory->Release();
    return got;
}

STDMETHODIMP ClassFactory::QueryInterface(REFIID iid, void** result) {
    if (!result) return E_POINTER;
    *result = nullptr;
    if (iid != IID_IUnknown && iid != IID_IClassFactory) return E_NOINTERFACE;
    *result = static_cast<IClassFactory*>(this);
    AddRef();
    return S_OK;
}

STDMETHODIMP_(ULONG) ClassFactory::Release() {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
}

STDMETHODIMP ClassFactory::CreateInstance(IUnknown* outer, REFIID iid, void** result) {
    if (!result) return E_POINTER;
    *result = nullptr;
    if (outer) return CLASS_E_NOAGGREGATION;
    try {
        ObjectBase* object = row_.create();
        const HRESULT got = object->Query(iid, result);
        object->owner()->Release();
        return got;
    } catch (...) {
        return ReportCurrent(row_.iid);
    }
}

STDMETHODIMP ClassFactory::LockServer(BOOL lock) {
    CountObject(lock ? 1 : -1);
    return S_OK;
}

}  // namespace tavolin::com
