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
        : IndexKey(nullptr, kPosition, static_cast<std::uint32_t>(Clamp(position))) {}
    IndexKey(std::string_view key) : IndexKey(key.data(), kText, key.size()) {}  // NOLINT
    IndexKey(const std::string& key) : IndexKey(std::string_view(key)) {}        // NOLINT
    IndexKey(const char* key) : IndexKey(std::string_view(key)) {}               // NOLINT
    // What names no element whatever is in the set, as a date where a key belongs. The member that
    // it is passed to raises `error` where it would look for the element.
    static IndexKey Unusable(RunTimeError error) {
        return IndexKey(nullptr, kUnusable, static_cast<std::uint32_t>(error));
    }

    bool usable() const { return kind() != kUnusable; }
    bool is_position() const {
        if (!usable()) RaiseRunTime(static_cast<RunTimeError>(number_));
        return kind() == kPosition;
    }
    std::int32_t position() const { return static_cast<std::int32_t>(number_); }
    std::string_view key() const {
        return kind() == kText ? std::string_view(text_, number_) : std::string_view();
    }
    // As it stands in messages: the key, or the position in decimal.
    std::string Text() const {
        return kind() == kPosition ? std::to_string(position()) : std::string(key());
    }

  private:
    enum Kind : std::uint64_t { kText, kPosition, kUnusable };
    static constexpr unsigned kKindShift = 62;

    IndexKey(const char* text, Kind kind, std::uint64_t number)
        : text_(text), number_(number | kind << kKindShift) {}

    template <class Number>
    static std::int32_t Clamp(Number position) {
        using Limits = std::numeric_limits<std::int32_t>;
        if (std::cmp_less(position, Limits::min())) return Limits::min();
        if (std::cmp_greater(position, Limits::max())) return Limits::max();
        return static_cast<std::int32_t>(position);
    }

    Kind kind() const { return static_cast<Kind>(number_ >> kKindShift); }

    // Two words, so that it is passed in registers: a copy in memory would have to wait for its
    // parts to be written, and whatever waits for memory before that with it.
    const char* text_;
    std::uint64_t number_;  // the text's size, the position or the error; the kind in the last bits
};

// An element's place among the others: before one, after one, or, with neither, at the end. Both,
// or one that names nothing, raises 5.
struct Placement {
    std::optional<IndexKey> before = {};
    std::optional<IndexKey> after = {};
};

}  // namespace tavolin
