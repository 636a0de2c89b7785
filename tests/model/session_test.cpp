#include "tavolin/model/session.h"

#include <functional>
#include <thread>

#include "tavolin/model/attachment_set.h"
#include "tavolin/model/user_note_set.h"
#include "tests/support/expect_error.h"

namespace tavolin {
namespace {

struct SessionTest : EngineTest {
    static bool MayWrite(CVLRecordSet& set) {
        static int count = 0;
        const std::string key = "key" + std::to_string(++count);
        const std::int32_t number = ErrorNumber([&] { set.Add(kFirst, 1, {key}); });
        EXPECT_TRUE(number == 0 || number == N::GetUserPermissionToRWError()) << number;
        return number == 0;
    }
    static std::unique_ptr<CVLDBEngine> Reader(const std::string& folder) {
        auto engine = std::make_unique<NewDatabase>("other", folder, "rob", "word");
        engine->CreateNewPrimaryTable("T", {"ID"});
        engine->CreateNewUser("r", "word", true, false, false);
        engine->LogOn("r", "word");
        engine->DBLegalUser(engine->LogedOnUser(), ToRead);
        return engine;
    }
};

TEST_F(SessionTest, RightsOfTwoEnginesNeverMix) {
    const auto own = engine_.CreateNewPrimaryTable("T", {"ID"});
    const auto other_engine = Reader(FolderPath());
    const auto other = other_engine->GetTable("T");
    EXPECT_TRUE(MayWrite(*own->CVLRecordSet()));
    EXPECT_FALSE(MayWrite(*other->CVLRecordSet()));
    const auto record = engine_.AddRecord("T", 1, {"a"});
    record->Attach(1, "p", aPicture);  // made by the one, though the other is the newest
    EXPECT_EQ(ErrorNumber([&] { other_engine->AddRecord("T", 1, {"a"}); }),
              N::GetUserPermissionToRWError());
    // What is put into another's tree goes by that tree's rights.
    const auto shared = std::make_shared<CVLAttachmentSet>();
    EXPECT_NE(ErrorNumber([&] { shared->Add("k", 1, "p", aPicture); }), 0);
    record->CVLAttachmentSet(shared);
    shared->Add("k", 1, "p", aPicture);
    const auto records = std::make_shared<CVLRecordSet>();
    EXPECT_FALSE(MayWrite(*records));
    own->CVLRecordSet(records);
    EXPECT_TRUE(MayWrite(*records));
}

TEST_F(SessionTest, FreeObjectsBelongToTheNewestEngineOfTheirThread) {
    CVLRecordSet mine;
    EXPECT_TRUE(MayWrite(mine));
    {
        const auto other_engine = Reader(FolderPath());
        CVLRecordSet others;
        EXPECT_FALSE(MayWrite(others));
        EXPECT_TRUE(MayWrite(mine));
        std::thread([] {
            CVLRecordSet nobodys;
            ExpectError(N::GetUserPermissionToRWError(), "CVLRecordSet:Add Method",
                        "User --- Does Not Have Permission To Read/Write!",
                        [&] { nobodys.Add(kFirst, 1, {"a"}); });
        }).join();
    }
    CVLRecordSet after;
    EXPECT_TRUE(MayWrite(after));
    engine_.SaveDB();
    const auto opened = engine_.GetDB(FolderPath() + "\\shop.cdb");
    CVLRecordSet still;
    EXPECT_TRUE(MayWrite(still));
    EXPECT_EQ(ErrorNumber([&] { opened->CVLTableSet()->Item("T"); }),
              N::GetUserPermissionToRdError());
}

TEST(SessionStartTest, WhatIsMadeBeforeAnyEngineAsksTheCurrentOneWhenItActs) {
    ScopedLibraryFolder library;
    CVLRecordSet records;
    CVLAttachmentSet attachments;
    CVLUserNoteSet notes;
    CVLRecord record;
    const std::function<void()> changes[] = {
        [&] { records.Add(kFirst, 1, {std::to_string(records.Count())}); },
        [&] { attachments.Add(std::to_string(attachments.Count()), 1, "p", aPicture); },
        [&] { notes.Add(Date{notes.Count()}, 1, "text"); },
        [&] { record.Attach(1, std::to_string(record.CVLAttachmentSet()->Count()), aPicture); }};
    for (const bool second_engine : {false, true}) {
        for (const auto& change : changes) {
            EXPECT_EQ(ErrorNumber(change), N::GetUserPermissionToRWError()) << second_engine;
        }
        const NewDatabase engine("shop" + std::to_string(second_engine),
                                 PortablePath(library.folder().path()));
        for (const auto& change : changes) EXPECT_EQ(ErrorNumber(change), 0) << second_engine;
    }
}

TEST_F(SessionTest, AResultGivenToATableGetsRecordsOfItsOwn) {
    auto table = engine_.CreateNewPrimaryTable("T", {"ID", "X"});
    const auto record = engine_.AddRecord("T", 1, {"1", "one"});
    engine_.AddRecord("T", 2, {"2", "two"});
    {
        NewDatabase other("eves", FolderPath(), "eve", "e");
        const auto copy =
            other.CVLTableSet()->Add("Copy", isPrimaryTable, table->Find("one")->CVLRecordSet());
        other.DeleteRecord("Copy", "1");
        EXPECT_EQ(copy->Count(), 0);
    }
    EXPECT_EQ(table->Count(), 2);
    engine_.UpDateRecord("T", record, 1, {"1", "uno"});
    EXPECT_EQ(table->GetRecord("1")->prop(1), "uno");
}

TEST_F(SessionTest, RecordsOfAReplacedSetChangeNothing) {
    auto table = engine_.CreateNewPrimaryTable("T", {"ID", "X"});
    const auto stale = engine_.AddRecord("T", 1, {"1", "one"});
    const auto result = table->Find("one");
    table->CVLRecordSet()->ObjectState(table->CVLRecordSet()->ObjectState());
    for (const auto& body : {std::function<void()>([&] {
                                 engine_.UpDateRecord("T", stale, 1, {"1", "uno"});
                             }),
                             std::function<void()>([&] {
                                 engine_.AddRecord(result, 1, {"9", "nine"});
                             })}) {
        EXPECT_EQ(ErrorNumber(body), CVLErrorNum::GetUserPermissionToRWError());
    }
    EXPECT_EQ(stale->prop(1), "one");
    EXPECT_EQ(table->GetRecord("1")->prop(1), "one");
}

}  // namespace
}  // namespace tavolin
