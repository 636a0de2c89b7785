// The records that every program of the benchmark works on, and what it looks for in them.
//
//     const Data data(100000);
//     data.record(7).text[1];    // the same text in every program and every run
//     data.lookups(1000);        // keys of random records, the case of their letters altered
//
// Ten fields of about 83 bytes: 0 a unique code of 7 letters and digits in no order, 1 a name, of
// which one in twelve has letters beyond ASCII, 2 a region of 3 letters, 3 a street, 4 a city, 5 a
// state of 6 letters out of four, 6 a day, 7 an amount, 8 a number that two records share, 9 a
// remark, mostly empty. The key is field 0 + field 2. No value of a field is the beginning of
// another one, so that sorting by a field and then by field 0 is the same as sorting by the
// joined texts.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tavolin::bench {

using Fields = std::array<std::string_view, 10>;

// Numbers in no order that are the same in every run.
class Random {
  public:
    explicit Random(std::uint64_t seed) : state_(seed) {}
    std::uint64_t Next();
    std::size_t Below(std::size_t limit) { return static_cast<std::size_t>(Next() % limit); }

  private:
    std::uint64_t state_;
};

// What the searches look for. The last is in some records with letters of the other case.
inline constexpr std::string_view kRareNeedle = "Quixano";
inline constexpr std::string_view kFrequentNeedle = "street";
inline constexpr std::string_view kOtherNeedle = "Sjögren";
inline constexpr std::string_view kOtherNeedleInCapitals = "SJÖGREN";

class Data {
  public:
    // `size` records and some more, for insertions.
    explicit Data(std::size_t size);
    Data(const Data&) = delete;
    Data& operator=(const Data&) = delete;

    std::size_t size() const { return size_; }
    const Fields& record(std::size_t at) const { return records_[at]; }
    const Fields& spare(std::size_t at) const { return records_[size_ + at]; }
    std::size_t spares() const { return records_.size() - size_; }
    std::size_t bytes() const { return bytes_; }  // of the fields of `size` records

    static std::string Key(const Fields& fields);
    // Keys of random records; the same record may come twice.
    std::vector<std::string> Lookups(std::size_t count) const;
    // Keys of different records, in no order.
    std::vector<std::string> Victims(std::size_t count) const;
    std::vector<std::size_t> Positions(std::size_t count) const;
    // A record's fields with another amount and another remark.
    Fields Changed(std::size_t at) const;

  private:
    std::size_t size_;
    std::size_t bytes_ = 0;
    std::vector<char> texts_;
    std::vector<Fields> records_;
};

// ASCII letters in the other case.
std::string AlterCase(std::string_view text, Random& random);
std::string FoldAscii(std::string_view text);

// What a program has read of a field: cheap, and wrong if it is another text.
inline std::uint64_t Touch(std::string_view text) {
    return text.empty() ? 1
                        : text.size() * 131 + static_cast<unsigned char>(text.front()) * 7u +
                              static_cast<unsigned char>(text.back());
}
// Of a whole record.
std::uint64_t Digest(const Fields& fields);

}  // namespace tavolin::bench
