// How the members of the sets name an element: by its 1-based position or by its key.
//
//     set.Item(1);        // the first
//     set.Item("Ann");    // the one with the key "Ann", in any letter case
#pragma once

#include <concepts>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "tavolin/errors/trap.h"

namespace tavolin {

// A view: what it was made from must outlive the call that it is passed to. A number is a position
// by its type and a text a key, whatever it holds. A number outside 32 bits is the nearest one
// inside, where there is no element.
class IndexKey {
  public:
    template <std::integral Number>
    requires(!std::same_as<Number, bool> && !std::same_as<Number, char>)
        IndexKey(Number position)  // NOLINT: conversions are its purpose
        : is_position_(true), position_(Clamp(position)) {}
    IndexKey(std::string_view key) : key_(key) {}    // NOLINT
    IndexKey(const std::string& key) : key_(key) {}  // NOLINT
    IndexKey(const char* key) : key_(key) {}         // NOLINT
    // What names no element whatever is in the set, as a date where a key belongs. The member that
    // it is passed to raises `error` where it would look for the element.
    static IndexKey Unusable(RunTimeError error) {
        IndexKey key{std::string_view()};
        key.error_ = error;
        return key;
    }

    bool usable() const { return error_ == 0; }
    bool is_position() const {
        if (error_ != 0) RaiseRunTime(static_cast<RunTimeError>(error_));
        return is_position_;
    }
    std::int32_t position() const { return position_; }
    std::string_view key() const { return key_; }
    // As it stands in messages: the key, or the position in decimal.
    std::string Text() const {
        return is_position_ ? std::to_string(position_) : std::string(key_);
    }

  private:
    template <class Number>
    static std::int32_t Clamp(Number position) {
        using Limits = std::numeric_limits<std::int32_t>;
        if (std::cmp_less(position, Limits::min())) return Limits::min();
        if (std::cmp_greater(position, Limits::max())) return Limits::max();
        return static_cast<std::int32_t>(position);
    }

    bool is_position_ = false;
    std::int32_t error_ = 0;
    std::int32_t position_ = 0;
    std::string_view key_;
};

// An element's place among the others: before one, after one, or, with neither, at the end. Both,
// or one that names nothing, raises 5.
struct Placement {
    std::optional<IndexKey> before = {};
    std::optional<IndexKey> after = {};
};

}  // namespace tavolin
