// Makes objects of one class for hosts.
#pragma once

#include <atomic>

#include "com/classes.h"
#include "com/module.h"
#include "com/platform.h"

namespace tavolin::com {

class ClassFactory : public IClassFactory {
  public:
    // DllGetClassObject.
    static HRESULT Get(REFCLSID clsid, REFIID iid, void** result);

    STDMETHODIMP QueryInterface(REFIID iid, void** result) override;
    STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
    STDMETHODIMP_(ULONG) Release() override;
    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** result) override;
    STDMETHODIMP LockServer(BOOL lock) override;

  private:
    explicit ClassFactory(const ClassRow& row) : row_(row) {}
    virtual ~ClassFactory() = default;

    const ClassRow& row_;
    std::atomic<ULONG> references_{1};
    Counted counted_;
};

}  // namespace tavolin::com
