// Random work by several users for as long as wanted: memory and open files stay as they are after
// the first part of it, and everything that holds between two calls holds all the time.
//     tavolin_soak SECONDS [SEED]
#include <malloc.h>

#include <chrono>
#include <cstdio>
#include <random>

#include "tests/support/engine_state.h"
#include "tests/support/invariants.h"

namespace tavolin {
namespace {

constexpr std::size_t kMostRecords = 400;
constexpr const char* kUsers[] = {"ann", "writer", "deleter", "reader"};
constexpr const char* kTables[] = {"Orders", "Buyers", "People"};

// Not what is resident: of that the machine takes away. Nothing where a sanitizer keeps the memory.
std::size_t UsedKilobytes() {
    const auto info = ::mallinfo2();
    return (info.uordblks + info.hblkhd) / 1024;
}

std::size_t OpenFiles() {
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

class Soak {
  public:
    explicit Soak(unsigned seed) : random_(seed) {
        engine_ = std::make_unique<CVLDBEngine>();
        engine_->LogOn("ann", "a");
        engine_->CreateNewDB("shop", folder_);
        for (const char* table : kTables) engine_->CreateNewPrimaryTable(table, {"ID", "A", "B"});
        engine_->LinkTables("Orders", 1, "Buyers");
        engine_->LinkTables("Buyers", 0, "People");
        engine_->CreateNewUser("writer", "w", true, true, false);
        engine_->CreateNewUser("deleter", "d", true, true, true);
        engine_->CreateNewUser("reader", "r", true, false, false);
        engine_->LogDBActivities(false, false, false, false, false, false, false, false, false,
                                 false, false, true, true);
        engine_->SaveDB();
    }

    // One call, whatever comes of it.
    void Step() {
        ++steps_;
        try {
            Act();
        } catch (const Error& error) {
            ++refused_;
            // Nothing is wrong with the machine or the library here.
            const bool expected = error.number() < 0 || error.number() == kInvalidCall;
            if (!expected) faults_ += error.source() + ": " + error.description() + "\n";
        }
    }
    // The report grows for as long as an engine lives, and so does the log.
    void Renew() {
        engine_.reset();
        engine_ = std::make_unique<CVLDBEngine>();
        std::error_code none;
        std::filesystem::remove(NativePath(folder_ + "\\shop.log"), none);
        Load();
    }
    // Used by an engine that has just loaded the data, beyond their size in the file.
    std::size_t OverheadKilobytes() {
        Renew();
        const auto data = std::filesystem::file_size(NativePath(folder_ + "\\shop.cdb")) / 1024;
        return UsedKilobytes() - std::min<std::size_t>(data, UsedKilobytes());
    }
    std::string Faults() const { return faults_ + FaultsOf(*engine_); }
    std::string Counts() const {
        return std::to_string(steps_) + " calls, " + std::to_string(refused_) + " refused, " +
               std::to_string(saves_) + " saves, " + std::to_string(loads_) + " loads, " +
               std::to_string(aborts_) + " aborts";
    }

  private:
    std::size_t Any(std::size_t count) { return random_() % count; }
    std::string Value() { return std::string(Any(20), 'x') + std::to_string(Any(kMostRecords)); }
    const char* AnyTable() { return kTables[Any(3)]; }

    void Act() {
        const std::size_t what = Any(1000);
        const std::size_t count = engine_->CVLTableSet()->Lookup("Orders")->CVLRecordSet()->Count();
        if (what < 400 && count < kMostRecords) {
            engine_->AddRecord(AnyTable(), 1, {Value(), Value(), Value()});
        } else if (what < 550) {
            const auto table = AnyTable();
            const auto record = engine_->GetRecord(table, static_cast<int>(Any(count + 2)));
            engine_->UpDateRecord(table, record, 1, {record->prop(0), Value(), Value()});
        } else if (what < 850) {
            engine_->DeleteRecord(AnyTable(), static_cast<int>(Any(count + 2)), Any(4) > 0);
        } else if (what < 880) {
            engine_->Find(Value(), Any(2) == 0);
        } else if (what < 900) {
            engine_->GetTable(AnyTable())->Sort(static_cast<int>(Any(3)));
        } else if (what < 930) {
            const char* name = kUsers[Any(4)];
            engine_->LogOn(name, std::string(1, *name));
            engine_->DBLegalUser(engine_->LogedOnUser(), ToRead);
        } else if (what < 960) {
            engine_->TransactionBegin();
        } else if (what < 975) {
            engine_->TansactionAbort();
            ++aborts_;
        } else if (what < 980) {
            engine_->TransactionCommit();
            ++saves_;
        } else if (what < 990) {
            engine_->SaveDB();
            ++saves_;
        } else {
            Reopen();
        }
    }

    void Reopen() {
        if (Any(3) == 0) {
            Renew();
        } else {
            Load();
        }
        if (Any(20) == 0) {
            engine_->MakeItText(folder_);
            engine_->MakeItHTML(folder_);
            std::error_code none;
            std::filesystem::remove(NativePath(folder_ + "\\shop.mdb"), none);
            engine_->MakeItMDB(folder_);
        }
        ++loads_;
    }

    void Load() {
        engine_->LogOn("ann", "a");
        engine_->LoadDB(folder_ + "\\shop.cdb");
        engine_->DBLegalUser(engine_->LogedOnUser(), Ownership);
    }

    ScopedLibraryFolder library_;
    const std::string folder_ = PortablePath(library_.folder().path());
    std::mt19937 random_;
    std::unique_ptr<CVLDBEngine> engine_;
    std::string faults_;
    std::size_t steps_ = 0, refused_ = 0, saves_ = 0, loads_ = 0, aborts_ = 0;
};

int Run(double seconds, unsigned seed) {
    std::printf("seed %u\n", seed);
    Soak soak(seed);
    const auto begin = std::chrono::steady_clock::now();
    const auto passed = [&] {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    };
    std::size_t warm_memory = 0, warm_files = 0;
    double next = seconds / 3;
    while (passed() < seconds) {
        for (int i = 0; i < 200; ++i) soak.Step();
        const std::string faults = soak.Faults();
        if (!faults.empty()) {
            std::printf("%s\n%s", soak.Counts().c_str(), faults.c_str());
            return 1;
        }
        if (passed() < next) continue;
        next += seconds / 10;
        const std::size_t memory = soak.OverheadKilobytes();
        if (warm_memory == 0) warm_memory = memory, warm_files = OpenFiles();
        std::printf("%4.0f s: %zu KB besides the data, %zu open files, %s\n", passed(), memory,
                    OpenFiles(), soak.Counts().c_str());
        std::fflush(stdout);
    }
    const bool tells = UsedKilobytes() > 0;
    const bool flat = !tells || soak.OverheadKilobytes() <= warm_memory + warm_memory / 10 + 256;
    const bool closed = OpenFiles() == warm_files;
    std::printf("memory %s, files %s\n",
                !tells ? "not judged here"
                : flat ? "flat"
                       : "GROWS",
                closed ? "closed" : "LEFT OPEN");
    return flat && closed ? 0 : 1;
}

}  // namespace
}  // namespace tavolin

int main(int argc, char** argv) {
    const double seconds = argc > 1 ? std::atof(argv[1]) : 10;
    const unsigned seed = argc > 2 ? static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10))
                                   : std::random_device{}();
    return tavolin::Run(seconds, seed);
}
