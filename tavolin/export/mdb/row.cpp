#include "tavolin/export/mdb/row.h"

namespace tavolin::mdb {

void Row::Clear() {
    bytes_.clear();
    starts_.clear();
    Append(bytes_, static_cast<std::uint16_t>(columns_));
}

Bytes& Row::NextValue() {
    starts_.push_back(bytes_.size());
    return bytes_;
}

void Row::Finish(std::uint32_t present) {
    if (!starts_.empty()) {
        Append(bytes_, static_cast<std::uint16_t>(bytes_.size()));
        for (auto start = starts_.rbegin(); start != starts_.rend(); ++start) {
            Append(bytes_, static_cast<std::uint16_t>(*start));
        }
        Append(bytes_, static_cast<std::uint16_t>(starts_.size()));
    }
    for (std::size_t i = 0; i < columns_; i += 8) {
        bytes_.push_back(static_cast<std::uint8_t>(present >> i));
    }
}

}  // namespace tavolin::mdb
