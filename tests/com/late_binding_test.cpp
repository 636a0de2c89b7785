#include <cmath>
#include <filesystem>

#include "tests/com/client.h"

namespace tavolin_client {
namespace {

// Calls a member by name as a script does.
class LateBindingTest : public ClientTest {
  protected:
    void SetUp() override {
        ClientTest::SetUp();
        OpenShop();
        AddRecord(L"Customers", L"8", L"Bob");
    }

    // The result's key or text, or the failure.
    std::wstring Call(IDispatch* object, const wchar_t* member, std::vector<VARIANT> arguments,
                      WORD flags = DISPATCH_METHOD | DISPATCH_PROPERTYGET) {
        auto name = const_cast<LPOLESTR>(member);
        DISPID id = 0;
        EXPECT_EQ(object->GetIDsOfNames(IID_NULL, &name, 1, 0, &id), S_OK);
        std::reverse(arguments.begin(), arguments.end());
        DISPPARAMS parameters{arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
        Any result;
        EXCEPINFO exception{};
        const HRESULT called =
            object->Invoke(id, IID_NULL, 0, flags, &parameters, result.at(), &exception, nullptr);
        wchar_t number[40];
        const HRESULT shown = called == DISP_E_EXCEPTION ? exception.scode : called;
        ::swprintf(number, 40, L"%08lX", static_cast<unsigned long>(shown));
        source_ = exception.bstrSource ? exception.bstrSource : L"";
        ::SysFreeString(exception.bstrSource);
        ::SysFreeString(exception.bstrDescription);
        if (FAILED(called)) return number;
        if (result.at()->vt == VT_DISPATCH) return Call(result.at()->pdispVal, L"Key", {});
        ::VariantChangeType(result.at(), result.at(), VARIANT_ALPHABOOL, VT_BSTR);
        return result.at()->vt == VT_BSTR ? result.at()->bstrVal : L"-";
    }

    // The source of the last failure.
    std::wstring source_;

    static VARIANT Number(VARTYPE type, double value) {
        VARIANT source{};
        source.vt = VT_R8;
        source.dblVal = value;
        VARIANT number{};
        ::VariantChangeType(&number, &source, 0, type);
        return number;
    }
    static VARIANT Reference(VARIANT& to) {
        VARIANT reference{};
        reference.vt = VT_BYREF | VT_VARIANT;
        reference.pvarVal = &to;
        return reference;
    }
};

TEST_F(LateBindingTest, NumbersOfAnyWidth) {
    // A table is named by a Byte, an Integer, a Long or a String alone; a record by any number.
    struct Row {
        VARTYPE type;
        bool names_a_table;
    };
    for (const Row row : {Row{VT_UI1, true},
                          {VT_I2, true},
                          {VT_I4, true},
                          {VT_I1, false},
                          {VT_UI2, false},
                          {VT_UI4, false},
                          {VT_I8, false},
                          {VT_R4, false},
                          {VT_R8, false},
                          {VT_CY, false},
                          {VT_DECIMAL, false}}) {
        VARIANT one = Number(row.type, 1);
        VARIANT two = Number(row.type, 2);
        VARIANT by_reference = Reference(one);
        EXPECT_EQ(Call(customers.get(), L"GetRecord", {Reference(two)}), L"8") << row.type;
        EXPECT_EQ(Call(customers.get(), L"FieldLabel", {Reference(one)}), L"Name") << row.type;
        EXPECT_EQ(Call(engine.get(), L"GetTable", {Reference(by_reference)}),
                  row.names_a_table ? L"Customers" : L"8004EA69")
            << row.type;
    }
    EXPECT_EQ(Call(customers.get(), L"FieldLabel", {Number(VT_I4, 256)}), L"8002000A");
    EXPECT_EQ(Call(customers.get(), L"FieldLabel", {Number(VT_I4, 10)}), L"8004EA70");
    EXPECT_EQ(Call(customers.get(), L"GetRecord", {Number(VT_R8, 1e300)}), L"800A0006");
    LONG typed = 2;
    VARIANT typed_reference{};
    typed_reference.vt = VT_BYREF | VT_I4;
    typed_reference.plVal = &typed;
    EXPECT_EQ(Call(customers.get(), L"GetRecord", {typed_reference}), L"8");
}

TEST_F(LateBindingTest, WhatIsLeftOutIsTheDefault) {
    VARIANT empty{};
    const Any missing;
    const Any text(L"ann");
    const Any number(12);
    for (const VARIANT& out : {empty, static_cast<VARIANT>(missing)}) {
        EXPECT_EQ(Call(engine.get(), L"Find", {text, out, out, out}), L"Customers");
        EXPECT_EQ(Call(engine.get(), L"AddRecord",
                       {Any(L"Customers"), Any(3), number, out, out, out, out, out, out, out, out,
                        out, out, out, out}),
                  L"12");
        Call(customers.get(), L"Remove", {Any(L"12")}, DISPATCH_METHOD);
    }
    EXPECT_EQ(Call(engine.get(), L"Find", {}), L"8002000F");
    EXPECT_EQ(Call(engine.get(), L"Find", {missing}), L"8002000F");
    EXPECT_EQ(Call(engine.get(), L"TransactionBegin", {text}), L"8002000E");
    EXPECT_EQ(Call(engine.get(), L"AddRecord", {Any(L"Customers"), text, text}), L"80020005");
    EXPECT_EQ(Call(engine.get(), L"LogOnAsUser", {Any(customers.get())}), L"80020005");
    EXPECT_EQ(Call(engine.get(), L"LogOnAsUser", {Any(static_cast<IDispatch*>(nullptr))}),
              L"800A005B");
    // Arguments of a property without any are those of its value's default member.
    EXPECT_EQ(Call(engine.get(), L"CVLTableSet", {Any(1)}), L"Customers");
}

TEST_F(LateBindingTest, NeitherNullNorEmptyIsAnObject) {
    VARIANT empty{};
    VARIANT null{};
    null.vt = VT_NULL;
    const Any one(1);
    const Any text(L"9");
    const Any missing;
    for (const VARIANT& none : {empty, null}) {
        EXPECT_EQ(Call(engine.get(), L"LogOnAsUser", {none}), L"80020005");
        EXPECT_EQ(Call(engine.get(), L"CVLTableSet", {none}, DISPATCH_PROPERTYPUTREF), L"80020005");
    }
    EXPECT_EQ(Call(engine.get(), L"Find", {text, missing, null}), L"80020005");
    // An observer has both of its members.
    EXPECT_EQ(Call(engine.get(), L"AddObserver", {Any(customers.get()), text}), L"80020005");
    EXPECT_EQ(Call(engine.get(), L"LoadDB", {text, missing, missing, Any(customers.get())}),
              L"80020005");
}

TEST_F(LateBindingTest, AMethodIsRunByCallsAlone) {
    EXPECT_EQ(Call(engine.get(), L"TransactionBegin", {}, DISPATCH_PROPERTYGET), L"80020003");
    EXPECT_EQ(Call(engine.get(), L"TransactionStarted", {}, DISPATCH_METHOD), L"False");
    EXPECT_EQ(Call(engine.get(), L"TransactionBegin", {}, DISPATCH_METHOD), L"True");
}

TEST_F(LateBindingTest, NullReferencesAreRefused) {
    VARIANT null{};
    const std::initializer_list<int> types = {
        VT_VARIANT, VT_I4, VT_R8, VT_BSTR, VT_DISPATCH, VT_UNKNOWN, VT_ARRAY | VT_UI1};
    for (const int type : types) {
        null.vt = static_cast<VARTYPE>(VT_BYREF | type);
        auto records = Got<::_CVLRecordSet>(customers.get(), &::_CVLTable::get_CVLRecordSet);
        for (const VARIANT& argument : {null, Reference(null)}) {
            Ref<::_CVLRecord> record;
            EXPECT_EQ(customers->GetRecord(argument, record.slot()), E_POINTER) << type;
            EXPECT_EQ(Call(customers.get(), L"GetRecord", {argument}), L"80004003") << type;
            EXPECT_EQ(Call(engine.get(), L"LogOnAsUser", {argument}), L"80004003") << type;
            EXPECT_EQ(Call(records.get(), L"ObjectState", {argument}, DISPATCH_PROPERTYPUT),
                      L"80004003")
                << type;
        }
    }
}

// What cannot be used fails inside the member: under its name, logged, and after its own questions.
TEST_F(LateBindingTest, UnusableArgumentsAreTheMembersErrors) {
    auto tables = Got<::_CVLTableSet>(engine.get(), &::_CVLDBEngine::get_CVLTableSet);
    auto users = Got<::_CVLDBUserSet>(engine.get(), &::_CVLDBEngine::get_CVLDBUserSet);
    auto ann = Got<::_CVLDBUser>(users.get(), &::_CVLDBUserSet::FirstUser);
    auto notes = Got<::_CVLUserNoteSet>(ann.get(), &::_CVLDBUser::get_CVLUserNoteSet);
    auto records = Got<::_CVLRecordSet>(customers.get(), &::_CVLTable::get_CVLRecordSet);
    VARIANT null{};
    null.vt = VT_NULL;
    VARIANT array{};
    array.vt = VT_ARRAY | VT_UI1;
    array.parray = ::SafeArrayCreateVector(VT_UI1, 0, 1);
    VARIANT distant{};
    distant.vt = VT_DATE;
    distant.date = 1e9;
    const VARIANT huge = Number(VT_R8, 1e300);
    const VARIANT table = Any(customers.get());
    const Any one(1);
    const Any name(L"Customers");
    const Any text(L"9");
    const Any missing;
    struct Row {
        IDispatch* object;
        const wchar_t* member;
        std::vector<VARIANT> arguments;
        std::wstring failure;
    };
    const Row rows[] = {
        {records.get(), L"Item", {null}, L"800A000D CVLRecordSet:Record Property Get"},
        {records.get(), L"CanAdd", {null}, L"800A000D CVLRecordSet:CanAdd Method"},
        {records.get(), L"Remove", {huge}, L"800A0006 CVLRecordSet:Remove Method"},
        {customers.get(), L"GetRecord", {table}, L"800A000D CVLTable:GetRecord Method"},
        {customers.get(), L"GetRecord", {array}, L"800A000D CVLTable:GetRecord Method"},
        {tables.get(), L"Item", {null}, L"800A000D CVLTableSet:Item Property Get"},
        {tables.get(), L"Add", {text, Any(256)}, L"800A0006 CVLTableSet:Add Method"},
        {tables.get(), L"Update", {one, Any(-1)}, L"800A0006 CVLTableSet:Update Method"},
        {users.get(), L"Update", {text, null}, L"800A000D CVLDBUserSet:Update Method"},
        {notes.get(), L"Add", {distant, one, text}, L"800A0005 CVLUserNoteSet:Add Method"},
        {engine.get(), L"GetRecord", {name, null}, L"800A000D CVLDBEngine:GetRecord Method"},
        {engine.get(),
         L"GetLinkedTable",
         {name, null},
         L"800A000D CVLDBEngine:GetLinkedTable Method"},
        {engine.get(),
         L"GetLinkedTable",
         {name, huge},
         L"800A0006 CVLDBEngine:GetLinkedTable Method"},
        {engine.get(), L"GetUser", {null}, L"800A000D CVLDBEngine:GetUser Method"},
        {engine.get(), L"GetUser", {table}, L"800A000D CVLDBEngine:GetUser Method"},
        {engine.get(),
         L"AddRecord",
         {name, one, text, missing, missing, missing, missing, missing, missing, missing, missing,
          missing, missing, null},
         L"800A000D CVLDBEngine:AddRecord Method"},
    };
    const auto check = [&](const Row& row) {
        EXPECT_EQ(Call(row.object, row.member, row.arguments) + L" " + source_, row.failure);
    };
    for (const Row& row : rows) check(row);
    ::SafeArrayDestroy(array.parray);
    EXPECT_EQ(Call(records.get(), L"CanAdd", {VARIANT{}}), L"False");
    EXPECT_EQ(Call(customers.get(), L"CanAdd", {VARIANT{}}), L"False");

    LONG count = 0;
    ASSERT_EQ(engine->LogDBActivities(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, VARIANT_TRUE), S_OK);
    const auto log = std::filesystem::path(folder()) / L"shop.log";
    std::filesystem::remove(log);
    check({engine.get(), L"GetUser", {null}, L"800A000D CVLDBEngine:GetUser Method"});
    EXPECT_TRUE(std::filesystem::exists(log));
    ASSERT_EQ(engine->putref_LogedOnUser(nullptr), S_OK);
    check({engine.get(), L"GetUser", {null}, L"8004EC53 CVLDBEngine:GetUser Method"});
    check({records.get(), L"Item", {null}, L"8004ED1C CVLRecordSet:Item Property Get"});
    ASSERT_EQ(customers->get_Count(&count), S_OK);
    EXPECT_EQ(count, 2);
}

TEST_F(LateBindingTest, ArgumentsByName) {
    LPOLESTR names[] = {const_cast<LPOLESTR>(L"Find"), const_cast<LPOLESTR>(L"infldnumber"),
                        const_cast<LPOLESTR>(L"Value")};
    DISPID ids[3];
    ASSERT_EQ(engine->GetIDsOfNames(IID_NULL, names, 3, 0, ids), S_OK);
    const Any field(1);
    const Any wanted(L"bo");
    VARIANT arguments[] = {field, wanted};
    DISPPARAMS parameters{arguments, ids + 1, 2, 2};
    Any found;
    ASSERT_EQ(engine->Invoke(ids[0], IID_NULL, 0, DISPATCH_METHOD, &parameters, found.at(), nullptr,
                             nullptr),
              S_OK);
    EXPECT_EQ(Call(found.at()->pdispVal, L"Count", {}), L"1");

    // Names that no parameter bears, or that bring a value to where there is one.
    const DISPID value = ids[2];
    struct Row {
        std::vector<DISPID> names;
        UINT count;
        HRESULT result;
    };
    for (const Row& row : {Row{{value}, 1, S_OK},
                           {{99}, 1, DISP_E_PARAMNOTFOUND},
                           {{-1}, 1, DISP_E_PARAMNOTFOUND},
                           {{DISPID_PROPERTYPUT}, 1, DISP_E_PARAMNOTFOUND},
                           {{value, value}, 2, DISP_E_PARAMNOTFOUND},
                           {{value}, 2, DISP_E_PARAMNOTFOUND},
                           {{value, ids[1]}, 1, DISP_E_BADPARAMCOUNT}}) {
        VARIANT given[] = {wanted, wanted};
        auto names_given = row.names;
        DISPPARAMS call{given, names_given.data(), row.count,
                        static_cast<UINT>(names_given.size())};
        Any result;
        EXPECT_EQ(engine->Invoke(ids[0], IID_NULL, 0, DISPATCH_METHOD, &call, result.at(), nullptr,
                                 nullptr),
                  row.result);
    }
}

}  // namespace
}  // namespace tavolin_client
