#include "tests/com/client.h"

namespace tavolin_client {
namespace {

using Events = std::vector<std::wstring>;

class EventTest : public ClientTest {
  protected:
    // What was heard since the last call.
    Events Heard() { return std::exchange(heard_, {}); }
    Events heard_;
    VARIANT_BOOL done = VARIANT_FALSE;
};

TEST_F(EventTest, EngineTellsOfEverything) {
    Sink sink(L"e", heard_);
    sink.Listen(engine.get());
    OpenShop();
    EXPECT_EQ(Heard(), (Events{L"e 4(<ann>)", L"e 1(" + folder() + L"\\shop.cdb,date,ann)",
                               L"e 5(Customers)", L"e 9(<7>)"}));
    const Text none;
    Any customer_table(L"Customers");
    Ref<::_CVLTable> names;
    ASSERT_EQ(engine->CreateNewLinkedTable(customer_table.at(), Any(1), Text(L"Name"), none, none,
                                           none, none, none, none, none, none, none, names.slot()),
              S_OK);
    auto record = AddRecord(L"Customers", L"8", L"Bob");
    const Any missing;
    ::_CVLRecord* updated = record.get();
    Ref<::_CVLRecord> result;
    ASSERT_EQ(engine->UpDateRecord(customer_table.at(), &updated, 0, Text(L"8"), Text(L"Rob"), none,
                                   none, none, none, none, none, none, none, nullptr, missing,
                                   missing, result.slot()),
              S_OK);
    ASSERT_EQ(engine->DeleteRecord(customer_table.at(), Any(L"8"), VARIANT_FALSE), S_OK);
    Any linked(names.get());
    ASSERT_EQ(engine->DeleteTable(linked.at(), VARIANT_FALSE, &done), S_OK);
    ASSERT_EQ(engine->DeleteTable(customer_table.at(), VARIANT_TRUE, &done), S_OK);
    EXPECT_EQ(Heard(), (Events{L"e 6(NameCustomers)", L"e 9(<8>)", L"e 10(<8>)", L"e 11(<8>)",
                               L"e 8(NameCustomers)", L"e 7(Customers)"}));
    ASSERT_EQ(engine->SaveDB(none, none, none, VARIANT_FALSE, 0, &done), S_OK);
    const std::wstring path = folder() + L"\\shop.cdb";
    Sink second(L"second", heard_);
    second.Listen(engine.get());
    sink.Stop();
    ASSERT_EQ(engine->DeleteDB(Text(path.c_str()), &done), S_OK);
    ASSERT_EQ(engine->ChangeOwner(Text(L"Public"), none, none, none, Text(L"Current"), &done),
              S_OK);
    EXPECT_EQ(Heard(), (Events{L"second 2(" + path + L",date,ann)", L"second 3(Public)"}));
    second.Stop();
}

TEST_F(EventTest, TablesAndRecords) {
    OpenShop();
    auto tables = Got<::_CVLTableSet>(engine.get(), &::_CVLDBEngine::get_CVLTableSet);
    auto records = Got<::_CVLRecordSet>(customers.get(), &::_CVLTable::get_CVLRecordSet);
    auto ann = Got<::_CVLRecord>(customers.get(), &::_CVLTable::GetRecord, Any(1));
    auto attachments = Got<::_CVLAttachmentSet>(ann.get(), &::_CVLRecord::get_CVLAttachmentSet);
    Sink sinks[] = {{L"tables", heard_}, {L"table", heard_},       {L"records", heard_},
                    {L"record", heard_}, {L"attachments", heard_}, {L"attachment", heard_}};
    sinks[0].Listen(tables.get());
    sinks[1].Listen(customers.get());
    sinks[2].Listen(records.get());
    sinks[3].Listen(ann.get());
    sinks[4].Listen(attachments.get());
    const Text none;
    Ref<::_CVLTable> cities;
    ASSERT_EQ(tables->Add(Text(L"Cities"), ::isPrimaryTable, nullptr, Text(L"City"), none, none,
                          none, none, none, none, none, none, none, cities.slot()),
              S_OK);
    Ref<::_CVLTable> table;
    ASSERT_EQ(tables->Update(Any(L"Cities"), ::isPrimaryTable, nullptr, none, none, none, none,
                             none, none, none, none, none, none, table.slot()),
              S_OK);
    Got<::_CVLTable>(customers.get(), &::_CVLTable::Link, BYTE(1), Any(L"Cities"));
    AddRecord(L"Customers", L"8", L"Ann");
    Ref<::_CVLRecord> result;
    ASSERT_EQ(customers->Update(tables.get(), ann.get(), Text(L"7"), Text(L"Zoe"), none, none, none,
                                none, none, none, none, none, nullptr, result.slot()),
              S_OK);
    ASSERT_EQ(customers->Remove(Any(2)), S_OK);
    ASSERT_EQ(ann->Attach(1, Text(L"a.png"), ::aPicture), S_OK);
    auto attachment =
        Got<::_CVLAttachment>(attachments.get(), &::_CVLAttachmentSet::FirstAttachment);
    sinks[5].Listen(attachment.get());
    ASSERT_EQ(attachment->put_attachmentPathName(Text(L"b.png")), S_OK);
    ASSERT_EQ(attachments->Remove(Any(1)), S_OK);
    ASSERT_EQ(tables->Remove(Any(L"Cities")), S_OK);
    EXPECT_EQ(Heard(), (Events{L"tables 1(<Cities>)", L"tables 2(<Cities>)", L"table 1(Name)",
                               L"records 1(<8>)", L"table 2(<8>)", L"record 1(<7>,prop1,Zoe)",
                               L"records 2(<7>)", L"table 3(<7>)", L"records 3(<8>)",
                               L"table 4(<8>)", L"attachments 1(a.png)", L"attachment 1(b.png)",
                               L"attachments 2(<a.png>)", L"tables 3(<Cities>)"}));
    for (Sink& sink : sinks) sink.Stop();
}

TEST_F(EventTest, UsersNotesAndOwners) {
    OpenShop();
    auto users = Got<::_CVLDBUserSet>(engine.get(), &::_CVLDBEngine::get_CVLDBUserSet);
    auto ann = Got<::_CVLDBUser>(users.get(), &::_CVLDBUserSet::FirstUser);
    auto notes = Got<::_CVLUserNoteSet>(ann.get(), &::_CVLDBUser::get_CVLUserNoteSet);
    auto owners = Got<::_CVLDBOwnerSet>(engine.get(), &::_CVLDBEngine::get_CVLDBOwnerSet);
    auto owner = Got<::_CVLDBOwner>(owners.get(), &::_CVLDBOwnerSet::get_Item, Any(1));
    auto owned = Got<::_CVLOwnerDBSet>(owner.get(), &::_CVLDBOwner::get_CVLOwnerDBSet);
    auto database = Got<::_CVLOwnerDB>(owned.get(), &::_CVLOwnerDBSet::get_Item, Any(1));
    Sink sinks[] = {{L"users", heard_}, {L"user", heard_},  {L"notes", heard_}, {L"owners", heard_},
                    {L"owner", heard_}, {L"owned", heard_}, {L"db", heard_}};
    IUnknown* const sources[] = {users.get(), ann.get(),   notes.get(),   owners.get(),
                                 owner.get(), owned.get(), database.get()};
    for (std::size_t i = 0; i < std::size(sinks); ++i) sinks[i].Listen(sources[i]);
    Ref<::_CVLDBUser> bob;
    ASSERT_EQ(users->Add(Text(L"bob"), Text(L"b"), VARIANT_TRUE, VARIANT_FALSE, VARIANT_FALSE,
                         nullptr, bob.slot()),
              S_OK);
    ASSERT_EQ(users->Remove(Any(L"BOB")), S_OK);
    ASSERT_EQ(ann->ChangePassword(Text(L"other"), Text(L"new"), &done), S_OK);
    ASSERT_EQ(ann->put_UserDisabled(VARIANT_TRUE), S_OK);
    ASSERT_EQ(ann->put_UserDisabled(VARIANT_FALSE), S_OK);
    constexpr DATE kNoon = 46341.5;
    Got<::_CVLUserNote>(notes.get(), &::_CVLUserNoteSet::Add, kNoon, 1L, Text(L"hello"));
    ASSERT_EQ(notes->Remove(Any(L"11/15/2026 12:00:00 PM")), S_OK);
    Got<::_CVLDBOwner>(owners.get(), &::_CVLDBOwnerSet::Add, Text(L"carl"));
    ASSERT_EQ(owners->Remove(Any(L"carl")), S_OK);
    Got<::_CVLOwnerDB>(owned.get(), &::_CVLOwnerDBSet::Add, Text(L"x.cdb"), Text(L"C:\\d"));
    ASSERT_EQ(owned->Remove(Any(L"C:\\d\\x.cdb")), S_OK);
    ASSERT_EQ(database->put_DBDir(Text(L"D:\\")), S_OK);
    ASSERT_EQ(database->put_DBName(Text(L"y.cdb")), S_OK);
    ASSERT_EQ(owner->putref_CVLOwnerDBSet(owned.get()), S_OK);
    EXPECT_EQ(Heard(),
              (Events{L"users 1(<bob>)", L"users 2(<bob>)", L"user 1(ann)", L"user 2(ann)",
                      L"user 3(ann)", L"notes 1(<hello>)", L"notes 2(<hello>)", L"owners 1(<carl>)",
                      L"owners 2(<carl>)", L"owned 1(<C:\\d\\x.cdb>)", L"owned 2(<C:\\d\\x.cdb>)",
                      L"db 1(D:\\)", L"db 2(y.cdb)", L"owner 1()"}));
    for (Sink& sink : sinks) sink.Stop();
}

// A sink that leaves while an event is on its way to it and takes another along.
class Leaver : public Sink {
  public:
    using Sink::Sink;
    STDMETHODIMP Invoke(DISPID id, REFIID iid, LCID lcid, WORD flags, DISPPARAMS* arguments,
                        VARIANT* result, EXCEPINFO* exception, UINT* bad_argument) override {
        Sink::Invoke(id, iid, lcid, flags, arguments, result, exception, bad_argument);
        other->Leave();
        point->Unadvise(cookie);
        return S_OK;
    }
    Sink* other = nullptr;
    Ref<IConnectionPoint> point;
    DWORD cookie = 0;
};

TEST_F(EventTest, SinksMayLeaveWhileAnEventIsOnItsWay) {
    Leaver leaver(L"leaver", heard_);
    Sink other(L"other", heard_);
    auto container = Ref<IConnectionPointContainer>::Of(engine.get());
    ASSERT_EQ(container->FindConnectionPoint(__uuidof(::__CVLDBEngine), leaver.point.slot()), S_OK);
    ASSERT_EQ(leaver.point->Advise(&leaver, &leaver.cookie), S_OK);
    other.Listen(engine.get());
    leaver.other = &other;
    Ref<IEnumConnections> connections;
    ASSERT_EQ(leaver.point->EnumConnections(connections.slot()), S_OK);
    CONNECTDATA found[3];
    ULONG count = 0;
    EXPECT_EQ(connections->Next(3, found, &count), S_FALSE);
    EXPECT_EQ(count, 2u);
    for (ULONG i = 0; i < count; ++i) found[i].pUnk->Release();
    connections = {};
    engine->LogOn(Text(L"ann"), Text(), &done);
    engine->LogOn(Text(L"bob"), Text(), &done);
    EXPECT_EQ(Heard(), (Events{L"leaver 4(<ann>)"}));
    leaver.point = {};
    container = {};
    EXPECT_EQ(leaver.references * 10 + other.references, 11u);
}

TEST_F(EventTest, ASinkGoesWithItsObject) {
    Sink sink(L"e", heard_);
    Ref<::_CVLRecord> record = New<::_CVLRecord>(__uuidof(::CVLRecord));
    auto container = Ref<IConnectionPointContainer>::Of(record.get());
    Ref<IConnectionPoint> point;
    DWORD cookie = 0;
    ASSERT_EQ(container->FindConnectionPoint(__uuidof(::__CVLDBEngine), point.slot()),
              CONNECT_E_NOCONNECTION);
    ASSERT_EQ(container->FindConnectionPoint(__uuidof(::__CVLRecord), point.slot()), S_OK);
    ASSERT_EQ(point->Advise(&sink, &cookie), S_OK);
    EXPECT_EQ(sink.references, 3u) << "the connection and its event";
    point = {};
    container = {};
    record = {};
    EXPECT_EQ(sink.references, 1u);
}

}  // namespace
}  // namespace tavolin_client
