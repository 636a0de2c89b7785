// What a host implements to be told that the database has changed.
#pragma once

#include <string_view>

namespace tavolin {

// Both members do nothing here; override what is of use.
class IUpdater {
  public:
    virtual ~IUpdater() = default;
    virtual void Update() {}
    virtual void AddAffectedRecords(std::string_view /*database*/, std::string_view /*table*/,
                                    std::string_view /*recordKey*/) {}
};

}  // namespace tavolin
