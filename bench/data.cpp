#include "bench/data.h"

#include <algorithm>
#include <iterator>
#include <numeric>

namespace tavolin::bench {
namespace {

constexpr const char* kFirstNames[] = {"Ann",   "Boris", "Carla", "Dinesh", "Emma",   "Frank",
                                       "Grace", "Hiro",  "Ines",  "Jonas",  "Katrin", "Luis",
                                       "Maria", "Nadia", "Oscar", "Petra"};
constexpr const char* kLastNames[] = {"Anders",  "Baker",  "Carter", "Dubois",  "Evans",  "Fischer",
                                      "Garcia",  "Hansen", "Ivanov", "Jacobs",  "Keller", "Larsen",
                                      "Moretti", "Novak",  "Olsen",  "Peterson"};
constexpr const char* kOtherNames[] = {"Jörg Weiß",        "João Conceição", "Zoë Müller",
                                       "Łukasz Żuk",       "Håkan Sjöberg",  "Елена Орлова",
                                       "François Lefèvre", "Søren Kjær"};
constexpr const char* kStreets[] = {"Elm Street",    "High Street", "Mill Lane",  "Park Avenue",
                                    "Station Road",  "Oak Street",  "North Lane", "River Walk",
                                    "Church Street", "Hill Road"};
constexpr const char* kCities[] = {"Amsterdam", "Barcelona", "Chicago", "Dublin",   "Edinburgh",
                                   "Florence",  "Geneva",    "Hamburg", "Istanbul", "Jakarta",
                                   "Krakow",    "Lisbon",    "Madrid",  "Nairobi",  "Osaka",
                                   "Prague",    "Quito",     "Riga",    "Seville",  "Tokyo"};
constexpr const char* kStates[] = {"Active", "Closed", "Frozen", "Vacant"};

template <std::size_t Count>
const char* Pick(const char* const (&from)[Count], std::uint64_t number) {
    return from[number % Count];
}

// A bijection of 32-bit numbers, so that no code comes twice.
std::uint32_t Scatter(std::uint32_t number) {
    number *= 0x9E3779B1u;
    number ^= number >> 15;
    number *= 0x85EBCA77u;
    number ^= number >> 13;
    return number;
}

std::string Code(std::uint32_t number) {
    std::string code(7, '0');
    for (auto digit = code.rbegin(); digit != code.rend(); ++digit, number /= 36)
        *digit = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"[number % 36];
    return code;
}

std::string Name(std::size_t at, std::uint64_t number) {
    if (at % 1999 == 3) return std::string("Alonso ").append(kRareNeedle);
    if (at % 1333 == 5) return std::string("Eva ").append(kOtherNeedle);
    if (at % 2666 == 7) return std::string("EVA ").append(kOtherNeedleInCapitals);
    if (number % 12 == 1) return Pick(kOtherNames, number >> 8);
    std::string name = Pick(kFirstNames, number >> 8);
    return name.append(" ").append(Pick(kLastNames, number >> 16));
}

std::string Digits(std::uint64_t number, std::size_t count) {
    std::string digits(count, '0');
    for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit, number /= 10)
        *digit = static_cast<char>('0' + number % 10);
    return digits;
}

std::string Day(std::uint64_t number) {
    return Digits(1990 + number % 35, 4) + "-" + Digits(1 + (number >> 8) % 12, 2) + "-" +
           Digits(1 + (number >> 16) % 28, 2);
}

std::string Region(std::uint64_t number) {
    std::string region;
    for (int i = 0; i < 3; ++i, number /= 8)
        region += static_cast<char>((i == 0 ? 'K' : 'k') + number % 8);
    return region;
}

std::array<std::string, 10> Generate(std::size_t at, std::size_t shared_numbers) {
    Random random(at + 1);
    std::array<std::string, 10> texts;
    texts[0] = Code(Scatter(static_cast<std::uint32_t>(at)));
    texts[1] = Name(at, random.Next());
    texts[2] = Region(random.Next());
    const std::size_t house = 1 + random.Below(999);
    texts[3] = std::to_string(house) + " " + Pick(kStreets, random.Next());
    texts[4] = Pick(kCities, random.Next());
    texts[5] = Pick(kStates, random.Next());
    texts[6] = Day(random.Next());
    texts[7] = Digits(random.Next(), 5) + "." + Digits(random.Next(), 2);
    texts[8] = "T" + Digits(random.Below(shared_numbers), 8);
    if (random.Below(5) == 0) texts[9] = "call before " + Digits(10 + random.Below(9), 2);
    return texts;
}

}  // namespace

