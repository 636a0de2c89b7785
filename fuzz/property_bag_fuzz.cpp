// The property bag: bytes that are read by what other bytes say, and a bag that is written by what
// the bytes say and must give everything back.
#include <functional>

#include "fuzz/fuzz.h"
#include "tavolin/errors/error.h"

namespace tavolin::fuzz {
namespace {

constexpr const char* kKeys[] = {"k", "nk", "f0", "objgl", "List", "rl", "Record", "dd"};

std::string_view Key(Input& input) { return kKeys[input.Below(std::size(kKeys))]; }

// Asks a reader for what the input says, as deep as objects go. Gives the number of bytes seen.
std::size_t Ask(Input& questions, PropertyBagReader& bag, std::size_t& left) {
    std::size_t seen = 0;
    while (questions.More() && left > 0) {
        --left;
        const int question = questions.Below(11);
        if (question == 10) return seen;
        const std::string_view key = Key(questions);
        switch (question) {
            case 0:
                seen += bag.Has(key);
                break;
            case 1:
                for (const char c : bag.ReadText(key)) seen += static_cast<unsigned char>(c);
                break;
            case 2:
                seen += bag.ReadBool(key);
                break;
            case 3:
                seen += static_cast<std::size_t>(bag.ReadInt(key));
                break;
            case 4:
                seen += bag.ReadByte(key);
                break;
            case 5:
                seen += static_cast<std::size_t>(bag.ReadDate(key).seconds);
                break;
            case 6:
                for (const std::uint8_t byte : bag.ReadBlocks(key)) seen += byte;
                break;
            case 7: {
                const auto blocks = bag.TakeBlocks(key);
                for (std::uint8_t& byte : blocks.bytes) byte = 0;
                seen += blocks.bytes.size();
                break;
            }
            case 8:
                bag.ReadObject(key, [&] { seen += Ask(questions, bag, left); });
                break;
            case 9:
                bag.ReadSeries(key, [&](std::size_t) { seen += Ask(questions, bag, left); });
                break;
        }
    }
    return seen;
}

// One value to be written and what must be found later.
using Checks = std::vector<std::function<void(PropertyBagReader&)>>;

void RunAll(const Checks& checks, PropertyBagReader& bag, bool backwards) {
    for (std::size_t i = 0; i < checks.size(); ++i) {
        checks[backwards ? checks.size() - 1 - i : i](bag);
    }
}

// Writes an object's items, each under a key of its own.
Checks WriteItems(Input& input, PropertyBagWriter& bag, int depth) {
    Checks checks;
    for (int number = 0; input.More(); ++number) {
        const int kind = input.Below(depth < 12 ? 9 : 7);
        const std::string key = std::string(Key(input)) + std::to_string(number);
        if (kind == 0) break;
        const auto expect = [&](auto read, auto value) {
            checks.push_back([=](PropertyBagReader& reader) {
                Require((reader.*read)(key, {}) == value, "a value is given back");
            });
        };
        if (kind == 1) {
            const std::string text(input.Text());
            bag.Write(key, text);
            expect(&PropertyBagReader::ReadText, text);
        } else if (kind == 2) {
            const bool value = input.Below(2) == 1;
            bag.Write(key, value);
            expect(&PropertyBagReader::ReadBool, value);
        } else if (kind == 3) {
            const auto value = static_cast<std::int32_t>(input.Number());
            bag.Write(key, value);
            expect(&PropertyBagReader::ReadInt, value);
        } else if (kind == 4) {
            const std::uint8_t value = input.Byte();
            bag.WriteByte(key, value);
            expect(&PropertyBagReader::ReadByte, value);
        } else if (kind == 5) {
            const Date value{static_cast<std::int64_t>(input.Number())};
            bag.Write(key, value);
            expect(&PropertyBagReader::ReadDate, value);
        } else if (kind == 6) {
            const auto bytes = input.Take(input.Byte());
            bag.WriteBlocks(key, bytes);
            checks.push_back([key, kept = Bytes(bytes.begin(), bytes.end())](auto& reader) {
                const auto blocks = reader.ReadBlocks(key);
                Require(Bytes(blocks.begin(), blocks.end()) == kept, "blocks are given back");
            });
        } else if (kind == 7) {
            Checks inside;
            bag.WriteObject(key, [&] { inside = WriteItems(input, bag, depth + 1); });
            checks.push_back([key, inside](PropertyBagReader& reader) {
                Require(reader.ReadObject(key, [&] { RunAll(inside, reader, true); }), "an object");
            });
        } else {
            const auto count = static_cast<std::size_t>(input.Below(4));
            std::vector<Checks> inside(count);
            bag.WriteSeries(key, count, [&](std::size_t i) {
                inside[i - 1] = WriteItems(input, bag, depth + 1);
            });
            checks.push_back([key, inside](PropertyBagReader& reader) {
                Require(reader.ReadSeries(
                            key, [&](std::size_t i) { RunAll(inside[i - 1], reader, false); }) ==
                            inside.size(),
                        "a series has its objects");
            });
        }
    }
    return checks;
}

void WriteAndRead(Input& input) {
    PropertyBagWriter writer;
    const Checks checks = WriteItems(input, writer, 1);
    const Bytes state = std::move(writer).Finish();
    PropertyBagReader reader(state);
    RunAll(checks, reader, false);
    RunAll(checks, reader, true);
}

void ReadAnything(Input& input, bool sealed) {
    const std::size_t count = input.Byte();
    Input questions(nullptr, 0);
    const auto asked = input.Take(count);
    const auto rest = input.Rest();
    ByteBuffer bag(rest.size());
    std::copy(rest.begin(), rest.end(), bag.data());
    if (sealed) Seal(bag.bytes());
    try {
        PropertyBagReader reader(std::make_shared<ByteBuffer>(std::move(bag)));
        // Three times, so that the place where it is looked for differs.
        for (int round = 0; round < 3; ++round) {
            std::size_t left = 2000;
            questions = Input(asked.data(), asked.size());
            Ask(questions, reader, left);
        }
    } catch (const DamagedState& damage) {
        Require(std::strlen(damage.what()) > 0, "it is said what is wrong");
    }
}

}  // namespace
}  // namespace tavolin::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tavolin::fuzz;
    Input input(data, size);
    const int mode = input.Below(3);
    if (mode == 0) {
        WriteAndRead(input);
    } else {
        ReadAnything(input, mode == 1);
    }
    return 0;
}
