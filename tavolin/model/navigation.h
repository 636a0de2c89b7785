// Walking a set by 1-based positions, written once for every set that offers it.
#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <utility>

#include "tavolin/errors/trap.h"

namespace tavolin {

// A set's own words: its class name as it stands in sources, its description and its numbers.
struct NavigationTexts {
    std::string_view set;
    const char* description;
    std::int32_t first;
    std::int32_t last;
    std::int32_t previous;
    std::int32_t next;
    // True where any position without an element is this error, not the one of Item.
    bool covers_every_miss = false;
};

template <class Set>
class Navigation {
  public:
    Navigation(Set& set, const NavigationTexts& texts) : set_(set), texts_(texts) {}

    auto First() const { return Move("moveFirst", texts_.first, 1, set_.Count() > 0); }
    auto Last() const { return Move("moveEnd", texts_.last, set_.Count(), set_.Count() > 0); }
    auto Previous(std::int64_t position) const {
        return Move("movePrevious", texts_.previous, position - 1,
                    position >= 2 && (!texts_.covers_every_miss || position - 1 <= set_.Count()));
    }
    auto Next(std::int64_t position) const {
        return Move("moveNext", texts_.next, position + 1,
                    position < set_.Count() && (!texts_.covers_every_miss || position >= 0));
    }
    bool PreviousIsAvailable(std::int64_t position) const { return position - 1 >= 1; }
    bool NextIsAvailable(std::int64_t position) const { return position + 1 <= set_.Count(); }
    bool FirstIsAvailable() const { return set_.Count() >= 1; }

  private:
    auto Move(std::string_view step, std::int32_t number, std::int64_t position,
              bool available) const {
        try {
            if (!available) {
                throw Error(number, {}, Message(std::string_view(texts_.description)));
            }
            return set_.Item(position);
        } catch (...) {
            Fail(step, CurrentError());
        }
    }

    // Puts the source together without memory, which may be what there is none of.
    [[noreturn]] void Fail(std::string_view step, Error error) const {
        using Parts = std::initializer_list<std::string_view>;
        std::array<char, 64> source;
        std::size_t size = 0;
        for (const std::string_view part : Parts{texts_.set, ":", step, " Method"}) {
            size += part.copy(source.data() + size, source.size() - size);
        }
        error.Settle();
        RaiseError(error, {source.data(), size});
    }

    Set& set_;
    const NavigationTexts& texts_;
};

}  // namespace tavolin
