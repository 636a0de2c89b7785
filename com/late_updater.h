// A script's observer: an object without the interface of observers, called by names.
#pragma once

#include <atomic>

#include "com/module.h"
#include "com/platform.h"
#include "com/ref.h"

namespace tavolin::com {

class LateUpdater : public ::_IUpdater {
  public:
    // Nothing when the object cannot be called late-bound, or has not both members.
    static Ref<IUnknown> Before(IUnknown* object);

    STDMETHODIMP QueryInterface(REFIID iid, void** result) override;
    STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
    STDMETHODIMP_(ULONG) Release() override;

    STDMETHODIMP GetTypeInfoCount(UINT* count) override { return target_->GetTypeInfoCount(count); }
    STDMETHODIMP GetTypeInfo(UINT index, LCID lcid, ITypeInfo** info) override {
        return target_->GetTypeInfo(index, lcid, info);
    }
    STDMETHODIMP GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID lcid,
                               DISPID* ids) override {
        return target_->GetIDsOfNames(iid, names, count, lcid, ids);
    }
    STDMETHODIMP Invoke(DISPID member, REFIID iid, LCID lcid, WORD flags, DISPPARAMS* arguments,
                        VARIANT* result, EXCEPINFO* exception, UINT* bad_argument) override {
        return target_->Invoke(member, iid, lcid, flags, arguments, result, exception,
                               bad_argument);
    }

    STDMETHODIMP Update() override;
    STDMETHODIMP AddAffectedRecords(BSTR database, BSTR table, BSTR recordKey) override;

  private:
    explicit LateUpdater(Ref<IDispatch> target) : target_(std::move(target)) {}
    virtual ~LateUpdater() = default;

    HRESULT CallByName(const wchar_t* name, DISPPARAMS arguments);

    Ref<IDispatch> target_;
    std::atomic<ULONG> references_{1};
    Counted counted_;
};

}  // namespace tavolin::com
