// What a host implements to be told that the database has changed.
#pragma once

#include <string_view>

#include "tavolin/base/export.h"

namespace tavolin {

// Both members do nothing here; override what is of use.
class TAVOLIN_API IUpdater {
  public:
    virtual ~IUpdater() = default;
    virtual void Update() {}
    virtual void AddAffectedRecords(std::string_view /*database*/, std::string_view /*table*/,
                                    std::string_view /*recordKey*/) {}
};

}  // namespace tavolin
