// The job that every store does, in the same order on the same records. A store has the members
// that it can do: those it lacks are left out of its run.
//
//     Add, Get, Update, Delete          one record, by its key without regard to case
//     InPages                           the same by keys or positions, some at a time
//     At, InsertAt                      by a position from 0 on; LeaveGaps is called on an empty
//                                       store that is going to be inserted into
//     Find, Sort                        field -1 is all of them
//     Save, Load, Snapshot, Restore     everything
//     Link, DeleteCascading             field 8 refers to a second table
//     Begin, End                        around a run of changes; part of the time
//     Walk                              all records in their order, for comparing
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "bench/bench.h"
#include "bench/files.h"

namespace tavolin::bench {

template <class Store>
class Workload {
  public:
    explicit Workload(Bench& bench) : bench_(bench), data_(bench.data()) {}

    void Run() {
        Fill();
        Look();
        Search();
        Persist();
        Sort();
        Change();
        Cascade();
        if constexpr (requires { store_->Publish(bench_); }) store_->Publish(bench_);
    }

  private:
    static constexpr std::size_t kMost = 200000;  // calls for one figure
    static constexpr int kNumberField = 8;

    bool WantsAnyOf(std::initializer_list<const char*> operations) const {
        return std::ranges::any_of(operations, [&](const char* one) { return bench_.Wants(one); });
    }

    void Renew() {
        store_.reset();
        ReleaseFreedMemory();
        store_ = std::make_unique<Store>(bench_.folder());
    }

    void AddAll() {
        store_->Begin();
        for (std::size_t at = 0; at < data_.size(); ++at) store_->Add(data_.record(at));
        store_->End();
    }

    void Refill() {
        Renew();
        AddAll();
    }

    void Fill() {
        if constexpr (requires { store_->AddDirectly(data_.record(0)); }) {
            const auto add_all = [&] {
                for (std::size_t at = 0; at < data_.size(); ++at)
                    store_->AddDirectly(data_.record(at));
            };
            FillForMemory("memory", add_all);
            FillForMemory("memory-engine", [&] { AddAll(); });
            bench_.Whole("bulk-add-table", add_all, [&] { Renew(); });
        } else {
            FillForMemory("memory", [&] { AddAll(); });
        }
        bench_.Whole(
            "bulk-add", [&] { AddAll(); }, [&] { Renew(); });
        if (!bench_.Wants("bulk-add")) Refill();
        CompareState("bulk-add");
    }

    template <class Body>
    void FillForMemory(const std::string& operation, Body&& fill) {
        if (!bench_.Wants(operation)) return;
        Renew();
        const double before = ResidentBytes();
        fill();
        bench_.Value(operation, "bytes",
                     (ResidentBytes() - before) / static_cast<double>(data_.size()));
    }

    void Look() {
        const auto keys = data_.Lookups(kMost);
        bench_.Each("get-key", keys.size(), [&](std::size_t i) { return store_->Get(keys[i]); });
        if constexpr (requires { store_->GetDirectly(keys[0]); }) {
            bench_.Each("get-key-table", keys.size(),
                        [&](std::size_t i) { return store_->GetDirectly(keys[i]); });
        }
        LookInPages("get-key-pages", keys);
        LookByPosition("get-position");
    }

    void LookByPosition(const std::string& operation) {
        if constexpr (requires { store_->At(std::size_t{0}); }) {
            const auto positions = data_.Positions(kMost);
            bench_.Each(operation, positions.size(),
                        [&](std::size_t i) { return store_->At(positions[i]); });
            if constexpr (requires { store_->AtDirectly(std::size_t{0}); }) {
                bench_.Each(operation + "-table", positions.size(),
                            [&](std::size_t i) { return store_->AtDirectly(positions[i]); });
            }
            LookInPages(operation + "-pages", positions);
        }
    }

    template <class Which>
    void LookInPages(const std::string& operation, const std::vector<Which>& which) {
        if constexpr (requires { store_->InPages(which, std::size_t{0}); }) {
            bench_.Each(operation, which.size(),
                        [&](std::size_t i) { return store_->InPages(which, i); });
        }
    }

    void Search() {
        Find("find-one-rare", 1, kRareNeedle);
        Find("find-one-frequent", 3, kFrequentNeedle);
        Find("find-one-other", 1, kOtherNeedle);
        Find("find-all-rare", -1, kRareNeedle);
        Find("find-all-frequent", -1, kFrequentNeedle);
        Find("find-all-other", -1, kOtherNeedle);
    }

    void Find(const std::string& operation, int field, std::string_view needle) {
        if constexpr (requires { store_->Find(field, needle, false); }) {
            if (bench_.checks()) {
                std::uint64_t found = store_->Find(field, needle, true);
                // Stores that fold ASCII alone miss the same records.
                if (needle == kOtherNeedle && !Store::kFoldsUnicode)
                    found += store_->Find(field, kOtherNeedleInCapitals, true);
                bench_.Answer(operation, found);
            }
            bench_.Whole(operation, [&] { Keep(store_->Find(field, needle, false)); });
        }
    }

    void Persist() {
        const std::string first = Data::Key(data_.record(0));
        if constexpr (requires { store_->Save(); }) bench_.Whole("save", [&] { store_->Save(); });
        if constexpr (requires { store_->file(); }) WritePlainly();
        if constexpr (requires { store_->Load(); }) {
            if (bench_.Wants("load")) store_->Save();
            bench_.Whole(
                "load",
                [&] {
                    store_->Load();
                    Keep(store_->Get(first));
                },
                [&] { store_->Forget(); });
            CompareState("load");
        }
        if constexpr (requires { store_->Snapshot(); }) {
            bench_.Whole(
                "begin", [&] { store_->Snapshot(); }, [&] { store_->EndSnapshot(); });
            bench_.Whole(
                "abort",
                [&] {
                    store_->Restore();
                    Keep(store_->Get(first));
                },
                [&] {
                    store_->EndSnapshot();
                    store_->Snapshot();
                    store_->Delete(first);
                });
            store_->EndSnapshot();
            CompareState("abort");
        }
    }

