// The platform's enumerators over a list that was taken when the enumerator was made.
#pragma once

#include <algorithm>
#include <atomic>
#include <utility>
#include <vector>

#include "com/failure.h"
#include "com/module.h"
#include "com/platform.h"

namespace tavolin::com {

// `Entry` keeps an element; a copy's Detach() gives the element that the caller comes to own.
template <class Interface, class Element, class Entry>
class ListEnumerator : public Interface {
  public:
    explicit ListEnumerator(std::vector<Entry> entries, std::size_t next = 0)
        : entries_(std::move(entries)), next_(next) {}

    STDMETHODIMP QueryInterface(REFIID iid, void** result) override {
        if (!result) return E_POINTER;
        *result = nullptr;
        if (iid != IID_IUnknown && iid != __uuidof(Interface)) return E_NOINTERFACE;
        *result = static_cast<Interface*>(this);
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }

    STDMETHODIMP Next(ULONG wanted, Element* elements, ULONG* fetched) override {
        if (!elements || (!fetched && wanted != 1)) return Refused(E_POINTER);
        if (fetched) *fetched = 0;
        return Guarded(thread_, [&]() -> HRESULT {
            ULONG given = 0;
            for (; given < wanted && next_ < entries_.size(); ++given) {
                Entry entry = entries_[next_++];
                elements[given] = entry.Detach();
            }
            if (fetched) *fetched = given;
            return given == wanted ? S_OK : S_FALSE;
        });
    }
    STDMETHODIMP Skip(ULONG count) override {
        return Guarded(thread_, [&]() -> HRESULT {
            const std::size_t passed = std::min<std::size_t>(count, entries_.size() - next_);
            next_ += passed;
            return passed == count ? S_OK : S_FALSE;
        });
    }
    STDMETHODIMP Reset() override {
        return Guarded(thread_, [&]() -> HRESULT {
            next_ = 0;
            return S_OK;
        });
    }
    STDMETHODIMP Clone(Interface** copy) override {
        if (!copy) return Refused(E_POINTER);
        *copy = nullptr;
        return Guarded(thread_, [&]() -> HRESULT {
            *copy = new ListEnumerator(entries_, next_);
            return S_OK;
        });
    }

  private:
    virtual ~ListEnumerator() = default;

    std::vector<Entry> entries_;
    std::size_t next_;
    const DWORD thread_ = ::GetCurrentThreadId();
    std::atomic<ULONG> references_{1};
    Counted counted_;
};

}  // namespace tavolin::com
