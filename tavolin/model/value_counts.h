// How often each of many texts is there, without regard to case.
//
//     ValueCounts counts;
//     counts.Add("Paris");
//     counts.Of("PARIS");    // 1
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "tavolin/base/text.h"

namespace tavolin {

// Every member takes constant time, all in all. When memory runs out in one, nothing has changed.
class ValueCounts {
  public:
    void Add(std::string_view value) { AddHashed(value, HashFold(value)); }
    // The same for who knows the hash, and has perhaps had the memory fetched before.
    void AddHashed(std::string_view value, std::uint32_t hash);
    void Prefetch(std::uint32_t hash) const;

    // Takes away what Add has put in.
    void Remove(std::string_view value);

    std::uint32_t Of(std::string_view value) const;

  private:
    // An open hash table with linear probing; a count of 0 marks a free slot. The texts stand in
    // blocks, from which they are not taken out one by one.
    struct Slot {
        const char* text;
        std::uint32_t size;
        std::uint32_t hash;
        std::uint32_t count;

        std::string_view value() const { return {text, size}; }
    };

    std::size_t Home(std::uint32_t hash) const;
    std::size_t Find(std::string_view value, std::uint32_t hash) const;
    void MakeRoom(std::size_t text_size);

    std::vector<Slot> slots_;  // a power of two of them, or none
    std::size_t used_ = 0;
    std::vector<std::unique_ptr<char[]>> blocks_;
    char* free_ = nullptr;  // in the last block
    std::size_t room_ = 0;
    std::size_t living_ = 0;  // bytes of texts that are in use
    std::size_t kept_ = 0;    // bytes of all texts in the blocks
};

}  // namespace tavolin
