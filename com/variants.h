// What is in a variant, with the references to variants taken away.
#pragma once

#include "com/platform.h"

namespace tavolin::com {

// The variant that a chain of references leads to; a typed reference stays one.
inline const VARIANT& Dereferenced(const VARIANT& variant) {
    const VARIANT* at = &variant;
    while (at->vt == (VT_BYREF | VT_VARIANT) && at->pvarVal) at = at->pvarVal;
    return *at;
}

// Whether a reference in it is a null pointer. Of all variants that hosts pass, this is asked
// before anything else is done with them.
inline bool HasNullReference(const VARIANT& variant) {
    const VARIANT& last = Dereferenced(variant);
    return (last.vt & VT_BYREF) != 0 && !last.byref;
}

inline bool IsMissing(const VARIANT& variant) {
    return variant.vt == VT_ERROR && variant.scode == DISP_E_PARAMNOTFOUND;
}

inline VARIANT MissingVariant() {
    VARIANT missing{};
    missing.vt = VT_ERROR;
    missing.scode = DISP_E_PARAMNOTFOUND;
    return missing;
}

// Whether it holds an object, or the reference of one; the object may be nothing.
inline bool ObjectIn(const VARIANT& variant, IUnknown** object) {
    switch (variant.vt) {
        case VT_DISPATCH:
        case VT_UNKNOWN:
            *object = variant.punkVal;
            return true;
        case VT_BYREF | VT_DISPATCH:
        case VT_BYREF | VT_UNKNOWN:
            *object = *variant.ppunkVal;
            return true;
        default:
            return false;
    }
}

// The structure of that kind which it holds, or null.
inline void* RecordOf(const VARIANT& variant, REFGUID guid) {
    if ((variant.vt & ~VT_BYREF) != VT_RECORD || !variant.pRecInfo) return nullptr;
    GUID found{};
    if (FAILED(variant.pRecInfo->GetGuid(&found)) || found != guid) return nullptr;
    return variant.pvRecord;
}

}  // namespace tavolin::com
