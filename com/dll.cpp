// The component's entry points.
#include <cwchar>

#include "com/class_factory.h"
#include "com/module.h"
#include "com/registration.h"

using namespace tavolin::com;

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** result) {
    return ClassFactory::Get(clsid, iid, result);
}

STDAPI DllCanUnloadNow() { return LivingObjects() == 0 ? S_OK : S_FALSE; }

STDAPI DllRegisterServer() { return Register(HKEY_LOCAL_MACHINE); }

STDAPI DllUnregisterServer() { return Unregister(HKEY_LOCAL_MACHINE); }

// "user" registers for the current user alone, which takes no administrator rights.
STDAPI DllInstall(BOOL install, LPCWSTR command) {
    const bool for_user = command && ::_wcsicmp(command, L"user") == 0;
    if (command && *command && !for_user) return E_INVALIDARG;
    const HKEY root = for_user ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
    return install ? Register(root) : Unregister(root);
}
