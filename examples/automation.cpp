// The component from C++, through its interfaces. It needs tavolin_h.h, which the interface
// compiler makes from com/tavolin.idl, and links ole32 and oleaut32.
#include <cstdio>

#include "com/platform.h"
#include "com/ref.h"

using tavolin::com::Ref;

namespace {

// A text for the time of a call.
class Text {
  public:
    explicit Text(const wchar_t* text = L"") : text_(::SysAllocString(text)) {}
    ~Text() { ::SysFreeString(text_); }
    Text(const Text&) = delete;
    operator BSTR() const { return text_; }  // NOLINT: its use

  private:
    BSTR text_;
};

void ShowFailure(HRESULT result) {
    Ref<IErrorInfo> information;
    BSTR description = nullptr;
    if (::GetErrorInfo(0, information.slot()) == S_OK) information->GetDescription(&description);
    std::printf("Refused with 0x%08lX: %ls\n", static_cast<unsigned long>(result),
                description ? description : L"");
    ::SysFreeString(description);
}

// What ends the program; it has been shown.
struct Failure {};

void Check(HRESULT result) {
    if (SUCCEEDED(result)) return;
    ShowFailure(result);
    throw Failure();
}

void Use(::_CVLDBEngine& engine) {
    const Text none;
    VARIANT_BOOL done = VARIANT_FALSE;
    Check(engine.LogOn(Text(L"ann"), Text(L"secret"), &done));
    Ref<::_CVLTableSet> tables;
    Check(engine.CreateNewDB(Text(L"customers"), none, none, nullptr, tables.slot()));
    Ref<::_CVLTable> customers;
    Check(engine.CreateNewPrimaryTable(Text(L"Customers"), Text(L"ID"), Text(L"Name"), none, none,
                                       none, none, none, none, none, none, 99, 99, 99, 99,
                                       customers.slot()));
    VARIANT missing{};
    missing.vt = VT_ERROR;
    missing.scode = DISP_E_PARAMNOTFOUND;
    Ref<::_CVLRecord> record;
    for (const wchar_t* key : {L"7", L"8", L"7"}) {
        record = {};
        const HRESULT added =
            customers->Add(tables.get(), 1, Text(key), Text(L"Ann"), none, none, none, none, none,
                           none, none, none, nullptr, missing, missing, record.slot());
        if (FAILED(added)) ShowFailure(added);  // a key that is taken; the others stay
    }
    ::PrimaryKeyType key{};
    Check(customers->get_PrimaryKey(&key));
    LONG count = 0;
    Check(customers->get_Count(&count));
    std::printf("%ld customers, the key is field %d\n", count, key.Part0);
}

int Run() {
    Ref<::_CVLDBEngine> engine;
    const HRESULT made = ::CoCreateInstance(__uuidof(::CVLDBEngine), nullptr, CLSCTX_INPROC_SERVER,
                                            __uuidof(::_CVLDBEngine), engine.out());
    if (FAILED(made)) {
        std::puts("Class not registered: see docs/automation.md");
        return 1;
    }
    try {
        Use(*engine.get());
        return 0;
    } catch (const Failure&) {
        return 1;
    }
}

}  // namespace

int main() {
    ::CoInitialize(nullptr);
    const int status = Run();
    ::CoUninitialize();
    return status;
}
