// The members of an interface as the type library describes them, read once for each class.
#pragma once

#include <vector>

#include "com/faces.h"
#include "com/platform.h"
#include "com/ref.h"

namespace tavolin::com {

// The type library's description of an interface (as hosts bind to it late) or of a class.
Ref<ITypeInfo> DescriptionOf(REFGUID guid);

struct Parameter {
    enum class Kind { kValue, kAny, kObject, kRecord };

    Kind kind = Kind::kValue;
    VARTYPE type = VT_EMPTY;  // of a value, VT_ARRAY included; VT_DISPATCH or VT_UNKNOWN of objects
    bool by_reference = false;
    bool optional = false;
    bool result = false;
    GUID guid{};         // of an object's interface or of a record
    VARIANT fallback{};  // what an optional parameter is when it is left out; never cleared
};

struct Member {
    DISPID id;
    INVOKEKIND kind;
    ULONG_PTR slot;  // the offset in the table of functions
    std::vector<Parameter> parameters;

    // Those that a caller gives.
    std::size_t Inputs() const { return parameters.size() - (HasResult() ? 1 : 0); }
    bool HasResult() const { return !parameters.empty() && parameters.back().result; }
};

class Members {
  public:
    explicit Members(REFIID iid);

    // The member to which a late-bound call goes, or null. A call of a method may be one of a
    // property's getter, but not the other way round; a property is set by value or by reference as
    // it was declared.
    const Member* Find(DISPID id, WORD flags) const;

  private:
    std::vector<Member> members_;
};

const Members& MembersOf(const ClassRow& row);

}  // namespace tavolin::com
