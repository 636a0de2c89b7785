#include "com/arguments.h"

#include <new>

#include "com/failure.h"
#include "com/object.h"
#include "com/text.h"
#include "com/variants.h"

namespace tavolin::com {
namespace {

// The library's object or nothing. Another apartment's object must not be touched from here.
std::shared_ptr<void> Behind(IUnknown* object, const ClassRow& row) {
    ObjectBase* own = nullptr;
    if (!object || FAILED(object->QueryInterface(kOwnObject, reinterpret_cast<void**>(&own)))) {
        return nullptr;
    }
    const auto held = Ref<IUnknown>::Owning(own->owner());
    if (!own->OnOwnThread()) {
        throw Error(RPC_E_WRONG_THREAD, {}, Message("The object belongs to another thread"));
    }
    return own->CoreAs(row);
}

RunTimeError ErrorOf(HRESULT conversion) {
    return conversion == DISP_E_OVERFLOW ? kOverflow : kTypeMismatch;
}

}  // namespace

std::shared_ptr<void> CoreBehind(IUnknown* object, const ClassRow& row) {
    auto core = Behind(object, row);
    if (object && !core) RaiseMismatch();
    return core;
}

Argument::Argument(const VARIANT& variant) : value_(const_cast<VARIANT*>(&Dereferenced(variant))) {
    if (HasNullReference(variant)) {
        throw Error(E_POINTER, {}, Message("A reference leads nowhere"));
    }
    if ((value_->vt & VT_BYREF) != 0) {
        const HRESULT copied = ::VariantCopyInd(&copy_, value_);
        if (copied == E_OUTOFMEMORY) throw std::bad_alloc();
        // What cannot be copied cannot be converted either, and is told then.
        if (SUCCEEDED(copied)) value_ = &copy_;
    }
    if (IsName()) text_ = Utf8(value_->bstrVal);
}

bool Argument::given() const { return value_->vt != VT_EMPTY && !IsMissing(*value_); }

bool Argument::IsName() const { return value_->vt == VT_BSTR; }

bool Argument::IsWholeNumber() const {
    return value_->vt == VT_UI1 || value_->vt == VT_I2 || value_->vt == VT_I4;
}

std::variant<std::int64_t, RunTimeError> Argument::Number() const {
    switch (value_->vt) {
        case VT_UI1:
            return std::int64_t{value_->bVal};
        case VT_I2:
            return std::int64_t{value_->iVal};
        case VT_I4:
            return std::int64_t{value_->lVal};
        case VT_NULL:
        case VT_DISPATCH:
        case VT_UNKNOWN:
        case VT_ERROR:
            return kTypeMismatch;
        default:
            VARIANT number{};
            const HRESULT converted = ::VariantChangeType(&number, value_, 0, VT_I8);
            if (FAILED(converted)) return ErrorOf(converted);
            return std::int64_t{number.llVal};
    }
}

template <class Target>
Target Argument::FromNumber() const {
    const auto number = Number();
    if (const auto* error = std::get_if<RunTimeError>(&number)) return Target::Unusable(*error);
    return Target(std::get<std::int64_t>(number));
}

IndexKey Argument::Key() const { return IsName() ? IndexKey(text_) : FromNumber<IndexKey>(); }

IndexKey Argument::NewKey() const {
    return value_->vt == VT_EMPTY ? IndexKey(std::string_view()) : Key();
}

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
    return IsName() ? FieldArgument(text_) : FromNumber<FieldArgument>();
}

UserArgument Argument::User() const {
    if (IsName()) return UserArgument(text_);
    IUnknown* object = nullptr;
    if (!ObjectIn(*value_, &object)) return UserArgument::Unusable(kTypeMismatch);
    auto user = CoreInside<CVLDBUser>();
    return object && !user ? UserArgument::Unusable(kTypeMismatch) : UserArgument(std::move(user));
}

std::optional<bool> Argument::Flag(IndexKey& key) const {
    if (!given()) return std::nullopt;
    VARIANT flag{};
    const HRESULT converted = ::VariantChangeType(&flag, value_, 0, VT_BOOL);
    if (FAILED(converted)) key = IndexKey::Unusable(ErrorOf(converted));
    return flag.boolVal != VARIANT_FALSE;
}

}  // namespace tavolin::com
