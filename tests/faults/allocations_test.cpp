// Every allocation fails once, and from every one on all of them: the error is 7, nothing has
// changed, nothing is lost, and the same call succeeds as soon as there is memory again.
#include "tests/faults/allocations.h"

#include <fcntl.h>

#include <functional>

#include "tests/support/engine_state.h"
#include "tests/support/invariants.h"

namespace tavolin {
namespace {

// The machine's files, without waiting for the disk.
struct HastyFileSystem final : ForwardingFileSystem {
    bool Asked(std::string_view call, std::string_view, std::string_view) override {
        return !call.starts_with("flush");
    }
};

// Orders refer to buyers and to goods, buyers to people by their own key: what is added brings
// records along, what is deleted takes them along.
class Shop {
  public:
    Shop(const std::string& folder, int orders)
        : engine("shop", folder), file(folder + "\\shop.cdb") {
        for (const char* name : {"Orders", "Buyers", "People", "Goods"}) {
            engine.CreateNewPrimaryTable(name, {"ID", "A", "B"});
        }
        engine.LinkTables("Orders", 1, "Buyers");
        engine.LinkTables("Orders", 2, "Goods");
        engine.LinkTables("Buyers", 0, "People");
        for (int i = 0; i < orders; ++i) {
            const std::string number = std::to_string(i * 7 % 10) + std::to_string(i);
            engine.AddRecord("Orders", i,
                             {number, "buyer" + number, "good" + std::to_string(i % 3)});
        }
        engine.GetRecord("Orders", 1)->Attach(1, "picture", aPicture);
        LogEverything(engine);
        engine.SaveDB();
    }

    // What a file would hold, what is wrong in memory, and whether a transaction is open.
    std::string State() {
        const std::string saved = Contents(file);
        engine.SaveDB();
        std::string state = FaultsOf(engine) + (engine.TransactionStarted() ? "open " : "closed ");
        state += Contents(file);
        WriteContents(file, saved);
        return state;
    }

    NewDatabase engine;
    std::string file;
    std::shared_ptr<CVLRecord> record;
    std::shared_ptr<CVLAttachmentSet> attachments;
};

void Change(Shop& shop) {
    shop.engine.AddRecord("Orders", 99, {"changed", "buyer of it", "good2"});
    shop.engine.GetRecord("Orders", 2)->Key("another key than its fields give");
    shop.engine.CreateNewUser("bob", "b", true, true, true);
    shop.engine.GetTable("Goods")->Sort(0);
}

void BringAttachments(Shop& shop) {
    shop.attachments = std::make_shared<CVLAttachmentSet>();
    shop.attachments->Add("sound", 1, "a path that is long enough", aSound);
    shop.record = shop.engine.GetRecord("Orders", 2);
}

void BeginAndChange(Shop& shop) {
    shop.engine.GetRecord("Orders", 3)->Key("one that the state has to hold");
    shop.engine.TransactionBegin();
    Change(shop);
}

struct Operation {
    const char* member;  // "" where each part of it has its own source
    void (*prepare)(Shop&);
    void (*act)(Shop&);
    // After a failure it has been done all the same.
    bool ends_anyway = false;
    // What else than 7 it may raise.
    std::int32_t number = kOutOfMemory;
};

constexpr std::string_view kLongText =
    "A text that needs more room than there was in the record before, by far, so that it has to "
    "move, and that makes a key for the buyers and for the people which is as long.";

const Operation kOperations[] = {
    {"AddRecord", nullptr,
     [](Shop& shop) {
         shop.engine.AddRecord("Orders", 5, {"new order", "a new buyer of it", "a new good"});
     }},
    {"AddRecord", BringAttachments,
     [](Shop& shop) {
         shop.engine.AddRecord("Orders", 5, {"new", "new"}, shop.attachments,
                               {.before = IndexKey(1)});
     }},
    {"UpDateRecord",
     [](Shop& shop) {
         BringAttachments(shop);
         shop.record->prop(5, std::string(600, 'x'));  // too much for where it was
     },
     [](Shop& shop) {
         shop.engine.UpDateRecord(
             "Orders", shop.record, 2,
             {shop.record->arena()->Field(shop.record->handle(), 0), kLongText, "something new"},
             shop.attachments);
     }},
    {"RemoveRecord", nullptr, [](Shop& shop) { shop.engine.DeleteRecord("Orders", 3); }},
    {"RemoveRecord", nullptr, [](Shop& shop) { shop.engine.DeleteRecord("Orders", 3, false); }},
    {"CVLTable:Sort Method", [](Shop& shop) { shop.engine.GetTable("Orders"); },
     [](Shop& shop) { shop.engine.CVLTableSet()->Lookup(1)->Sort(0); }},
    {"CVLTable:Sort Method", nullptr,
     [](Shop& shop) { shop.engine.CVLTableSet()->Lookup(1)->Sort(1); }},
    {"Find", nullptr, [](Shop& shop) { shop.engine.Find("good1"); }},
    {"Find", nullptr, [](Shop& shop) { shop.engine.Find("good1", true); }},
    {"CVLTable:Key Property Let", nullptr,
     [](Shop& shop) { shop.engine.CVLTableSet()->Lookup(2)->Key(kLongText); }},
    {"CVLDBUser:UserName Property Let", nullptr,
     [](Shop& shop) { shop.engine.LogedOnUser()->UserName(kLongText); }},
    {"", [](Shop& shop) { shop.engine.GetRecord("Orders", 1)->Key(kLongText); },
     [](Shop& shop) {
         const auto records = shop.engine.CVLTableSet()->Lookup(1)->CVLRecordSet();
         for (const auto& each : records->NewEnum()) {
             each->Key();
             each->OnPropertyChange.Connect([](const auto&, const auto&, const auto&) {});
         }
         EXPECT_EQ(records->NextRecord(1)->nKey(), 1);
         CVLAttachment().Key(kLongText);
         shop.engine.LogedOnUser()->Key(kLongText);
     }},
    {"TransactionBegin", nullptr, [](Shop& shop) { shop.engine.TransactionBegin(); }},
    {"TransactionAbort", BeginAndChange, [](Shop& shop) { shop.engine.TansactionAbort(); }},
    {"TransactionCommit", BeginAndChange, [](Shop& shop) { shop.engine.TransactionCommit(); },
     true},
    {"SaveDB", Change, [](Shop& shop) { shop.engine.SaveDB(); }, true},
    // Whatever keeps a file from being read, memory included, has this number.
    {"loadDB", Change, [](Shop& shop) { shop.engine.LoadDB(shop.file); }, false,
     CVLErrorNum::GetDBNotSetError()},
};

// Of these, the first so many touch no file and are tried with many records as well.
constexpr int kInMemory = 12;

struct AllocationsTest : testing::TestWithParam<int> {
    // With that allocation failing, or none for 0. False when the operation does not get so far.
    bool Try(const Operation& operation, int orders, std::size_t nth, bool for_good) {
        Shop shop(PortablePath(library_.folder().path()), orders);
        const std::string saved = Contents(shop.file);
        if (operation.prepare != nullptr) operation.prepare(shop);
        const std::string before = shop.State();
        std::optional<Error> failure;
        bool foreign = false;
        FailAllocation(nth, for_good);
        try {
            operation.act(shop);
        } catch (const Error& error) {
            failure = error;
        } catch (...) {
            foreign = true;
        }
        const bool reached = FailNoMore();
        EXPECT_FALSE(foreign) << "not an Error";
        if (failure) {
            CheckFailure(operation, *failure);
            const std::string now = shop.State();
            EXPECT_EQ(FaultsOf(shop.engine), "");
            EXPECT_TRUE(shop.engine.CVLTableSet()->links().All(kLongText).empty());
            // What ends in any case has its transaction behind it.
            const std::size_t from = operation.ends_anyway ? now.find(' ') : 0;
            EXPECT_TRUE(now.substr(from) ==
                        before.substr(operation.ends_anyway ? before.find(' ') : 0));
            EXPECT_TRUE(operation.ends_anyway || Contents(shop.file) == saved);
            if (!operation.ends_anyway) operation.act(shop);
        }
        const std::string now = shop.State();
        if (nth == 0) done_ = now;
        EXPECT_TRUE(now == done_);
        shop.engine.SaveDB();  // who deletes it is its owner there, too
        shop.engine.DeleteDB(shop.file);
        // Nor half-made files, unless there was no memory to take them away either.
        for (const auto& entry : fs::directory_iterator(library_.folder().path()))
            EXPECT_TRUE(for_good || entry.path().filename() == "RDX.dat") << entry.path();
        return reached;
    }
    static int OpenFiles() {
        int open = 0;
        for (int file = 0; file < 200; ++file) open += ::fcntl(file, F_GETFD) != -1;
        return open;
    }

