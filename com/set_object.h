// What all set classes have in common.
#pragma once

#include "com/arguments.h"
#include "com/enumeration.h"
#include "com/object.h"
#include "com/states.h"

namespace tavolin::com {

// Members that every set has.
template <class Core>
class SetObject : public Object<Core> {
  public:
    using Object<Core>::Object;

    STDMETHODIMP CanAdd(VARIANT key, VARIANT_BOOL* result) override {
        return this->Return(result, [&] { return this->core().CanAdd(Argument(key).NewKey()); });
    }
    STDMETHODIMP get_Count(LONG* result) override {
        return this->Return(result, [&] { return this->core().Count(); });
    }
    STDMETHODIMP Remove(VARIANT key) override {
        return this->Call([&] { this->core().Remove(Argument(key).Key()); });
    }
    STDMETHODIMP get_NewEnum(IUnknown** result) override {
        return this->Return(result, [&] { return this->core().NewEnum(); });
    }
};

}  // namespace tavolin::com

// Members that sets have under names or with results of their own.
#define TAVOLIN_ITEM(Element)                                                    \
    STDMETHODIMP get_Item(VARIANT key, ::_##Element** result) override {         \
        return Return(result, [&] { return core().Item(Argument(key).Key()); }); \
    }
#define TAVOLIN_OBJECT_STATE                                         \
    STDMETHODIMP get_ObjectState(SAFEARRAY** result) override {      \
        return Return(result, [&] { return core().ObjectState(); }); \
    }                                                                \
    STDMETHODIMP put_ObjectState(SAFEARRAY* state) override {        \
        return Call([&] { core().ObjectState(BytesOf(state)); });    \
    }
#define TAVOLIN_NAVIGATION(Name, FirstType, OtherType)                                       \
    STDMETHODIMP Last##Name(OtherType** result) override {                                   \
        return Return(result, [&] { return core().Last##Name(); });                          \
    }                                                                                        \
    STDMETHODIMP First##Name(FirstType** result) override {                                  \
        return Return(result, [&] { return core().First##Name(); });                         \
    }                                                                                        \
    STDMETHODIMP Previous##Name(LONG position, OtherType** result) override {                \
        return Return(result, [&] { return core().Previous##Name(position); });              \
    }                                                                                        \
    STDMETHODIMP Next##Name(LONG position, OtherType** result) override {                    \
        return Return(result, [&] { return core().Next##Name(position); });                  \
    }                                                                                        \
    STDMETHODIMP Previous##Name##IsAvailable(LONG position, VARIANT_BOOL* result) override { \
        return Return(result, [&] { return core().Previous##Name##IsAvailable(position); }); \
    }                                                                                        \
    STDMETHODIMP Next##Name##IsAvailable(LONG position, VARIANT_BOOL* result) override {     \
        return Return(result, [&] { return core().Next##Name##IsAvailable(position); });     \
    }                                                                                        \
    STDMETHODIMP First##Name##IsAvailable(VARIANT_BOOL* result) override {                   \
        return Return(result, [&] { return core().First##Name##IsAvailable(); });            \
    }
