// Runs a VBScript in this process and counts what it leaves behind: tavolin_script_host FILE.
// The script has an object `Host`: Engine is an engine, Mark remembers the number of handles, Wrong
// is the script's own count of failures. The engine is made here because script engines may keep
// the class factories that they have made objects with.
#include <activscp.h>
#include <winternl.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "com/platform.h"
#include "com/ref.h"

namespace {

using tavolin::com::Ref;

// The handles of this process, as the system counts them.
DWORD Handles() {
    ULONG size = 1 << 20;
    std::vector<unsigned char> table(size);
    if (::NtQuerySystemInformation(SystemProcessInformation, table.data(), size, &size) != 0) {
        return 0;
    }
    const unsigned char* at = table.data();
    for (;;) {
        const auto* process = reinterpret_cast<const SYSTEM_PROCESS_INFORMATION*>(at);
        if (reinterpret_cast<ULONG_PTR>(process->UniqueProcessId) == ::GetCurrentProcessId()) {
            return process->HandleCount;
        }
        if (process->NextEntryOffset == 0) return 0;
        at += process->NextEntryOffset;
    }
}

class Host : public IDispatch {
  public:
    STDMETHODIMP QueryInterface(REFIID iid, void** result) override {
        *result = iid == IID_IUnknown || iid == IID_IDispatch ? this : nullptr;
        return *result ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) override {
        ids[0] = ::_wcsicmp(names[0], L"Mark") == 0     ? 1
                 : ::_wcsicmp(names[0], L"Engine") == 0 ? 3
                                                        : 2;
        return S_OK;
    }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* arguments, VARIANT* result,
                        EXCEPINFO*, UINT*) override {
        if (id == 1) {
            handles = Handles();
        } else if (id == 3) {
            result->vt = VT_DISPATCH;
            return ::CoCreateInstance(__uuidof(::CVLDBEngine), nullptr, CLSCTX_INPROC_SERVER,
                                      IID_IDispatch, reinterpret_cast<void**>(&result->pdispVal));
        } else if (arguments->cArgs == 1) {
            VARIANT value{};
            ::VariantChangeType(&value, arguments->rgvarg, 0, VT_I4);
            wrong = value.lVal;
        }
        return S_OK;
    }
    DWORD handles = 0;
    LONG wrong = -1;
};

class Site : public IActiveScriptSite {
  public:
    explicit Site(Host& host) : host_(host) {}
    STDMETHODIMP QueryInterface(REFIID iid, void** result) override {
        *result = iid == IID_IUnknown || iid == IID_IActiveScriptSite ? this : nullptr;
        return *result ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP GetLCID(LCID*) override { return E_NOTIMPL; }
    STDMETHODIMP GetItemInfo(LPCOLESTR, DWORD mask, IUnknown** item, ITypeInfo** info) override {
        if (info) *info = nullptr;
        if ((mask & SCRIPTINFO_IUNKNOWN) != 0) *item = &host_;
        return S_OK;
    }
    STDMETHODIMP GetDocVersionString(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP OnScriptTerminate(const VARIANT*, const EXCEPINFO*) override { return S_OK; }
    STDMETHODIMP OnStateChange(SCRIPTSTATE) override { return S_OK; }
    STDMETHODIMP OnScriptError(IActiveScriptError* error) override {
        EXCEPINFO exception{};
        error->GetExceptionInfo(&exception);
        std::printf("%ls: %ls\n", exception.bstrSource, exception.bstrDescription);
        return S_OK;
    }
    STDMETHODIMP OnEnterScript() override { return S_OK; }
    STDMETHODIMP OnLeaveScript() override { return S_OK; }

  private:
    Host& host_;
};

void Run(const std::wstring& text, Site& site) {
    CLSID clsid{};
    ::CLSIDFromProgID(L"VBScript", &clsid);
    Ref<IActiveScript> engine;
    ::CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, __uuidof(IActiveScript), engine.out());
    if (!engine) return;
    auto parser = Ref<IActiveScriptParse>::Of(engine.get());
    parser->InitNew();
    engine->SetScriptSite(&site);
    engine->AddNamedItem(L"Host", SCRIPTITEM_ISVISIBLE);
    engine->SetScriptState(SCRIPTSTATE_STARTED);
    parser->ParseScriptText(text.c_str(), nullptr, nullptr, nullptr, 0, 0, 0, nullptr, nullptr);
    engine->Close();
}

}  // namespace

int main(int, char** arguments) {
    ::CoInitialize(nullptr);
    std::ifstream file(arguments[1]);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    Host host;
    Site site(host);
    const ULONGLONG began = ::GetTickCount64();
    Run(std::wstring(text.begin(), text.end()), site);
    const ULONGLONG took = ::GetTickCount64() - began;
    const HMODULE component = ::GetModuleHandleW(L"Tavolin.dll");
    if (!component) return std::puts("the component was not loaded"), 2;
    const auto can_unload = reinterpret_cast<HRESULT(STDAPICALLTYPE*)()>(
        reinterpret_cast<void*>(::GetProcAddress(component, "DllCanUnloadNow")));
    const bool released = can_unload() == S_OK;
    const DWORD handles = Handles();
    std::printf("%lu ms, %ld wrong, %s, handles %lu then %lu\n", static_cast<unsigned long>(took),
                host.wrong, released ? "all objects released" : "OBJECTS ARE LEFT", host.handles,
                handles);
    const bool steady = handles > 0 && handles <= host.handles;
    return host.wrong == 0 && released && steady ? 0 : 1;
}
