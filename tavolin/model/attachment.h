// A reference from a record to a file: its path and its kind, not the file itself.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "tavolin/base/event.h"
#include "tavolin/base/export.h"
#include "tavolin/model/types.h"

namespace tavolin {

class PropertyBagReader;
class PropertyBagWriter;

class TAVOLIN_API CVLAttachment {
  public:
    // Fired by every assignment of the path, with the new one.
    Event<std::string> OnPathChange;

    // The key in the attachment's set as it was given; assigning it does not file it anew.
    const std::string& Key() const { return key_; }
    void Key(std::string_view key);

    // A number of the caller's choice.
    std::int32_t nKey() const { return n_key_; }
    void nKey(std::int32_t number) { n_key_ = number; }

    attachmentEnum SpecificType() const { return type_; }
    void SpecificType(attachmentEnum type) { type_ = type; }

    const std::string& attachmentPathName() const { return path_; }
    void attachmentPathName(std::string_view path);

    // Library-internal: the attachment's stored form.
    void WriteProperties(PropertyBagWriter& bag) const;
    void ReadProperties(PropertyBagReader& bag);

  private:
    std::string key_;
    std::int32_t n_key_ = 0;
    attachmentEnum type_ = Miscellenius;
    std::string path_;
};

}  // namespace tavolin
