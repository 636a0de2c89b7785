// Texts as hosts keep them, to and from the library's UTF-8. Nothing is lost on the way, lone
// surrogates included.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "com/platform.h"
#include "tavolin/model/field_texts.h"

namespace tavolin::com {

// A text argument; no text is the empty one.
std::string Utf8(BSTR text);

// A new text, the caller's; raises std::bad_alloc.
BSTR NewText(std::string_view utf8);

// Ten text arguments, for the time of a call.
class Fields {
  public:
    template <class... Texts>
    explicit Fields(Texts... texts) : texts_{Utf8(texts)...} {
        static_assert(sizeof...(Texts) == kFieldCount);
    }
    operator FieldTexts() const { return FieldTexts(texts_); }  // NOLINT: its use

  private:
    std::array<std::string, kFieldCount> texts_;
};

}  // namespace tavolin::com

// Ten text parameters and arguments under one name: prop0 to prop9.
#define TAVOLIN_TEN_PARAMETERS(name)                                                    \
    BSTR name##0, BSTR name##1, BSTR name##2, BSTR name##3, BSTR name##4, BSTR name##5, \
        BSTR name##6, BSTR name##7, BSTR name##8, BSTR name##9
#define TAVOLIN_TEN(name) \
    name##0, name##1, name##2, name##3, name##4, name##5, name##6, name##7, name##8, name##9
