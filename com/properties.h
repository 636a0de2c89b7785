// Properties that only pass a value on, written once for each kind.
//
//     TAVOLIN_TEXT(DBName)
#pragma once

#include "com/arguments.h"
#include "com/object.h"
#include "com/text.h"

#define TAVOLIN_READ(Type, Name)                              \
    STDMETHODIMP get_##Name(Type* result) override {          \
        return Return(result, [&] { return core().Name(); }); \
    }
#define TAVOLIN_WRITE(Type, Name, convert)                 \
    STDMETHODIMP put_##Name(Type value) override {         \
        return Call([&] { core().Name(convert(value)); }); \
    }
#define TAVOLIN_TEXT(Name)   \
    TAVOLIN_READ(BSTR, Name) \
    TAVOLIN_WRITE(BSTR, Name, Utf8)
#define TAVOLIN_LONG(Name)   \
    TAVOLIN_READ(LONG, Name) \
    TAVOLIN_WRITE(LONG, Name, )
#define TAVOLIN_FLAG(Name)           \
    TAVOLIN_READ(VARIANT_BOOL, Name) \
    TAVOLIN_WRITE(VARIANT_BOOL, Name, IsTrue)
#define TAVOLIN_OBJECT(Class)                                              \
    TAVOLIN_READ(::_##Class*, Class)                                       \
    STDMETHODIMP putref_##Class(::_##Class* value) override {              \
        return Call([&] { core().Class(CoreOf<tavolin::Class>(value)); }); \
    }
#define TAVOLIN_PRINT_TO_FILE                                                     \
    STDMETHODIMP PrintToFile(BSTR Text, BSTR FilePathName) override {             \
        return Call([&] { core().PrintToFile(Utf8(Text), Utf8(FilePathName)); }); \
    }
#define TAVOLIN_EVENTS(...)                                    \
    Connections Connect(const Ref<IDispatch>& sink) override { \
        return ConnectInOrder(sink, __VA_ARGS__);              \
    }

namespace tavolin::com {

inline bool IsTrue(VARIANT_BOOL flag) { return flag != VARIANT_FALSE; }

}  // namespace tavolin::com
