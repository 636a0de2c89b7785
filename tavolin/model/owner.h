// A user who owns databases, and which.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "tavolin/base/event.h"
#include "tavolin/base/export.h"

namespace tavolin {

class CVLOwnerDBSet;
class PropertyBagReader;
class PropertyBagWriter;

class TAVOLIN_API CVLDBOwner {
  public:
    CVLDBOwner();

    Event<> OnOwnerDBSetChange;  // after another set of databases was put in

    // The owner's user name.
    const std::string& Key() const { return key_; }
    void Key(std::string_view key) { key_ = key; }

    // Never nothing. Setting nothing raises 91.
    std::shared_ptr<tavolin::CVLOwnerDBSet> CVLOwnerDBSet() const { return databases_; }
    void CVLOwnerDBSet(std::shared_ptr<tavolin::CVLOwnerDBSet> databases);

    // Library-internal: the stored form.
    void WriteProperties(PropertyBagWriter& bag) const;
    void ReadProperties(PropertyBagReader& bag);

  private:
    std::string key_;
    std::shared_ptr<tavolin::CVLOwnerDBSet> databases_;
};

}  // namespace tavolin
