// A counted reference to a COM object.
#pragma once

#include <utility>

#include "com/platform.h"

namespace tavolin::com {

template <class T>
class Ref {
  public:
    Ref() = default;
    explicit Ref(T* object) : object_(object) {
        if (object_) object_->AddRef();
    }
    Ref(const Ref& other) : Ref(other.object_) {}
    Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    Ref& operator=(Ref other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~Ref() {
        if (object_) object_->Release();
    }

    // Takes over a reference that has been counted already.
    static Ref Owning(T* object) {
        Ref ref;
        ref.object_ = object;
        return ref;
    }
    // The interface of that name of an object, or nothing.
    template <class From>
    static Ref Of(From* object, REFIID iid = __uuidof(T)) {
        Ref ref;
        if (object && FAILED(object->QueryInterface(iid, ref.out()))) ref.object_ = nullptr;
        return ref;
    }

    T* get() const { return object_; }
    T* operator->() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }
    // Where a function puts its result; only while the reference is empty.
    void** out() { return reinterpret_cast<void**>(&object_); }
    T** slot() { return &object_; }
    T* Detach() { return std::exchange(object_, nullptr); }

  private:
    T* object_ = nullptr;
};

}  // namespace tavolin::com