    static void CheckFailure(const Operation& operation, const Error& failure) {
        EXPECT_TRUE(failure.number() == kOutOfMemory || failure.number() == operation.number)
            << failure.number();
        if (*operation.member == '\0') return;
        EXPECT_EQ(failure.source(), SourceNamed(operation.member));
        EXPECT_NE(failure.description(), "");
    }

    // With every allocation failing once.
    void TryAll(const Operation& operation, int orders, bool for_good) {
        Try(operation, orders, 0, false);
        const int open = OpenFiles();
        for (std::size_t nth = 1;; ++nth) {
            SCOPED_TRACE(operation.member + (" with allocation " + std::to_string(nth)) +
                         (for_good ? " and all later ones" : "") + " failing, " +
                         std::to_string(orders) + " orders");
            const std::size_t before = LivingAllocations();
            const bool reached = Try(operation, orders, nth, for_good);
            EXPECT_EQ(LivingAllocations(), before);
            EXPECT_EQ(OpenFiles(), open);
            if (reached) continue;
            EXPECT_GT(nth, 4u);
            return;
        }
    }

    ScopedLibraryFolder library_;
    const StoppedClock clock_;
    HastyFileSystem files_;
    const ScopedFileSystem scope_{files_};
    std::string done_;  // the state after an operation that nothing has kept from being done
};

TEST_P(AllocationsTest, EachMayFail) {
    const Operation& operation = kOperations[GetParam()];
    TryAll(operation, 4, false);
    TryAll(operation, 4, true);
    if (GetParam() < kInMemory) TryAll(operation, 60, false);
}

INSTANTIATE_TEST_SUITE_P(Operations, AllocationsTest,
                         testing::Range(0, static_cast<int>(std::size(kOperations))));

// The places of so many records are made by the first removal, with an allocation for each.
TEST(LargeResultTest, ARemovalThatFailedCanBeRepeated) {
    ScopedLibraryFolder library;
    Shop shop(PortablePath(library.folder().path()), 600);
    std::size_t nth = 590;
    for (bool reached = true; reached; ++nth) {
        const auto result = shop.engine.GetTable("Orders")->Find("");
        FailAllocation(nth);
        const std::int32_t number = ErrorNumber([&] { result->Remove(600); });
        reached = FailNoMore();
        EXPECT_EQ(number, reached ? kOutOfMemory : 0);
        if (reached) result->Remove(600);
        EXPECT_EQ(result->Count(), 599) << nth;
    }
    EXPECT_GT(nth, 600u);
}

}  // namespace
}  // namespace tavolin
