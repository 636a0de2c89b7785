// A variant argument, as the library takes it. What is made from it is a view: the argument must
// outlive the call.
//
//     return core().Item(Argument(vntIndexKey).Key());
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "com/faces.h"
#include "com/failure.h"
#include "com/platform.h"
#include "com/ref.h"
#include "tavolin/model/field_argument.h"
#include "tavolin/model/index_key.h"
#include "tavolin/model/table_argument.h"
#include "tavolin/model/user_argument.h"

namespace tavolin::com {

// The library's object behind a host's pointer; nothing for nothing. What is not one of this
// component's objects of that class raises 13.
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

class Argument {
  public:
    explicit Argument(const VARIANT& variant);
    ~Argument() { ::VariantClear(&copy_); }
    Argument(const Argument&) = delete;
    Argument& operator=(const Argument&) = delete;

    // False for an optional argument that was left out.
    bool given() const;

    // A number of any width is a position, a text a key; anything else raises 13.
    IndexKey Key() const;
    std::optional<IndexKey> OptionalKey() const;
    // A Byte, an Integer, a Long or a String names an element; an object of the class is itself;
    // anything else is nothing.
    TableArgument Table() const;
    RecordArgument Record() const;
    // A number of any width is a field number, a text a name; anything else raises 13.
    FieldArgument Field() const;
    // A text or a user; anything else raises 13.
    UserArgument User() const;
    std::optional<bool> Flag() const;

  private:
    bool IsName() const;
    bool IsWholeNumber() const;
    std::int64_t Number() const;
    template <class Core>
    std::shared_ptr<Core> CoreInside() const;

    VARIANT copy_{};
    VARIANT* value_;  // never written to: the platform does not say const
    std::string text_;
};

}  // namespace tavolin::com
