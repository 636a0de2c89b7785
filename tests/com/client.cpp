#include "tests/com/client.h"

#include <cstdlib>
#include <filesystem>

namespace tavolin_client {
namespace {

std::wstring Described(const VARIANT& value) {
    if (value.vt == VT_DISPATCH && value.pdispVal) {
        DISPID id = DISPID_VALUE;
        for (const wchar_t* member : {L"UserName", L"Key"}) {
            auto* name = const_cast<LPOLESTR>(member);
            if (SUCCEEDED(value.pdispVal->GetIDsOfNames(IID_NULL, &name, 1, 0, &id))) break;
            id = DISPID_VALUE;
        }
        Any result;
        DISPPARAMS none{};
        value.pdispVal->Invoke(id, IID_NULL, 0, DISPATCH_PROPERTYGET, &none, result.at(), nullptr,
                               nullptr);
        return L"<" + Described(result) + L">";
    }
    if (value.vt == VT_DATE) return value.date > 36526 ? L"date" : L"bad date";
    return value.vt == VT_BSTR ? std::wstring(value.bstrVal, ::SysStringLen(value.bstrVal)) : L"?";
}

}  // namespace

std::wstring ComponentFolder() {
    const wchar_t* folder = ::_wgetenv(L"TAVOLIN_COMPONENT");
    return folder ? folder : std::filesystem::current_path().wstring();
}

std::wstring Failure(HRESULT result) {
    wchar_t number[16];
    ::swprintf(number, 16, L"%08lX", static_cast<unsigned long>(result));
    Ref<IErrorInfo> information;
    if (::GetErrorInfo(0, information.slot()) != S_OK) return number;
    Text source;
    Text description;
    information->GetSource(source.out());
    information->GetDescription(description.out());
    return std::wstring(number) + L" " + source.str() + L": " + description.str();
}

STDMETHODIMP Sink::QueryInterface(REFIID iid, void** result) {
    *result = nullptr;
    if (iid != IID_IUnknown && iid != IID_IDispatch) return E_NOINTERFACE;
    *result = this;
    AddRef();
    return S_OK;
}

STDMETHODIMP Sink::Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* arguments, VARIANT*,
                          EXCEPINFO*, UINT*) {
    std::wstring line = name_ + L" " + std::to_wstring(id) + L"(";
    for (UINT i = arguments->cArgs; i-- > 0;) {
        line += Described(arguments->rgvarg[i]) + (i > 0 ? L"," : L"");
    }
    events_.push_back(line + L")");
    return E_FAIL;  // which nobody may look at
}

void Sink::Listen(IUnknown* source) {
    Ref<IProvideClassInfo2> info = Ref<IProvideClassInfo2>::Of(source);
    GUID events{};
    ASSERT_EQ(info->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &events), S_OK);
    auto container = Ref<IConnectionPointContainer>::Of(source);
    ASSERT_EQ(container->FindConnectionPoint(events, point_.slot()), S_OK);
    ASSERT_EQ(point_->Advise(this, &cookie_), S_OK);
}

void Sink::Leave() {
    EXPECT_EQ(point_->Unadvise(cookie_), S_OK);
    EXPECT_EQ(point_->Unadvise(cookie_), CONNECT_E_NOCONNECTION);
    point_ = {};
}

void Sink::Stop() {
    Leave();
    EXPECT_EQ(references, 1u);
}

void ClientTest::SetUp() {
    ASSERT_EQ(::CoInitialize(nullptr), S_OK);
    const std::wstring manifest = ComponentFolder() + L"\\Tavolin.Automation.manifest";
    ACTCTXW context{};
    context.cbSize = sizeof context;
    context.lpSource = manifest.c_str();
    context_ = ::CreateActCtxW(&context);
    ASSERT_NE(context_, INVALID_HANDLE_VALUE) << ::GetLastError();
    ASSERT_TRUE(::ActivateActCtx(context_, &activation_));
    folder_ = (std::filesystem::temp_directory_path() /
               (L"tavolin_client_" + std::to_wstring(::GetCurrentProcessId())))
                  .wstring();
    std::filesystem::create_directories(folder_);
    ::SetEnvironmentVariableW(L"TAVOLIN_FOLDER", folder_.c_str());
    engine = New<::_CVLDBEngine>(__uuidof(::CVLDBEngine));
    ASSERT_TRUE(engine);
}

void ClientTest::TearDown() {
    customers = {};
    engine = {};
    const HMODULE component = ::GetModuleHandleW(L"Tavolin.dll");
    ASSERT_TRUE(component);
    const auto can_unload = reinterpret_cast<HRESULT(STDAPICALLTYPE*)()>(
        reinterpret_cast<void*>(::GetProcAddress(component, "DllCanUnloadNow")));
    EXPECT_EQ(can_unload(), S_OK) << "objects are left";
    ::DeactivateActCtx(0, activation_);
    ::ReleaseActCtx(context_);
    ::CoUninitialize();
    std::filesystem::remove_all(folder_);
}

void ClientTest::OpenShop() {
    VARIANT_BOOL done = VARIANT_FALSE;
    ASSERT_EQ(engine->LogOn(Text(L"ann"), Text(L"secret"), &done), S_OK);
    ASSERT_EQ(done, VARIANT_TRUE);
    Got<::_CVLTableSet>(engine.get(), &::_CVLDBEngine::CreateNewDB, Text(L"shop"),
                        Text(folder_.c_str()), Text(), nullptr);
    const Text none;
    ASSERT_EQ(engine->CreateNewPrimaryTable(Text(L"Customers"), Text(L"ID"), Text(L"Name"), none,
                                            none, none, none, none, none, none, none, 99, 99, 99,
                                            99, customers.slot()),
              S_OK);
    AddRecord(L"Customers", L"7", L"Ann");
}

Ref<::_CVLRecord> ClientTest::AddRecord(const wchar_t* table, const wchar_t* prop0,
                                        const wchar_t* prop1) {
    Ref<::_CVLRecord> record;
    Any in(table);
    const Any missing;
    const Text none;
    const HRESULT added =
        engine->AddRecord(in.at(), 1, Text(prop0), Text(prop1), none, none, none, none, none, none,
                          none, none, nullptr, missing, missing, record.slot());
    EXPECT_EQ(added, S_OK) << ::testing::PrintToString(Failure(added));
    return record;
}

}  // namespace tavolin_client
