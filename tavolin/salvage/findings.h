// What was found to be wrong in a file, and where.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tavolin {

struct Finding {
    enum class Kind {
        kDamage,  // the bytes are not what was saved
        kLoss,    // the same, and something cannot be read any more
        kRemark,  // the bytes are what was saved, and look odd
    };
    Kind kind;
    std::uint64_t offset;  // in the file
    std::string where;     // "table Customers, record 17 (key A7)"; empty for the file as a whole
    std::string what;
};

using Findings = std::vector<Finding>;

}  // namespace tavolin
