// A variant argument, as the library takes it. What is made from it is a view: the argument must
// outlive the call.
//
//     return core().Item(Argument(vntIndexKey).Key());
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "com/faces.h"
#include "com/platform.h"
#include "com/ref.h"
#include "tavolin/model/field_argument.h"
#include "tavolin/model/index_key.h"
#include "tavolin/model/table_argument.h"
#include "tavolin/model/user_argument.h"

namespace tavolin::com {

// The library's object behind a host's pointer; nothing for nothing. What is not one of this
// component's objects of that class raises 13, and one of another thread RPC_E_WRONG_THREAD.
std::shared_ptr<void> CoreBehind(IUnknown* object, const ClassRow& row);

template <class Core>
std::shared_ptr<Core> CoreOf(IUnknown* object) {
    return std::static_pointer_cast<Core>(CoreBehind(object, Face<Core>::row));
}
// The same for an optional argument that is passed by reference.
template <class Core>
std::shared_ptr<Core> CoreAt(typename Face<Core>::Interface** object) {
    return object ? CoreOf<Core>(*object) : nullptr;
}

// What is of a wrong kind, or too large, becomes an argument that cannot be used: it is the
// library's member that raises, once it has asked who may call it.
class Argument {
  public:
    // A null reference raises E_POINTER.
    explicit Argument(const VARIANT& variant);
    ~Argument() { ::VariantClear(&copy_); }
    Argument(const Argument&) = delete;
    Argument& operator=(const Argument&) = delete;

    // False for an optional argument that was left out.
    bool given() const;

    // A number of any width is a position, a text a key.
    IndexKey Key() const;
    // The same for an element that is not there yet: Empty is the empty key.
    IndexKey NewKey() const;
    std::optional<IndexKey> OptionalKey() const;
    // A Byte, an Integer, a Long or a String names an element; an object of the class is itself;
    // anything else is nothing.
    TableArgument Table() const;
    RecordArgument Record() const;
    // A number of any width is a field number, a text a name.
    FieldArgument Field() const;
    // A text or a user.
    UserArgument User() const;
    // Nothing when it was left out. What is no truth value makes `key`, an argument of the same
    // call, one that cannot be used.
    std::optional<bool> Flag(IndexKey& key) const;

  private:
    bool IsName() const;
    bool IsWholeNumber() const;
    // The number, or the error of what is none.
    std::variant<std::int64_t, RunTimeError> Number() const;
    template <class Target>
    Target FromNumber() const;
    template <class Core>
    std::shared_ptr<Core> CoreInside() const;

    VARIANT copy_{};
    VARIANT* value_;  // never written to: the platform does not say const
    std::string text_;
};

}  // namespace tavolin::com
