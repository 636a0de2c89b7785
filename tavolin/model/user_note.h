// A dated note about a user.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "tavolin/base/export.h"

namespace tavolin {

class PropertyBagReader;
class PropertyBagWriter;

class TAVOLIN_API CVLUserNote {
  public:
    // The note's date as text, which is its key in the set; assigning it does not file it anew
    // before the set is next loaded.
    std::string dateKey;

    // A number of the caller's choice; nothing looks at it.
    std::int32_t nKey = 0;

    // The text. Asks for no right: rights guide the members of the set.
    std::string Note() const;
    void Note(std::string_view text);

    // Library-internal: the note's stored form.
    void WriteProperties(PropertyBagWriter& bag) const;
    void ReadProperties(PropertyBagReader& bag);

  private:
    std::string text_;
};

}  // namespace tavolin
