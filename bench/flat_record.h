// A record as one value of a key-value store: ten lengths and the fields.
#pragma once

#include <string>
#include <string_view>

#include "bench/data.h"

namespace tavolin::bench {

inline std::string Flatten(const Fields& fields) {
    std::string flat;
    for (const auto field : fields) flat.push_back(static_cast<char>(field.size()));
    for (const auto field : fields) flat.append(field);
    return flat;
}

inline Fields Unflatten(std::string_view flat) {
    Fields fields;
    std::size_t at = fields.size();
    for (std::size_t field = 0; field < fields.size(); ++field) {
        fields[field] = flat.substr(at, static_cast<unsigned char>(flat[field]));
        at += fields[field].size();
    }
    return fields;
}

}  // namespace tavolin::bench
