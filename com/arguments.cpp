#include "com/arguments.h"

#include "com/object.h"
#include "com/text.h"
#include "com/variants.h"

namespace tavolin::com {
namespace {

// The library's object or nothing, without an error.
std::shared_ptr<void> Behind(IUnknown* object, const ClassRow& row) {
    ObjectBase* own = nullptr;
    if (!object || FAILED(object->QueryInterface(kOwnObject, reinterpret_cast<void**>(&own)))) {
        return nullptr;
    }
    auto core = own->CoreAs(row);
    own->owner()->Release();
    return core;
}

void CheckConversion(HRESULT result) {
    if (result == DISP_E_OVERFLOW) throw Error(kOverflow);
    if (FAILED(result)) RaiseMismatch();
}

}  // namespace

std::shared_ptr<void> CoreBehind(IUnknown* object, const ClassRow& row) {
    auto core = Behind(object, row);
    if (object && !core) RaiseMismatch();
    return core;
}

Argument::Argument(const VARIANT& variant) : value_(const_cast<VARIANT*>(&Dereferenced(variant))) {
    if ((value_->vt & VT_BYREF) != 0) {
        CheckConversion(::VariantCopyInd(&copy_, value_));
        value_ = &copy_;
    }
    if (IsName()) text_ = Utf8(value_->bstrVal);
}

bool Argument::given() const { return value_->vt != VT_EMPTY && !IsMissing(*value_); }

bool Argument::IsName() const { return value_->vt == VT_BSTR; }

bool Argument::IsWholeNumber() const {
    return value_->vt == VT_UI1 || value_->vt == VT_I2 || value_->vt == VT_I4;
}

std::int64_t Argument::Number() const {
    switch (value_->vt) {
        case VT_UI1:
            return value_->bVal;
        case VT_I2:
            return value_->iVal;
        case VT_I4:
            return value_->lVal;
        case VT_NULL:
        case VT_DISPATCH:
        case VT_UNKNOWN:
        case VT_ERROR:
            RaiseMismatch();
        default:
            VARIANT number{};
            CheckConversion(::VariantChangeType(&number, value_, 0, VT_I8));
            return number.llVal;
    }
}

IndexKey Argument::Key() const { return IsName() ? IndexKey(text_) : IndexKey(Number()); }

std::optional<IndexKey> Argument::OptionalKey() const {
    return given() ? std::optional(Key()) : std::nullopt;
}

template <class Core>
std::shared_ptr<Core> Argument::CoreInside() const {
    IUnknown* object = nullptr;
    ObjectIn(*value_, &object);
    return std::static_pointer_cast<Core>(Behind(object, Face<Core>::row));
}

TableArgument Argument::Table() const {
    if (IsName() || IsWholeNumber()) return Key();
    return CoreInside<CVLTable>();
}

RecordArgument Argument::Record() const {
    if (IsName() || IsWholeNumber()) return Key();
    return CoreInside<CVLRecord>();
}

FieldArgument Argument::Field() const {
    return IsName() ? FieldArgument(text_) : FieldArgument(Number());
}

UserArgument Argument::User() const {
    if (IsName()) return UserArgument(text_);
    IUnknown* object = nullptr;
    if (!ObjectIn(*value_, &object)) RaiseMismatch();
    return CoreOf<CVLDBUser>(object);
}

std::optional<bool> Argument::Flag() const {
    if (!given()) return std::nullopt;
    VARIANT flag{};
    CheckConversion(::VariantChangeType(&flag, value_, 0, VT_BOOL));
    return flag.boolVal != VARIANT_FALSE;
}

}  // namespace tavolin::com