std::uint64_t Random::Next() {
    state_ += 0x9E3779B97F4A7C15u;
    std::uint64_t mixed = state_;
    mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9u;
    mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBu;
    return mixed ^ (mixed >> 31);
}

Data::Data(std::size_t size) : size_(size) {
    const std::size_t count = size + std::min<std::size_t>(size, 50000);
    texts_.reserve(count * 128);  // no text moves while others point into it
    records_.resize(count);
    for (std::size_t at = 0; at < count; ++at) {
        const auto texts = Generate(at, size / 2 + 1);
        for (std::size_t field = 0; field < texts.size(); ++field) {
            const std::size_t begin = texts_.size();
            texts_.insert(texts_.end(), texts[field].begin(), texts[field].end());
            records_[at][field] = {texts_.data() + begin, texts[field].size()};
            if (at < size) bytes_ += texts[field].size();
        }
    }
}

std::string Data::Key(const Fields& fields) { return std::string(fields[0]).append(fields[2]); }

std::vector<std::size_t> Data::Positions(std::size_t count) const {
    Random random(11);
    std::vector<std::size_t> positions(count);
    std::ranges::generate(positions, [&] { return random.Below(size_); });
    return positions;
}

std::vector<std::string> Data::Lookups(std::size_t count) const {
    Random random(12);
    std::vector<std::string> keys(count);
    std::ranges::generate(keys,
                          [&] { return AlterCase(Key(records_[random.Below(size_)]), random); });
    return keys;
}

std::vector<std::string> Data::Victims(std::size_t count) const {
    Random random(13);
    std::vector<std::size_t> all(size_);
    std::iota(all.begin(), all.end(), std::size_t{0});
    std::vector<std::string> keys(std::min(count, size_));
    for (std::size_t i = 0; i < keys.size(); ++i) {
        std::swap(all[i], all[i + random.Below(size_ - i)]);
        keys[i] = AlterCase(Key(records_[all[i]]), random);
    }
    return keys;
}

Fields Data::Changed(std::size_t at) const {
    Fields fields = record(at);
    fields[7] = record((at + 1) % size_)[7];
    fields[9] = record((at + 2) % size_)[9];
    return fields;
}

std::string AlterCase(std::string_view text, Random& random) {
    std::string altered(text);
    std::uint64_t bits = random.Next();
    for (char& letter : altered) {
        const char lower = static_cast<char>(letter | 0x20);
        if (lower >= 'a' && lower <= 'z' && (bits & 1) != 0)
            letter = static_cast<char>(letter ^ 0x20);
        bits >>= 1;
    }
    return altered;
}

std::string FoldAscii(std::string_view text) {
    std::string folded(text);
    for (char& letter : folded) {
        if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter | 0x20);
    }
    return folded;
}

std::uint64_t Digest(const Fields& fields) {
    std::uint64_t digest = 0xCBF29CE484222325u;
    for (const auto field : fields) {
        for (const char byte : field) {
            digest = (digest ^ static_cast<unsigned char>(byte)) * 0x100000001B3u;
        }
        digest = (digest ^ 0x1FF) * 0x100000001B3u;
    }
    return digest;
}

}  // namespace tavolin::bench
