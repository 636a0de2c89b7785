#include "com/invocation.h"

#include <algorithm>

#include "com/late_updater.h"
#include "com/variants.h"

namespace tavolin::com {
namespace {

// What the host is told about a failed call: the error information that the member has set.
HRESULT Fill(EXCEPINFO* exception, HRESULT result) {
    Ref<IErrorInfo> information;
    const bool found = ::GetErrorInfo(0, information.slot()) == S_OK && information;
    if (!exception) return DISP_E_EXCEPTION;
    *exception = EXCEPINFO{};
    exception->scode = result;
    if (found) {
        information->GetSource(&exception->bstrSource);
        information->GetDescription(&exception->bstrDescription);
    }
    return DISP_E_EXCEPTION;
}

// The storage of a member's result, in the form that it declares.
class Outcome {
  public:
    explicit Outcome(const Parameter& parameter) {
        value_.vt = parameter.type;
        if (parameter.kind != Parameter::Kind::kRecord) return;
        value_.vt = VT_EMPTY;
        Ref<IRecordInfo> record;
        status_ = ::GetRecordInfoFromTypeInfo(DescriptionOf(parameter.guid).get(), record.slot());
        if (FAILED(status_)) return;
        value_.pvRecord = record->RecordCreate();
        value_.pRecInfo = record.Detach();
        value_.vt = VT_RECORD;
    }
    ~Outcome() { ::VariantClear(&value_); }
    Outcome(const Outcome&) = delete;
    Outcome& operator=(const Outcome&) = delete;

    HRESULT status() const { return status_; }
    void* storage() { return value_.vt == VT_RECORD ? value_.pvRecord : &value_.llVal; }
    void MoveTo(VARIANT* result) {
        *result = value_;
        value_.vt = VT_EMPTY;
    }

