#include "tavolin/persist/checksum.h"

#include <bit>
#include <cstring>

#include "tavolin/persist/little_endian.h"

namespace tavolin {
namespace {

// Odd, so that multiplying by them loses nothing.
constexpr std::uint64_t kLaneFactor = 0x9E3779B97F4A7C15;
constexpr std::uint64_t kJoinFactor = 0xC2B2AE3D27D4EB4F;
constexpr std::size_t kStripe = 32;

struct Lanes {
    std::uint64_t lane[4] = {1, 2, 3, 4};

    // Four chains side by side, because each has to wait for its own multiplication. Every step can
    // be undone knowing the word, and knowing the lane: no change of one word is ever lost.
    void Add(const std::uint8_t* stripe) {
        for (int i = 0; i < 4; ++i) {
            const auto word = LoadLittle<std::uint64_t>(stripe + 8 * i);
            lane[i] = std::rotl((lane[i] ^ word) * kLaneFactor, 29);
        }
    }
};

}  // namespace

std::uint64_t Checksum(std::span<const std::uint8_t> bytes) {
    Lanes lanes;
    const std::uint8_t* at = bytes.data();
    std::size_t left = bytes.size();
    for (; left >= kStripe; left -= kStripe, at += kStripe) lanes.Add(at);
    if (left != 0) {
        std::uint8_t last[kStripe] = {};
        std::memcpy(last, at, left);
        lanes.Add(last);
    }
    std::uint64_t sum = bytes.size();
    for (const std::uint64_t lane : lanes.lane) sum = std::rotl((sum ^ lane) * kJoinFactor, 31);
    sum = (sum ^ (sum >> 32)) * kJoinFactor;
    return sum ^ (sum >> 29);
}

}  // namespace tavolin
