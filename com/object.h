// What every object of the component is, and the short way to write a member:
//
//     STDMETHODIMP get_Count(LONG* result) override {
//         return Return(result, [&] { return core().Count(); });
//     }
//
// An object belongs to the thread that made it. A call from another one that did not come through
// the platform's marshalling is refused with RPC_E_WRONG_THREAD and touches nothing.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>

#include "com/connections.h"
#include "com/faces.h"
#include "com/failure.h"
#include "com/module.h"
#include "com/platform.h"
#include "com/ref.h"

namespace tavolin::com {

// What only this component's own objects answer to, with an ObjectBase. No proxy does.
inline constexpr GUID kOwnObject = {
    0x5a1d9a52, 0x37c8, 0x4e0b, {0x9d, 0x4e, 0x1b, 0x6f, 0x0c, 0x52, 0xe7, 0x31}};

// The part that does not depend on the class: counting, asking for interfaces, late binding.
class ObjectBase : public ISupportErrorInfo, public IProvideClassInfo2, public EventSource {
  public:
    ObjectBase(const ObjectBase&) = delete;
    ObjectBase& operator=(const ObjectBase&) = delete;

    // The object as the interface that a caller asked for at its creation.
    virtual HRESULT Query(REFIID iid, void** result) = 0;

    // The library's object, if it is one of that class.
    std::shared_ptr<void> CoreAs(const ClassRow& row) const {
        return &row == &row_ ? CoreObject() : nullptr;
    }

    STDMETHODIMP InterfaceSupportsErrorInfo(REFIID iid) override;
    STDMETHODIMP GetClassInfo(ITypeInfo** info) override;
    STDMETHODIMP GetGUID(DWORD kind, GUID* guid) override;

    // EventSource.
    const ClassRow& row() const override { return row_; }
    IUnknown* owner() override { return static_cast<ISupportErrorInfo*>(this); }
    DWORD thread() const override { return thread_; }

    bool OnOwnThread() const { return ::GetCurrentThreadId() == thread_; }

  protected:
    explicit ObjectBase(const ClassRow& row) : row_(row), thread_(::GetCurrentThreadId()) {}
    virtual ~ObjectBase() = default;

    virtual std::shared_ptr<void> CoreObject() const = 0;

    ULONG Hold() { return ++references_; }
    ULONG LetGo();
    HRESULT QueryInterfaceOf(IDispatch* face, REFIID iid, void** result);
    // False when the last reference has gone and the object is about to.
    bool TryHold();

    HRESULT IdsOfNames(LPOLESTR* names, UINT count, DISPID* ids);
    HRESULT InvokeMember(IDispatch* face, DISPID member, LCID lcid, WORD flags,
                         DISPPARAMS* arguments, VARIANT* result, EXCEPINFO* exception,
                         UINT* bad_argument);
    HRESULT DescribeFace(UINT index, ITypeInfo** info);

    // Runs a member's body. Null among the pointers that it needs is E_POINTER.
    template <class Body, class... Needed>
    HRESULT Call(Body&& body, const Needed*... needed) {
        if (((needed == nullptr) || ...)) return Refused(E_POINTER);
        if (!OnOwnThread()) return Refused(RPC_E_WRONG_THREAD);
        const Keeper keeper(*this);
        try {
            std::forward<Body>(body)();
            return S_OK;
        } catch (...) {
            return ReportCurrent(row_.iid);
        }
    }

  private:
    // A handler that the call leads to may let the caller's last reference go.
    class Keeper {
      public:
        explicit Keeper(ObjectBase& object) : object_(object) { object_.Hold(); }
        ~Keeper() { object_.LetGo(); }

      private:
        ObjectBase& object_;
    };

    const ClassRow& row_;
    const DWORD thread_;
    std::atomic<ULONG> references_{1};
    Counted counted_;
};

// The living objects of one class, by what stands behind them.
template <class Core>
class Identities {
  public:
    static std::mutex& Lock() {
        static auto* lock = new std::mutex;
        return *lock;
    }
    static std::unordered_map<const Core*, ObjectBase*>& Living() {
        static auto* living = new std::unordered_map<const Core*, ObjectBase*>;
        return *living;
    }
};

// The part that is the same for every class that stands before a class of the library.
template <class Core>
class Object : public Face<Core>::Interface, public ObjectBase {
  public:
    using Interface = typename Face<Core>::Interface;

    STDMETHODIMP QueryInterface(REFIID iid, void** result) override {
        return QueryInterfaceOf(this, iid, result);
    }
    STDMETHODIMP_(ULONG) AddRef() override { return Hold(); }
    STDMETHODIMP_(ULONG) Release() override { return LetGo(); }
    HRESULT Query(REFIID iid, void** result) override { return QueryInterface(iid, result); }

    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        if (!count) return E_POINTER;
        *count = 1;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT index, LCID, ITypeInfo** info) override {
        return DescribeFace(index, info);
    }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
        return IdsOfNames(names, count, ids);
    }
    STDMETHODIMP Invoke(DISPID member, REFIID, LCID lcid, WORD flags, DISPPARAMS* arguments,
                        VARIANT* result, EXCEPINFO* exception, UINT* bad_argument) override {
        return InvokeMember(this, member, lcid, flags, arguments, result, exception, bad_argument);
    }

    // The one living object before `core`, made if there is none; an owned reference.
    static Interface* Before(const std::shared_ptr<Core>& core);

    explicit Object(std::shared_ptr<Core> core)
        : ObjectBase(Face<Core>::row), core_(std::move(core)) {
        std::lock_guard guard(Identities<Core>::Lock());
        Identities<Core>::Living()[core_.get()] = this;
    }

  protected:
    ~Object() override {
        DisconnectAll();
        std::lock_guard guard(Identities<Core>::Lock());
        auto& living = Identities<Core>::Living();
        const auto entry = living.find(core_.get());
        if (entry != living.end() && entry->second == this) living.erase(entry);
    }

    Core& core() const { return *core_; }
    const std::shared_ptr<Core>& shared_core() const { return core_; }
    std::shared_ptr<void> CoreObject() const override { return core_; }

    // Gives the body's result to the caller.
    template <class Result, class Body, class... Needed>
    HRESULT Return(Result* result, Body&& body, const Needed*... needed);

  private:
    const std::shared_ptr<Core> core_;
};

}  // namespace tavolin::com

#include "com/results.h"
