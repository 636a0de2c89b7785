// A dated note about a user, and a user's notes in the order of adding.
//
// Notes are read from stored state and written back whole; they are kept under the text of their
// date.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tavolin/model/object_collection.h"

namespace tavolin {

class PropertyBagReader;
class PropertyBagWriter;

struct CVLUserNote {
    std::string dateKey;
    std::int32_t nKey = 0;
    std::string Note;

    void WriteProperties(PropertyBagWriter& bag) const;
    void ReadProperties(PropertyBagReader& bag);
};

class CVLUserNoteSet {
  public:
    std::int32_t Count() const { return notes_->Count(); }
    Enumerator<CVLUserNote> NewEnum() const { return Enumerator<CVLUserNote>(notes_); }

    // The notes as one byte array. Assigning replaces them all, or raises and changes nothing.
    std::vector<std::uint8_t> ObjectState() const;
    void ObjectState(const std::vector<std::uint8_t>& state);

    // How the set is stored inside its user. The keys differ from those of ObjectState; files
    // depend on both.
    void WriteProperties(PropertyBagWriter& bag) const;
    void ReadProperties(PropertyBagReader& bag);

  private:
    using Notes = ObjectCollection<CVLUserNote>;

    void Write(PropertyBagWriter& bag, const char* count_key, const char* prefix) const;
    static std::shared_ptr<Notes> Read(PropertyBagReader& bag, const char* count_key,
                                       const char* prefix);

    std::shared_ptr<Notes> notes_ = std::make_shared<Notes>();
};

}  // namespace tavolin
