// The limit of the machine: for each job the least that any store has to do, on the same bytes.
#include <cstring>

#include "bench/bench.h"
#include "bench/files.h"

namespace tavolin::bench {
namespace {

constexpr std::size_t kLine = 64;
constexpr std::size_t kCalls = 200000;

class Machine {
  public:
    explicit Machine(Bench& bench) : bench_(bench), data_(bench.data()) {
        for (std::size_t at = 0; at < data_.size(); ++at) {
            for (const auto field : data_.record(at))
                bytes_.insert(bytes_.end(), field.begin(), field.end());
        }
        const std::size_t lines =
            std::max<std::size_t>(data_.size() * 2, 16);  // 128 bytes a record
        lines_.resize(lines * kLine / sizeof(std::uint64_t));
        Random random(21);
        for (auto& word : lines_) word = random.Below(lines);
    }

    void Run() {
        Memory();
        Copies();
        Lines();
        Search();
        Sort();
        Files();
    }

  private:
    void Memory() {
        bench_.Value("memory", "bytes",
                     static_cast<double>(data_.bytes()) / static_cast<double>(data_.size()));
    }

    // Fresh pages, as a collection that grows gets them, and one write to a table of hashes each.
    void Copies() {
        std::vector<char> target;
        std::vector<std::uint64_t> slots;
        const auto renew = [&] {
            target = {};
            slots = {};
            ReleaseFreedMemory();
        };
        const auto copy_all = [&] {
            target.resize(bytes_.size());
            std::memcpy(target.data(), bytes_.data(), bytes_.size());
            Keep(static_cast<std::uint64_t>(target[bytes_.size() / 2]));
        };
        bench_.Whole(
            "bulk-add",
            [&] {
                copy_all();
                slots.resize(data_.size() * 2);
                for (std::size_t at = 0; at < data_.size(); ++at)
                    slots[lines_[at * 2] % slots.size()] = at;
                Keep(slots[0]);
            },
            renew);
        bench_.Whole("begin", copy_all, renew);
        bench_.Whole("abort", copy_all, renew);
    }

    // Where a record lies is known, or it is read from a line that has to be fetched as well.
    void Lines() {
        const std::size_t words = kLine / sizeof(std::uint64_t);
        const std::size_t lines = lines_.size() / words;
        const auto fetch = [&](const std::string& operation, int depth) {
            const auto places = data_.Positions(kCalls);
            std::uint64_t last = 0;
            bench_.Each(operation, kCalls, [&](std::size_t i) {
                std::uint64_t at = (places[i] * 2 + last % 2) % lines;
                for (int step = 0; step < depth; ++step) at = lines_[at * words + i % words];
                last = depth > 1 ? at : 0;
                return at;
            });
        };
        fetch("get-key", 2);
        fetch("update", 2);
        fetch("delete-key", 2);
        fetch("delete-cascade", 4);
        for (const char* operation : {"get-position", "get-position-edited", "get-position-sorted"})
            fetch(operation, 1);
        std::vector<std::uint32_t> leaf(257);
        for (const char* operation : {"insert-front", "insert-middle"}) {
            bench_.Each(operation, kCalls, [&](std::size_t i) {
                std::memmove(leaf.data() + 1, leaf.data(), 1024);
                leaf[0] = static_cast<std::uint32_t>(i);
                Keep(leaf[256]);
                return 0;
            });
        }
    }

    void Search() {
        const auto read_all = [&] {
            std::uint64_t sum = 0;
            for (std::size_t at = 0; at + 8 <= bytes_.size(); at += 8) {
                std::uint64_t word;
                std::memcpy(&word, bytes_.data() + at, 8);
                sum ^= word;
            }
            Keep(sum);
        };
        for (const char* operation : {"find-one-rare", "find-one-frequent", "find-one-other"})
            bench_.Whole(operation, read_all);
        const auto look_for = [&] {
            Keep(std::memchr(bytes_.data(), '\x01', bytes_.size()) != nullptr);
        };
        for (const char* operation :
             {"find-all-rare", "find-all-frequent", "find-all-other", "find-all-rare-sorted"})
            bench_.Whole(operation, look_for);
    }

    void Sort() {
        struct Entry {
            std::uint64_t prefix;
            std::uint32_t handle;
        };
        std::vector<Entry> entries;
        const auto sort = [&](const std::string& operation, std::size_t field) {
            bench_.Whole(
                operation,
                [&] {
                    std::ranges::sort(entries, [](const Entry& a, const Entry& b) {
                        return a.prefix != b.prefix ? a.prefix < b.prefix : a.handle < b.handle;
                    });
                },
                [&] {
                    entries.clear();
                    for (std::size_t at = 0; at < data_.size(); ++at)
                        entries.push_back(
                            {Prefix(data_.record(at), field), static_cast<std::uint32_t>(at)});
                });
        };
        sort("sort-day", 6);
        sort("sort-state", 5);
        sort("sort-code", 0);
        sort("sort-street", 3);
        sort("sort-name", 1);
    }

    static std::uint64_t Prefix(const Fields& fields, std::size_t field) {
        std::string text(fields[field]);
        text.append(fields[0]).append(fields[1]).resize(8);
        std::uint64_t prefix = 0;
        for (const char byte : text) prefix = prefix << 8 | static_cast<unsigned char>(byte);
        return prefix;
    }

    void Files() {
        const std::string file = bench_.folder() + "/raw";
        bench_.Whole("save", [&] { WriteAndSync(file, bytes_); });
        if (!bench_.Wants("load")) return;
        WriteAndSync(file, bytes_);
        std::vector<char> target;
        bench_.Whole(
            "load",
            [&] {
                target.resize(bytes_.size());
                ReadInto(file, target);
            },
            [&] {
                target = {};
                ReleaseFreedMemory();
            });
    }

    Bench& bench_;
    const Data& data_;
    std::vector<char> bytes_;
    std::vector<std::uint64_t> lines_;
};

}  // namespace
}  // namespace tavolin::bench

int main(int argc, char** argv) {
    tavolin::bench::Bench bench(argc, argv, "machine");
    tavolin::bench::Machine(bench).Run();
}
