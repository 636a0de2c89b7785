#include <cmath>

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
        ::SysFreeString(exception.bstrSource);
        ::SysFreeString(exception.bstrDescription);
        if (FAILED(called)) return number;
        if (result.at()->vt == VT_DISPATCH) return Call(result.at()->pdispVal, L"Key", {});
        ::VariantChangeType(result.at(), result.at(), VARIANT_ALPHABOOL, VT_BSTR);
        return result.at()->vt == VT_BSTR ? result.at()->bstrVal : L"-";
    }

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
}

}  // namespace
}  // namespace tavolin_client
