#include "com/text.h"

#include <new>

#include "tavolin/base/utf16.h"

namespace tavolin::com {

std::string Utf8(BSTR text) {
    return FromUtf16({reinterpret_cast<const char16_t*>(text), ::SysStringLen(text)});
}

BSTR NewText(std::string_view utf8) {
    const std::u16string units = ToUtf16(utf8);
    const BSTR text = ::SysAllocStringLen(reinterpret_cast<const OLECHAR*>(units.data()),
                                          static_cast<UINT>(units.size()));
    if (!text) throw std::bad_alloc();
    return text;
}

}  // namespace tavolin::com