  private:
    VARIANT value_{};
    HRESULT status_ = S_OK;
};

}  // namespace

Invocation::~Invocation() {
    for (Slot& slot : slots_) {
        if (slot.owned) ::VariantClear(&slot.value);
    }
}

HRESULT Invocation::Run(const DISPPARAMS& arguments, WORD flags, VARIANT* result,
                        EXCEPINFO* exception, UINT* bad_argument) {
    const HRESULT sound = Check(arguments, bad_argument);
    if (FAILED(sound)) return sound;
    const std::size_t inputs = member_.Inputs();
    const UINT positional = arguments.cArgs - arguments.cNamedArgs;
    if (positional > 0 && inputs == 0 && member_.HasResult() &&
        member_.parameters.back().kind == Parameter::Kind::kObject) {
        return RunOnValue(arguments, flags, result, exception, bad_argument);
    }
    if (arguments.cArgs > inputs) return DISP_E_BADPARAMCOUNT;
    const HRESULT named = CheckNames(arguments, bad_argument);
    if (FAILED(named)) return named;
    slots_.resize(inputs);
    for (std::size_t i = 0; i < inputs; ++i) {
        const VARIANT* source = Source(arguments, i);
        const HRESULT converted = Convert(member_.parameters[i], source, slots_[i]);
        if (FAILED(converted)) {
            if (bad_argument && source) {
                *bad_argument = static_cast<UINT>(source - arguments.rgvarg);
            }
            return converted;
        }
    }
    ::SetErrorInfo(0, nullptr);
    const HRESULT called = Call(result);
    return FAILED(called) ? Fill(exception, called) : S_OK;
}

HRESULT Invocation::Check(const DISPPARAMS& arguments, UINT* bad_argument) {
    if (arguments.cNamedArgs > arguments.cArgs) return DISP_E_BADPARAMCOUNT;
    if ((arguments.cArgs > 0 && !arguments.rgvarg) ||
        (arguments.cNamedArgs > 0 && !arguments.rgdispidNamedArgs)) {
        return E_POINTER;
    }
    for (UINT i = 0; i < arguments.cArgs; ++i) {
        if (!HasNullReference(arguments.rgvarg[i])) continue;
        if (bad_argument) *bad_argument = i;
        return E_POINTER;
    }
    return S_OK;
}

HRESULT Invocation::CheckNames(const DISPPARAMS& arguments, UINT* bad_argument) const {
    const DISPID* const names = arguments.rgdispidNamedArgs;
    const auto positional = static_cast<DISPID>(arguments.cArgs - arguments.cNamedArgs);
    for (UINT i = 0; i < arguments.cNamedArgs; ++i) {
        // Arguments by position are the first ones.
        const bool fits =
            names[i] == DISPID_PROPERTYPUT
                ? IsSetter()
                : names[i] >= positional && names[i] < static_cast<DISPID>(member_.Inputs());
        if (fits && std::find(names, names + i, names[i]) == names + i) continue;
        if (bad_argument) *bad_argument = i;
        return DISP_E_PARAMNOTFOUND;
    }
    return S_OK;
}

HRESULT Invocation::RunOnValue(const DISPPARAMS& arguments, WORD flags, VARIANT* result,
                               EXCEPINFO* exception, UINT* bad_argument) {
    VARIANT value{};
    const HRESULT got =
        Invocation(face_, member_, lcid_).Run(DISPPARAMS{}, flags, &value, exception, nullptr);
    if (FAILED(got)) return got;
    const auto object = Ref<IDispatch>::Owning(value.vt == VT_DISPATCH ? value.pdispVal : nullptr);
    if (!object) return DISP_E_TYPEMISMATCH;
    DISPPARAMS passed = arguments;
    return object->Invoke(DISPID_VALUE, IID_NULL, lcid_, flags, &passed, result, exception,
                          bad_argument);
}

const VARIANT* Invocation::Source(const DISPPARAMS& arguments, std::size_t index) const {
    const bool is_new_value = IsSetter() && index + 1 == member_.parameters.size();
    const UINT positional = arguments.cArgs - arguments.cNamedArgs;
    if (!is_new_value && index < positional) return &arguments.rgvarg[arguments.cArgs - 1 - index];
    const DISPID wanted = is_new_value ? DISPID_PROPERTYPUT : static_cast<DISPID>(index);
    for (UINT i = 0; i < arguments.cNamedArgs; ++i) {
        if (arguments.rgdispidNamedArgs[i] == wanted) return &arguments.rgvarg[i];
    }
    // A host that does not name the new value gives it last.
    if (is_new_value && index < positional) return &arguments.rgvarg[arguments.cArgs - 1 - index];
    return nullptr;
}

HRESULT Invocation::Convert(const Parameter& parameter, const VARIANT* source, Slot& slot) const {
    if (source) source = &Dereferenced(*source);
    const bool left_out = !source || IsMissing(*source);
    if (parameter.optional && (left_out || source->vt == VT_EMPTY)) {
        return TakeDefault(parameter, slot);
    }
    if (left_out) return DISP_E_PARAMNOTOPTIONAL;
    switch (parameter.kind) {
        case Parameter::Kind::kAny:
            slot.value = *source;
            slot.reference = &slot.value;
            return S_OK;
        case Parameter::Kind::kObject:
            return ConvertObject(parameter, *source, slot);
        case Parameter::Kind::kRecord:
            slot.reference = RecordOf(*source, parameter.guid);
            return slot.reference ? S_OK : DISP_E_TYPEMISMATCH;
        default:
            return ConvertValue(parameter, *source, slot);
    }
}

HRESULT Invocation::TakeDefault(const Parameter& parameter, Slot& slot) const {
    slot.reference = &slot.value.llVal;
    switch (parameter.kind) {
        case Parameter::Kind::kAny:
            slot.value = MissingVariant();
            slot.reference = &slot.value;
            return S_OK;
        case Parameter::Kind::kValue:
            return ConvertValue(parameter, parameter.fallback, slot);
        default:
            return S_OK;  // no object
    }
}

HRESULT Invocation::ConvertValue(const Parameter& parameter, const VARIANT& source,
                                 Slot& slot) const {
    slot.reference = &slot.value.llVal;
    if ((parameter.type & VT_ARRAY) != 0) {
        if ((source.vt & ~VT_BYREF) != parameter.type) return DISP_E_TYPEMISMATCH;
        slot.value.parray = (source.vt & VT_BYREF) != 0 ? *source.pparray : source.parray;
        slot.value.vt = parameter.type;
        return S_OK;
    }
    slot.owned = true;
    return ::VariantChangeTypeEx(&slot.value, const_cast<VARIANT*>(&source), lcid_,
                                 VARIANT_ALPHABOOL, parameter.type);
}

HRESULT Invocation::ConvertObject(const Parameter& parameter, const VARIANT& source,
                                  Slot& slot) const {
    slot.reference = &slot.value.llVal;
    slot.value.vt = parameter.type;
    IUnknown* object = nullptr;
    if (!ObjectIn(source, &object)) return DISP_E_TYPEMISMATCH;
    if (!object) return S_OK;
    slot.object = Ref<IUnknown>::Of(object, parameter.guid);
    if (!slot.object && parameter.guid == __uuidof(::_IUpdater)) {
        slot.object = LateUpdater::Before(object);
    }
    slot.value.punkVal = slot.object.get();
    return slot.object ? S_OK : DISP_E_TYPEMISMATCH;
}

HRESULT Invocation::Call(VARIANT* result) {
    std::vector<VARTYPE> types;
    std::vector<VARIANTARG> values;
    for (std::size_t i = 0; i < slots_.size(); ++i) {
        const Parameter& parameter = member_.parameters[i];
        const bool pointer = parameter.by_reference;
        VARIANTARG value = slots_[i].value;
        if (pointer) value.byref = slots_[i].reference;
        types.push_back(pointer ? static_cast<VARTYPE>(VT_BYREF | VT_UI1) : parameter.type);
        values.push_back(value);
    }
    Outcome outcome(member_.HasResult() ? member_.parameters.back() : Parameter{});
    if (FAILED(outcome.status())) return outcome.status();
    if (member_.HasResult()) {
        VARIANTARG value{};
        value.byref = outcome.storage();
        types.push_back(VT_BYREF | VT_UI1);
        values.push_back(value);
    }
    std::vector<VARIANTARG*> pointers;
    for (VARIANTARG& value : values) pointers.push_back(&value);
    VARIANT returned{};
    const HRESULT called =
        ::DispCallFunc(face_, member_.slot, CC_STDCALL, VT_ERROR, static_cast<UINT>(types.size()),
                       types.data(), pointers.data(), &returned);
    if (FAILED(called)) return called;
    if (FAILED(returned.scode)) return returned.scode;
    if (result && member_.HasResult()) outcome.MoveTo(result);
    return S_OK;
}

}  // namespace tavolin::com
