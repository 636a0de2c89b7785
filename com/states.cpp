#include "com/states.h"

#include "com/failure.h"

namespace tavolin::com {

std::vector<std::uint8_t> BytesOf(SAFEARRAY* array) {
    if (!array) return {};
    VARTYPE type = VT_EMPTY;
    void* data = nullptr;
    if (::SafeArrayGetDim(array) != 1 || FAILED(::SafeArrayGetVartype(array, &type)) ||
        type != VT_UI1 || FAILED(::SafeArrayAccessData(array, &data))) {
        RaiseMismatch();
    }
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    std::vector<std::uint8_t> copy(bytes, bytes + array->rgsabound[0].cElements);
    ::SafeArrayUnaccessData(array);
    return copy;
}

}  // namespace tavolin::com
