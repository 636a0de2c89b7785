// Field numbers as members take them: unsigned 8-bit values, of which 0 to 9 are fields.
#pragma once

#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "tavolin/errors/trap.h"
#include "tavolin/model/types.h"

namespace tavolin {

// A field by its number or by its name. A number is a number by its type; a text is always a name,
// whatever it holds. It is a view: what it was made from must outlive the call.
class FieldArgument {
  public:
    template <std::integral Number>
    requires(!std::same_as<Number, bool> && !std::same_as<Number, char>)
        FieldArgument(Number number)
        : number_(Clamp(number)) {}  // NOLINT: conversions are its purpose
    FieldArgument(std::string_view name) : is_name_(true), name_(name) {}    // NOLINT
    FieldArgument(const std::string& name) : is_name_(true), name_(name) {}  // NOLINT
    FieldArgument(const char* name) : is_name_(true), name_(name) {}         // NOLINT
    // What can be neither: the member raises `error` where it would look for the field.
    static FieldArgument Unusable(RunTimeError error) {
        FieldArgument field{0};
        field.error_ = error;
        return field;
    }

    bool is_name() const {
        if (error_ != 0) RaiseRunTime(static_cast<RunTimeError>(error_));
        return is_name_;
    }
    int number() const { return number_; }
    std::string_view name() const { return name_; }

  private:
    template <class Number>
    static int Clamp(Number number) {
        return std::cmp_less(number, 0) || std::cmp_greater(number, 255) ? -1
                                                                         : static_cast<int>(number);
    }

    bool is_name_ = false;
    std::int32_t error_ = 0;
    int number_ = 0;
    std::string_view name_;
};

// The number itself when it is one of an unsigned 8-bit value; else raises 6.
inline int CheckedByte(int number) {
    if (number < 0 || number > 255) RaiseRunTime(kOverflow);
    return number;
}

[[noreturn]] void RefuseField(const char* source);

// The number of a field; above 9 raises GetFieldOutOfRangeError under `source`, outside 0 to 255
// raises 6.
inline int CheckedField(int number, const char* source) {
    if (CheckedByte(number) >= kFieldCount) RefuseField(source);
    return number;
}

}  // namespace tavolin
