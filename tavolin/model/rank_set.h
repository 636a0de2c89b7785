// A set of numbers below a limit, in the order of which it looks for neighbours: a tree of bitmaps,
// 64 ways wide, so that every member looks at a handful of words.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tavolin {

class RankSet {
  public:
    static constexpr std::uint32_t kNone = 0xFFFFFFFFu;

    // For numbers below `limit`, which is below kNone.
    explicit RankSet(std::uint32_t limit) {
        for (std::size_t words = limit;;) {
            words = (words + 63) / 64;
            levels_.emplace_back(words);
            if (words <= 1) break;
        }
    }

    void Insert(std::uint32_t rank) {
        for (auto& level : levels_) {
            level[rank >> 6] |= Bit(rank);
            rank >>= 6;
        }
    }

    void Erase(std::uint32_t rank) {
        for (auto& level : levels_) {
            level[rank >> 6] &= ~Bit(rank);
            if (level[rank >> 6] != 0) return;
            rank >>= 6;
        }
    }

    // The greatest number in the set that is at most `rank`, or kNone.
    std::uint32_t AtOrBelow(std::uint32_t rank) const {
        // On the higher levels what holds `rank` itself has been looked at already.
        std::uint64_t mask = Bit(rank) | (Bit(rank) - 1);
        for (std::size_t level = 0; level < levels_.size(); ++level) {
            if (const std::uint64_t found = levels_[level][rank >> 6] & mask) {
                return Descend((rank & ~63u) + Highest(found), level, Highest);
            }
            rank >>= 6;
            mask = Bit(rank) - 1;
        }
        return kNone;
    }

    // The smallest number in the set that is greater than `rank`, or kNone.
    std::uint32_t Above(std::uint32_t rank) const {
        for (std::size_t level = 0; level < levels_.size(); ++level) {
            const std::uint64_t mask = ~(Bit(rank) | (Bit(rank) - 1));
            if (const std::uint64_t found = levels_[level][rank >> 6] & mask) {
                return Descend((rank & ~63u) + Lowest(found), level, Lowest);
            }
            rank >>= 6;
        }
        return kNone;
    }

  private:
    static std::uint64_t Bit(std::uint32_t rank) { return std::uint64_t{1} << (rank & 63); }
    static std::uint32_t Highest(std::uint64_t word) {
        return static_cast<std::uint32_t>(std::bit_width(word) - 1);
    }
    static std::uint32_t Lowest(std::uint64_t word) {
        return static_cast<std::uint32_t>(std::countr_zero(word));
    }
    // From a bit of a level down to the number that it stands for, by the end that `pick` takes.
    template <class Pick>
    std::uint32_t Descend(std::uint32_t rank, std::size_t level, Pick pick) const {
        while (level > 0) rank = (rank << 6) + pick(levels_[--level][rank]);
        return rank;
    }

    std::vector<std::vector<std::uint64_t>> levels_;
};

}  // namespace tavolin