    // The file that was saved, as it is.
    void WritePlainly() {
        if (!bench_.Wants("save-plain") || bench_.checks()) return;
        store_->Save();
        std::vector<char> bytes(FileSize(store_->file()));
        ReadInto(store_->file(), bytes);
        const std::string copy = bench_.folder() + "/copy";
        bench_.Whole("save-plain", [&] { WriteAndSync(copy, bytes); });
        bench_.Value("file", "bytes", static_cast<double>(bytes.size()));
    }

    void Sort() {
        if constexpr (requires { store_->Sort(0); }) {
            SortBy("sort-day", 6);
            SortBy("sort-state", 5);
            SortBy("sort-code", 0);
            SortBy("sort-street", 3);
            if constexpr (Store::kSortsField1) SortBy("sort-name", 1);
            if constexpr (Store::kSortRearranges) {
                if (WantsAnyOf({"get-position-sorted", "find-all-rare-sorted"})) store_->Sort(6);
                LookByPosition("get-position-sorted");
                Find("find-all-rare-sorted", -1, kRareNeedle);
            }
        }
    }

    void SortBy(const std::string& operation, int field) {
        if (!bench_.Wants(operation)) return;
        bench_.Whole(
            operation, [&] { store_->Sort(field); }, [&] { store_->Sort(field == 0 ? 6 : 0); });
        CompareState(operation);
    }

    void Change() {
        if (!WantsAnyOf({"update", "insert-front", "insert-middle", "get-position-edited",
                         "delete-key", "edits"}))
            return;
        Renew();  // one order for all, whatever sorting did to it
        if constexpr (requires { store_->LeaveGaps(); }) store_->LeaveGaps();
        AddAll();
        store_->Begin();
        Random random(14);
        std::vector<std::size_t> chosen(kMost);
        for (auto& at : chosen) at = random.Below(data_.size());
        std::vector<std::string> keys;
        std::vector<Fields> values;
        for (const std::size_t at : chosen) {
            keys.push_back(AlterCase(Data::Key(data_.record(at)), random));
            values.push_back(data_.Changed(at));
        }
        bench_.Each("update", keys.size(), [&](std::size_t i) {
            store_->Update(keys[i], values[i]);
            return 0;
        });
        Insert();
        LookByPosition("get-position-edited");
        const auto victims = data_.Victims(std::max<std::size_t>(data_.size() / 4, 1));
        const std::size_t half = victims.size() / 2;
        bench_.Each("delete-key", half, [&](std::size_t i) {
            store_->Delete(victims[i]);
            return 0;
        });
        store_->End();
        CompareState(Store::kKeepsOrder ? "edits" : "edits-without-insertions");
        if constexpr (requires { store_->DeleteDirectly(victims[0]); }) {
            bench_.Each("delete-key-table", half, [&](std::size_t i) {
                store_->DeleteDirectly(victims[half + i]);
                return 0;
            });
        }
    }

    void Insert() {
        if constexpr (requires { store_->InsertAt(std::size_t{0}, data_.record(0)); }) {
            const std::size_t spares = data_.spares() / 2;
            const std::size_t front = bench_.Each("insert-front", spares, [&](std::size_t i) {
                store_->InsertAt(0, data_.spare(i));
                return 0;
            });
            const std::size_t middle = front + std::max<std::size_t>(data_.size() / 2, 1);
            bench_.Each("insert-middle", spares, [&](std::size_t i) {
                store_->InsertAt(middle, data_.spare(front + i));
                return 0;
            });
        }
    }

    void Cascade() {
        if constexpr (requires { store_->Link(kNumberField); }) {
            if (!WantsAnyOf({"link", "delete-cascade"})) return;
            Refill();
            bool linked = false;
            const auto link = [&] {
                store_->Link(kNumberField);
                linked = true;
            };
            bench_.Whole("link", link, [&] {
                if (linked) Refill();
                linked = false;
            });
            if (!linked) link();
            store_->Begin();
            bench_.Answer("link", store_->Linked());
            const auto victims = data_.Victims(std::max<std::size_t>(data_.size() / 4, 1));
            // The first one may have to count what the others look up.
            const auto start = Clock::now();
            store_->DeleteCascading(victims[0]);
            bench_.Value("delete-cascade-first", "ms", Seconds(start) * 1e3);
            bench_.Each("delete-cascade", victims.size() - 1, [&](std::size_t i) {
                store_->DeleteCascading(victims[i + 1]);
                return 0;
            });
            bench_.Answer("delete-cascade", store_->Linked());
            store_->End();
            CompareState("delete-cascade");
        }
    }

    // The records one by one: in their order, where the store has one, and as a set.
    void CompareState(const std::string& after) {
        if (!bench_.checks() || !bench_.Wants(after)) return;
        std::uint64_t ordered = 0;
        std::uint64_t set = 0;
        store_->Walk([&](const Fields& fields) {
            const std::uint64_t digest = Digest(fields);
            ordered = ordered * 31 + digest;
            set += digest;
        });
        bench_.Answer(after + ":records", set);
        if (Store::kKeepsOrder) bench_.Answer(after + ":order", ordered);
    }

    Bench& bench_;
    const Data& data_;
    std::unique_ptr<Store> store_;
};

template <class Store>
int RunBench(int argc, char** argv, const std::string& version) {
    Bench bench(argc, argv, version);
    Workload<Store>(bench).Run();
    return 0;
}

}  // namespace tavolin::bench
