// A process that saves is killed at any moment: what it leaves is the old file or the new one.
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <random>
#include <set>

#include "tests/support/engine_state.h"
#include "tests/support/mdb_checker.h"

namespace tavolin {
namespace {

// A process of its own that runs step(0), step(1), step(0), step(1) ... until it is killed.
class Victim {
  public:
    template <class Step>
    explicit Victim(Step&& step) {
        int ends[2];
        if (::pipe(ends) != 0) std::abort();
        process_ = ::fork();
        if (process_ == 0) {
            step(0);
            if (::write(ends[1], "", 1) != 1) ::_exit(2);
            for (int i = 1;; i ^= 1) step(i);
        }
        ::close(ends[1]);
        char ready = 0;
        begun_ = ::read(ends[0], &ready, 1) == 1;
        ::close(ends[0]);
    }
    // True when it was still at it.
    bool Kill() const {
        ::kill(process_, SIGKILL);
        int status = 0;
        ::waitpid(process_, &status, 0);
        return begun_ && WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
    }

  private:
    pid_t process_ = 0;
    bool begun_ = false;
};

struct KillTest : EngineTest {
    KillTest() {
        engine_.CreateNewPrimaryTable("T", {"ID", "Text"});
        for (int i = 0; i < 2000; ++i) {
            const std::string number = std::to_string(i);
            engine_.AddRecord("T", i, {number, std::string(100, '.') + number});
        }
        engine_.SaveDB();
        std::printf("seed %u\n", seed_);
    }
    // Kills at random moments; check() is asked after each. Both states must have been met, so as
    // long as one has not, the next victim may have longer: the machine may be busy.
    template <class Step, class Check>
    void KillOften(int kills, Step&& step, Check&& check) {
        std::set<std::string> met;
        unsigned most = 12'000;
        for (int i = 0; i < kills && !HasFailure(); ++i) {
            SCOPED_TRACE("kill " + std::to_string(i) + ", seed " + std::to_string(seed_));
            const Victim victim(step);
            ::usleep(random_() % most);
            EXPECT_TRUE(victim.Kill()) << "it ended by itself";
            met.insert(check());
            if (met.size() < 2) most += 4'000;
        }
        EXPECT_EQ(met.size(), 2u);
    }

    const unsigned seed_ = std::random_device{}();
    std::mt19937 random_{seed_};
};

TEST_F(KillTest, TheDatabaseIsTheOldOneOrTheNewOne) {
    const std::string file = folder_ / "shop.cdb";
    const auto step = [&](int state) {
        engine_.GetRecord("T", 1)->prop(1, state == 0 ? "old" : std::string(300'000, 'n'));
        engine_.SaveDB({}, {}, {}, state == 0);
    };
    std::set<std::string> states;
    for (const int state : {0, 1}) {
        step(state);
        states.insert(Contents(file));
    }
    KillOften(120, step, [&] {
        const std::string now = Contents(file);
        EXPECT_TRUE(states.contains(now));
        CVLDBEngine reader;
        reader.LogOn("ann", "secret");
        EXPECT_EQ(reader.LoadDB(file)->Lookup(1)->Count(), 2000);
        return now;
    });
}

TEST_F(KillTest, TheRegistryIsTheOldOneOrTheNewOne) {
    const std::string shop = folder_ / "shop.cdb", other = folder_ / "other.cdb";
    const auto step = [&](int state) {
        CVLDBOwnerSet owners;
        owners.LoadRegistry();
        const auto databases = owners.Item("ann")->CVLOwnerDBSet();
        if (databases->CanAdd(other) == (state == 0)) return;
        if (state == 0) {
            databases->Remove(other);
        } else {
            databases->Add("other.cdb", FolderPath());
        }
        owners.StoreRegistry();
    };
    KillOften(120, step, [&] {
        CVLDBEngine reader;
        reader.LogOn("eve", "");
        const std::string listed = Listed(reader, "ann");
        EXPECT_TRUE(listed == shop + ";" || listed == shop + ";" + other + ";") << listed;
        return listed;
    });
    EXPECT_FALSE(FileSystem::Current().Exists(folder_ / "RDX.dat.unreadable"));
}

TEST_F(KillTest, AnAccessExportIsTheOldOneOrTheNewOne) {
    const std::string file = folder_ / "out.mdb";
    engine_.MakeItMDB(FolderPath(), "out.");
    const std::string empty = Contents(file);
    // The second export adds a table to the file, which the first one makes anew beside it.
    const auto step = [&](int state) {
        if (state == 0) {
            const std::string beside = folder_ / ("new" + std::to_string(::getpid()) + ".mdb");
            WriteContents(beside, empty);
            FileSystem::Current().Rename(beside, file);
        } else {
            engine_.CVLTableSet()->Item(1)->CVLRecordSet()->MakeItMDB(FolderPath(), "out.", "More",
                                                                      {"ID", "Text"});
        }
    };
    KillOften(60, step, [&] {
        const MdbChecker found(Contents(file));
        EXPECT_EQ(found.faults(), "");
        std::string tables;
        for (const auto& [name, table] : found.tables()) {
            tables += name + " ";
            EXPECT_EQ(table.rows.size(), 2000u) << name;
        }
        return tables;
    });
}

}  // namespace
}  // namespace tavolin
