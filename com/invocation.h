// One late-bound call: the host's arguments, which may be references to variants of any kind, are
// brought into the form that the member declares, and the member is called through its interface.
#pragma once

#include <vector>

#include "com/members.h"
#include "com/platform.h"
#include "com/ref.h"

namespace tavolin::com {

class Invocation {
  public:
    Invocation(IDispatch* face, const Member& member, LCID lcid)
        : face_(face), member_(member), lcid_(lcid) {}
    ~Invocation();
    Invocation(const Invocation&) = delete;
    Invocation& operator=(const Invocation&) = delete;

    // As IDispatch::Invoke. An argument that is left out, Empty or Missing is the default where
    // there is one; Null is a value, and no object. Arguments of a property that has none go to the
    // default member of its value.
    HRESULT Run(const DISPPARAMS& arguments, WORD flags, VARIANT* result, EXCEPINFO* exception,
                UINT* bad_argument);

  private:
    // A converted argument, and what must live until the call is over.
    struct Slot {
        VARIANT value{};
        bool owned = false;
        Ref<IUnknown> object;
        void* reference = nullptr;
    };

    // What can be wrong with the arguments of any member, and with the names that they bear.
    static HRESULT Check(const DISPPARAMS& arguments, UINT* bad_argument);
    HRESULT CheckNames(const DISPPARAMS& arguments, UINT* bad_argument) const;
    bool IsSetter() const {
        return (member_.kind & (INVOKE_PROPERTYPUT | INVOKE_PROPERTYPUTREF)) != 0;
    }
    const VARIANT* Source(const DISPPARAMS& arguments, std::size_t index) const;
    HRESULT Convert(const Parameter& parameter, const VARIANT* source, Slot& slot) const;
    HRESULT ConvertValue(const Parameter& parameter, const VARIANT& source, Slot& slot) const;
    HRESULT ConvertObject(const Parameter& parameter, const VARIANT& source, Slot& slot) const;
    HRESULT TakeDefault(const Parameter& parameter, Slot& slot) const;
    HRESULT Call(VARIANT* result);
    HRESULT RunOnValue(const DISPPARAMS& arguments, WORD flags, VARIANT* result,
                       EXCEPINFO* exception, UINT* bad_argument);

    IDispatch* face_;
    const Member& member_;
    LCID lcid_;
    std::vector<Slot> slots_;
};

}  // namespace tavolin::com
