// The enumerator behind For Each: over the library's own, which survives any change of its set.
#pragma once

#include <atomic>
#include <utility>

#include "com/module.h"
#include "com/object.h"

namespace tavolin::com {

template <class Walk>
class Enumeration : public IEnumVARIANT {
  public:
    explicit Enumeration(Walk walk) : walk_(std::move(walk)), thread_(::GetCurrentThreadId()) {}

    STDMETHODIMP QueryInterface(REFIID iid, void** result) override {
        if (!result) return E_POINTER;
        *result = nullptr;
        if (iid != IID_IUnknown && iid != IID_IEnumVARIANT) return E_NOINTERFACE;
        *result = static_cast<IEnumVARIANT*>(this);
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }

    STDMETHODIMP Next(ULONG wanted, VARIANT* elements, ULONG* fetched) override {
        if (!elements || (!fetched && wanted != 1)) return E_POINTER;
        ULONG given = 0;
        const HRESULT result = Guarded([&] {
            for (; given < wanted; ++given) {
                const auto element = walk_.Next();
                if (!element) break;
                elements[given] = VARIANT{};
                elements[given].pdispVal = com::Before(element);
                elements[given].vt = VT_DISPATCH;
            }
        });
        if (fetched) *fetched = given;
        if (FAILED(result)) return result;
        return given == wanted ? S_OK : S_FALSE;
    }
    STDMETHODIMP Skip(ULONG count) override {
        ULONG passed = 0;
        const HRESULT result = Guarded([&] {
            while (passed < count && walk_.Next()) ++passed;
        });
        if (FAILED(result)) return result;
        return passed == count ? S_OK : S_FALSE;
    }
    STDMETHODIMP Reset() override {
        return Guarded([&] { walk_.Reset(); });
    }
    STDMETHODIMP Clone(IEnumVARIANT** copy) override {
        if (!copy) return E_POINTER;
        *copy = nullptr;
        return Guarded([&] { *copy = new Enumeration(walk_); });
    }

  private:
    virtual ~Enumeration() = default;

    template <class Body>
    HRESULT Guarded(Body&& body) {
        if (::GetCurrentThreadId() != thread_) return RPC_E_WRONG_THREAD;
        try {
            body();
            return S_OK;
        } catch (...) {
            return ReportCurrent(IID_IEnumVARIANT);
        }
    }

    Walk walk_;
    const DWORD thread_;
    std::atomic<ULONG> references_{1};
    Counted counted_;
};

template <class Walk>
requires requires(Walk walk) { walk.Reset(); }
void Give(Walk walk, IUnknown** result) { *result = new Enumeration<Walk>(std::move(walk)); }

}  // namespace tavolin::com
