#include <atomic>
#include <thread>

#include "tests/com/client.h"

namespace tavolin_client {
namespace {

constexpr HRESULT kMismatch = static_cast<HRESULT>(0x800A000Du);
constexpr HRESULT kNoSuchMember = static_cast<HRESULT>(0x800A01B6u);

// The header offers no literal where a text belongs.
template <class Engine, class = void>
constexpr bool kLeavesTextsOut = false;
template <class Engine>
constexpr bool
    kLeavesTextsOut<Engine, std::void_t<decltype(std::declval<Engine&>().MakeItText(BSTR()))>> =
        true;
static_assert(!kLeavesTextsOut<::_CVLDBEngine>);

class ObjectTest : public ClientTest {
  protected:
    template <class A, class B>
    static bool Same(A* a, B* b) {
        return Ref<IUnknown>::Of(a).get() == Ref<IUnknown>::Of(b).get();
    }
};

TEST_F(ObjectTest, TheSameThingIsTheSameObject) {
    OpenShop();
    Any table(L"Customers");
    auto first = Got<::_CVLRecord>(engine.get(), &::_CVLDBEngine::GetRecord, table.at(), Any(1));
    auto again = Got<::_CVLRecord>(customers.get(), &::_CVLTable::GetRecord, Any(L"7"));
    EXPECT_EQ(first.get(), again.get());
    auto user = Got<::_CVLDBUser>(engine.get(), &::_CVLDBEngine::get_LogedOnUser);
    EXPECT_EQ(user.get(), Got<::_CVLDBUser>(engine.get(), &::_CVLDBEngine::get_LogedOnUser).get());

    // A table that is declared to be a record is the table.
    auto tables = Got<::_CVLTableSet>(engine.get(), &::_CVLDBEngine::get_CVLTableSet);
    auto last = Got<::_CVLRecord>(tables.get(), &::_CVLTableSet::LastTable);
    EXPECT_TRUE(Same(last.get(), customers.get()));
    EXPECT_EQ(Read(last.get(), &::_CVLRecord::get_Key), L"Customers");
    LONG number = 5;
    Text text;
    EXPECT_EQ(Failure(last->get_nKey(&number)),
              L"800A01B6 Tavolin: A table has no such member of a record");
    EXPECT_EQ(number, 0);
    EXPECT_EQ(last->get_nKey(nullptr), E_POINTER);
    EXPECT_EQ(
        Ref<ISupportErrorInfo>::Of(last.get())->InterfaceSupportsErrorInfo(__uuidof(::_CVLRecord)),
        S_OK);
    EXPECT_EQ(last->get_prop(0, text.out()), kNoSuchMember);
    ::_CVLRecord* wrong = last.get();
    Ref<::_CVLRecord> result;
    const Text none;
    const Any missing;
    EXPECT_EQ(engine->UpDateRecord(table.at(), &wrong, 0, none, none, none, none, none, none, none,
                                   none, none, none, nullptr, missing, missing, result.slot()),
              kMismatch);
}

TEST_F(ObjectTest, StructuresArePlain) {
    OpenShop();
    ::PrimaryKeyType key{};
    ASSERT_EQ(customers->SetPrimaryKeyFields(1, 0, 99, 99, &key), S_OK);
    EXPECT_EQ(key.Part0 * 1000 + key.Part1 * 100 + key.Part2, 1000 + 99);
    key.Part0 = 2;
    ASSERT_EQ(customers->put_PrimaryKey(&key), S_OK);
    ASSERT_EQ(customers->get_PrimaryKey(&key), S_OK);
    EXPECT_EQ(key.Part0, 2);
    ASSERT_EQ(engine->LogDBActivities(0, 0, 0, 0, 0, 0, 0, 0, 0, VARIANT_TRUE, 0, 0, 0, 0), S_OK);
    ::LogType log{};
    ASSERT_EQ(engine->get_LoggedActivities(&log), S_OK);
    EXPECT_EQ(log.logTableUnlinking, VARIANT_TRUE);
    EXPECT_EQ(log.logTablesLinking, VARIANT_FALSE);

    auto records = Got<::_CVLRecordSet>(customers.get(), &::_CVLTable::get_CVLRecordSet);
    Ref<::_CVLRecord> record;
    const Text none;
    key = {1, 0, 99, 99};
    ASSERT_EQ(records->Add(&key, 5, Text(L"9"), Text(L"Bob"), none, none, none, none, none, none,
                           none, none, nullptr, Any(L"7"), Any(), record.slot()),
              S_OK);
    EXPECT_EQ(Read(record.get(), &::_CVLRecord::get_Key), L"Bob9");
    EXPECT_EQ(record.get(), Got<::_CVLRecord>(records.get(), &::_CVLRecordSet::FirstRecord).get());

    // Late-bound it is a record variant.
    Any result;
    DISPPARAMS arguments{};
    ASSERT_EQ(customers->Invoke(11, IID_NULL, 0, DISPATCH_PROPERTYGET, &arguments, result.at(),
                                nullptr, nullptr),
              S_OK);
    ASSERT_EQ(result.at()->vt, VT_RECORD);
    EXPECT_EQ(static_cast<::PrimaryKeyType*>(result.at()->pvRecord)->Part0, 2);
}

TEST_F(ObjectTest, ArraysBeginAtZero) {
    OpenShop();
    SAFEARRAY* names = nullptr;
    ASSERT_EQ(engine->GetArrayTables(Text(), &names), S_OK);
    LONG lower = -1;
    LONG upper = -1;
    VARTYPE type = VT_EMPTY;
    ::SafeArrayGetLBound(names, 1, &lower);
    ::SafeArrayGetUBound(names, 1, &upper);
    ::SafeArrayGetVartype(names, &type);
    EXPECT_EQ(lower, 0);
    EXPECT_EQ(upper, 1);
    EXPECT_EQ(type, VT_BSTR);
    const auto* texts = static_cast<BSTR*>(names->pvData);
    EXPECT_STREQ(texts[0], L"Customers");
    EXPECT_EQ(::SysStringLen(texts[1]), 0u);
    ::SafeArrayDestroy(names);

    auto records = Got<::_CVLRecordSet>(customers.get(), &::_CVLTable::get_CVLRecordSet);
    SAFEARRAY* state = nullptr;
    ASSERT_EQ(records->get_ObjectState(&state), S_OK);
    auto copy = New<::_CVLRecordSet>(__uuidof(::CVLRecordSet));
    ASSERT_EQ(copy->put_ObjectState(state), S_OK);
    LONG count = 0;
    ASSERT_EQ(copy->get_Count(&count), S_OK);
    EXPECT_EQ(count, 1);
    static_cast<BYTE*>(state->pvData)[20] ^= 0xFF;
    EXPECT_EQ(Failure(copy->put_ObjectState(state)).substr(0, 46),
              L"800A793D CVLRecordSet:ObjectState Property Let");
    ::SafeArrayDestroy(state);
    SAFEARRAY* words = ::SafeArrayCreateVector(VT_I2, 0, 3);
    EXPECT_EQ(copy->put_ObjectState(words), kMismatch);
    ::SafeArrayDestroy(words);
}

TEST_F(ObjectTest, FailuresCarryNumberSourceAndText) {
    OpenShop();
    Ref<::_CVLTable> table;
    EXPECT_EQ(Failure(engine->GetTable(Any(L"None"), table.slot())),
              L"8004EA69 CVLDBEngine:GetTable Method: Table None Not Found!");
    EXPECT_EQ(Failure(engine->putref_CVLTableSet(nullptr)),
              L"800A005B CVLDBEngine:CVLTableSet Property Set: Cannot use object to handle "
              L"requested operation");
    auto support = Ref<ISupportErrorInfo>::Of(engine.get());
    EXPECT_EQ(support->InterfaceSupportsErrorInfo(__uuidof(::_CVLDBEngine)), S_OK);

    // Nowhere to put a result, or no argument by reference.
    const Text none;
    const Any missing;
    Any in(L"Customers");
    Ref<::_CVLRecord> record;
    Ref<::_CVLRecordSet> records;
    EXPECT_EQ(engine->get_DBName(nullptr), E_POINTER);
    EXPECT_EQ(engine->GetTable(Any(1), nullptr), E_POINTER);
    EXPECT_EQ(engine->GetRecordSet(nullptr, records.slot()), E_POINTER);
    EXPECT_EQ(engine->UpDateRecord(in.at(), nullptr, 0, none, none, none, none, none, none, none,
                                   none, none, none, nullptr, missing, missing, record.slot()),
              E_POINTER);
    EXPECT_EQ(customers->put_PrimaryKey(nullptr), E_POINTER);
    EXPECT_EQ(engine->AddObserver(nullptr, none), E_POINTER);
    EXPECT_EQ(customers->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
}

TEST_F(ObjectTest, TextsComeBackUnitByUnit) {
    OpenShop();
    auto record = Got<::_CVLRecord>(customers.get(), &::_CVLTable::GetRecord, Any(1));
    const std::wstring text = std::wstring(L"\xD800 x \xDC00\xD83D\xDE00") + L'\0' + L"\xFFFFz";
    ASSERT_EQ(record->put_prop(3, Text(::SysAllocStringLen(text.data(), UINT(text.size())), 0)),
              S_OK);
    Text back;
    ASSERT_EQ(record->get_prop(3, back.out()), S_OK);
    EXPECT_EQ(back.str(), text);
}

TEST_F(ObjectTest, Enumerators) {
    OpenShop();
    AddRecord(L"Customers", L"8");
    AddRecord(L"Customers", L"9");
    auto records = Got<::_CVLRecordSet>(customers.get(), &::_CVLTable::get_CVLRecordSet);
    Ref<IUnknown> unknown;
    ASSERT_EQ(records->get_NewEnum(unknown.slot()), S_OK);
    auto walk = Ref<IEnumVARIANT>::Of(unknown.get());
    VARIANT three[3]{};
    ULONG count = 0;
    ASSERT_EQ(walk->Skip(1), S_OK);
    Ref<IEnumVARIANT> copy;
    ASSERT_EQ(walk->Clone(copy.slot()), S_OK);
    EXPECT_EQ(walk->Next(3, three, &count), S_FALSE);
    EXPECT_EQ(count, 2u);
    auto eight = Got<::_CVLRecord>(records.get(), &::_CVLRecordSet::get_Item, Any(L"8"));
    EXPECT_EQ(three[0].pdispVal, eight.get());
    for (ULONG i = 0; i < count; ++i) ::VariantClear(&three[i]);
    ASSERT_EQ(records->Remove(Any(L"8")), S_OK);
    EXPECT_EQ(copy->Skip(2), S_FALSE) << "the removed record is passed over";
    EXPECT_EQ(walk->Reset(), S_OK);
    EXPECT_EQ(walk->Skip(2), S_OK);
}

// An observer that counts, and fails when it is told to.
class Observer : public ::_IUpdater {
  public:
    STDMETHODIMP QueryInterface(REFIID iid, void** result) override {
        *result = nullptr;
        if (iid != IID_IUnknown && iid != IID_IDispatch && iid != __uuidof(::_IUpdater)) {
            return E_NOINTERFACE;
        }
        *result = this;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references; }
    STDMETHODIMP_(ULONG) Release() override { return --references; }
    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                        UINT*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Update() override {
        ++updates;
        if (!fails) return S_OK;
        Ref<ICreateErrorInfo> writer;
        ::CreateErrorInfo(writer.slot());
        writer->SetSource(Text(L"Host"));
        writer->SetDescription(Text(L"No more"));
        ::SetErrorInfo(0, Ref<IErrorInfo>::Of(writer.get()).get());
        return static_cast<HRESULT>(0x80040123u);
    }
    STDMETHODIMP AddAffectedRecords(BSTR, BSTR, BSTR) override { return S_OK; }

    ULONG references = 1;
    int updates = 0;
    bool fails = false;
};

TEST_F(ObjectTest, ObserversAreTold) {
    Observer first;
    Observer second;
    auto own = New<::_IUpdater>(__uuidof(::IUpdater));
    for (::_IUpdater* observer :
         {static_cast<::_IUpdater*>(&first), own.get(), static_cast<::_IUpdater*>(&second)}) {
        ASSERT_EQ(engine->AddObserver(&observer, Text(observer == &first    ? L"ann"
                                                      : observer == &second ? L"bob"
                                                                            : L"own")),
                  S_OK);
    }
    ::_IUpdater* again = &second;
    EXPECT_EQ(engine->AddObserver(&again, Text(L"ANN")), static_cast<HRESULT>(0x800A01C9u));
    LONG count = 0;
    ASSERT_EQ(engine->ObserversCount(&count), S_OK);
    EXPECT_EQ(count, 3);
    ASSERT_EQ(engine->NotifyObservers(), S_OK);
    first.fails = true;
    EXPECT_EQ(Failure(engine->NotifyObservers()), L"80040123 Host: No more");
    EXPECT_EQ(first.updates * 10 + second.updates, 21);
    ASSERT_EQ(engine->RemoveObserver(Text(L"Ann")), S_OK);
    EXPECT_EQ(engine->RemoveObserver(Text(L"ann")), static_cast<HRESULT>(0x800A0005u));
    EXPECT_EQ(first.references, 1u);
    ASSERT_EQ(engine->RemoveObserver(Text(L"bob")), S_OK);
}

TEST_F(ObjectTest, WhatCannotBeCreated) {
    Ref<IUnknown> object;
    EXPECT_EQ(::CoCreateInstance(__uuidof(::CVLTable), nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown,
                                 object.out()),
              REGDB_E_CLASSNOTREG);
    EXPECT_EQ(::CoCreateInstance(__uuidof(::CVLRecord), engine.get(), CLSCTX_INPROC_SERVER,
                                 IID_IUnknown, object.out()),
              CLASS_E_NOAGGREGATION);
    for (const CLSID& clsid : {__uuidof(::CVLRecordSet), __uuidof(::CVLAttachmentSet),
                               __uuidof(::CVLUserNoteSet), __uuidof(::IUpdater)}) {
        EXPECT_TRUE(New<IDispatch>(clsid));
    }
    auto numbers = New<::_CVLErrorNum>(__uuidof(::CVLErrorNum));
    LONG number = 0;
    ASSERT_EQ(numbers->get_GetUserIsNotDBOwnerError(&number), S_OK);
    EXPECT_EQ(number, -2147160800);
}

// What a failed call says is about that call.
TEST_F(ObjectTest, ErrorInformationIsOfTheLastCall) {
    OpenShop();
    Ref<::_CVLTable> table;
    VARIANT_BOOL done = VARIANT_FALSE;
    EXPECT_EQ(engine->GetTable(Any(L"None"), table.slot()), static_cast<HRESULT>(0x8004EA69u));
    EXPECT_EQ(Failure(engine->get_DBName(nullptr)), L"80004003");
    auto* stranger = reinterpret_cast<::_CVLDBUser*>(customers.get());
    EXPECT_EQ(Failure(engine->LogOnAsUser(stranger, &done)), L"800A000D Tavolin: Type mismatch");
}

// A bare pointer in another thread is refused; a marshalled one works, errors included.
TEST_F(ObjectTest, OtherApartments) {
    OpenShop();
    auto container = Ref<IConnectionPointContainer>::Of(engine.get());
    Ref<IConnectionPoint> point;
    Ref<IEnumConnections> connections;
    ASSERT_EQ(container->FindConnectionPoint(__uuidof(::__CVLDBEngine), point.slot()), S_OK);
    ASSERT_EQ(point->EnumConnections(connections.slot()), S_OK);
    auto user = Got<::_CVLDBUser>(engine.get(), &::_CVLDBEngine::get_LogedOnUser);
    std::vector<HRESULT> bare_calls;
    // Everything that a bare pointer of this thread can be asked, or be an argument of, in another.
    const auto call_bare = [&] {
        Observer sink;
        Ref<IConnectionPoint> found;
        Ref<IEnumConnectionPoints> points;
        Ref<IEnumConnections> copy;
        CONNECTDATA data{};
        DWORD cookie = 0;
        IID iid{};
        IConnectionPointContainer* back = nullptr;
        bare_calls = {container->FindConnectionPoint(__uuidof(::__CVLDBEngine), found.slot()),
                      container->EnumConnectionPoints(points.slot()),
                      point->Advise(&sink, &cookie),
                      point->Unadvise(1),
                      point->EnumConnections(copy.slot()),
                      point->GetConnectionInterface(&iid),
                      point->GetConnectionPointContainer(&back),
                      connections->Next(1, &data, nullptr),
                      connections->Clone(copy.slot())};
        ULONG_PTR activation = 0;
        ::ActivateActCtx(context_, &activation);
        {
            auto own = New<::_CVLDBEngine>(__uuidof(::CVLDBEngine));
            VARIANT_BOOL done = VARIANT_FALSE;
            Ref<::_CVLTable> table;
            VARIANT of_another{};
            of_another.vt = VT_DISPATCH;
            of_another.pdispVal = customers.get();
            bare_calls.push_back(own->LogOnAsUser(user.get(), &done));
            bare_calls.push_back(own->GetTable(of_another, table.slot()));
            EXPECT_EQ(sink.references, 1u);
        }
        ::DeactivateActCtx(0, activation);
    };
    Ref<IStream> stream;
    ASSERT_EQ(::CoMarshalInterThreadInterfaceInStream(__uuidof(::_CVLDBEngine), engine.get(),
                                                      stream.slot()),
              S_OK);
    HRESULT bare = S_OK;
    HRESULT marshalled = E_FAIL;
    HRESULT failed = S_OK;
    std::wstring key;
    std::atomic<bool> over = false;
    std::thread other([&] {
        ::CoInitialize(nullptr);
        Text name;
        bare = engine->get_DBName(name.out());
        call_bare();
        Ref<::_CVLDBEngine> proxy;
        marshalled = ::CoGetInterfaceAndReleaseStream(stream.Detach(), __uuidof(::_CVLDBEngine),
                                                      proxy.out());
        if (proxy) {
            Ref<::_CVLTable> table;
            marshalled = proxy->GetTable(Any(1), table.slot());
            Text text;
            if (table) table->get_Key(text.out());
            key = text.str();
            table = {};
            failed = proxy->GetTable(Any(L"None"), table.slot());
            proxy = {};
        }
        ::CoUninitialize();
        over = true;
    });
    while (!over) {
        MSG message;
        while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) ::DispatchMessageW(&message);
        ::Sleep(1);
    }
    other.join();
    EXPECT_EQ(bare, RPC_E_WRONG_THREAD);
    EXPECT_EQ(bare_calls, std::vector<HRESULT>(11, RPC_E_WRONG_THREAD));
    EXPECT_EQ(marshalled, S_OK);
    EXPECT_EQ(key, L"Customers");
    EXPECT_EQ(failed, static_cast<HRESULT>(0x8004EA69u));
}

}  // namespace
}  // namespace tavolin_client
