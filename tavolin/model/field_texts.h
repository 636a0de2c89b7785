// Ten texts, one for each field of a table: values of a record or labels.
//
//     table.Add(tables, 1, {"7", "Ann", "Paris"});    // fields 3 to 9 are empty
#pragma once

#include <algorithm>
#include <array>
#include <concepts>
#include <initializer_list>
#include <iterator>
#include <string_view>
#include <type_traits>

#include "tavolin/errors/error.h"
#include "tavolin/model/types.h"

namespace tavolin {

// A view: the texts must outlive the call that it is passed to. More than ten raise 5.
class FieldTexts {
  public:
    FieldTexts() = default;
    FieldTexts(std::initializer_list<std::string_view> texts) {  // NOLINT: a brace list is its use
        Assign(texts);
    }
    template <class Range>
    requires requires(const Range& range) {
        { *std::begin(range) } -> std::convertible_to<std::string_view>;
        // Views of texts that are gone already would be the result otherwise.
        requires std::is_lvalue_reference_v<decltype(*std::begin(range))> ||
            std::same_as<decltype(*std::begin(range)), std::string_view>;
        std::size(range);
    } &&(!std::convertible_to<const Range&, std::string_view>)
        FieldTexts(const Range& texts) {  // NOLINT
        Assign(texts);
    }

    std::string_view operator[](int field) const { return texts_[static_cast<std::size_t>(field)]; }

  private:
    template <class Range>
    void Assign(const Range& texts) {
        if (std::size(texts) > texts_.size()) throw Error(kInvalidCall);
        std::copy(std::begin(texts), std::end(texts), texts_.begin());
    }

    std::array<std::string_view, kFieldCount> texts_;
};

}  // namespace tavolin
