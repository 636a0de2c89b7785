// What a call through an interface costs more than the call of the library behind it:
// tavolin_overhead. The library is linked in a second time to compare with. The exit status is 1
// when it is more than a microsecond, which a busy machine makes it.
#include <chrono>
#include <cstdio>
#include <string>

#include "com/platform.h"
#include "com/ref.h"
#include "tavolin/engine/engine.h"

namespace {

using tavolin::com::Ref;

constexpr int kCalls = 200000;

// Nanoseconds for each of many calls, the best of five rounds.
template <class Body>
double Cost(Body&& body) {
    double best = 1e9;
    for (int round = 0; round < 5; ++round) {
        const auto began = std::chrono::steady_clock::now();
        for (int i = 0; i < kCalls; ++i) body();
        const std::chrono::duration<double, std::nano> took =
            std::chrono::steady_clock::now() - began;
        best = std::min(best, took.count() / kCalls);
    }
    return best;
}

bool Compare(const char* name, double direct, double through_interface) {
    const double more = through_interface - direct;
    std::printf("%-24s %7.0f ns, through the interface %7.0f ns, more: %6.0f ns\n", name, direct,
                through_interface, more);
    return more < 1000;
}

}  // namespace

int main() {
    ::CoInitialize(nullptr);
    Ref<::_CVLDBEngine> engine;
    if (FAILED(::CoCreateInstance(__uuidof(::CVLDBEngine), nullptr, CLSCTX_INPROC_SERVER,
                                  __uuidof(::_CVLDBEngine), engine.out()))) {
        return std::puts("the component is not registered"), 2;
    }
    const BSTR name = ::SysAllocString(L"Numbers");
    const BSTR value = ::SysAllocString(L"some text of a usual length");
    VARIANT_BOOL done = VARIANT_FALSE;
    Ref<::_CVLTableSet> tables;
    Ref<::_CVLTable> table;
    engine->LogOn(name, name, &done);
    engine->CreateNewDB(name, nullptr, nullptr, nullptr, tables.slot());
    engine->CreateNewPrimaryTable(name, name, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                  nullptr, nullptr, nullptr, 99, 99, 99, 99, table.slot());
    VARIANT key{};
    key.vt = VT_BSTR;
    key.bstrVal = value;
    VARIANT missing{};
    missing.vt = VT_ERROR;
    missing.scode = DISP_E_PARAMNOTFOUND;
    Ref<::_CVLRecord> record;
    table->Add(tables.get(), 1, value, value, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
               nullptr, nullptr, nullptr, missing, missing, record.slot());

    const std::string text = "some text of a usual length";
    tavolin::CVLDBEngine direct;
    direct.LogOn("Numbers", "Numbers");
    direct.CreateNewDB("Numbers", "");
    const auto direct_table = direct.CreateNewPrimaryTable("Numbers", {"Numbers"});
    auto direct_record = direct_table->Add(direct.CVLTableSet(), 1, {text, text});

    volatile std::size_t sum = 0;
    bool good = Compare("Count", Cost([&] { sum = sum + direct_table->Count(); }), Cost([&] {
                            LONG count = 0;
                            table->get_Count(&count);
                            sum = sum + count;
                        }));
    good &=
        Compare("prop, read", Cost([&] { sum = sum + direct_record->prop(1).size(); }), Cost([&] {
                    BSTR got = nullptr;
                    record->get_prop(1, &got);
                    sum = sum + ::SysStringLen(got);
                    ::SysFreeString(got);
                }));
    good &= Compare("prop, written", Cost([&] { direct_record->prop(1, text); }),
                    Cost([&] { record->put_prop(1, value); }));
    const auto get_directly = [&] { sum = sum + direct_table->GetRecord(text)->nKey(); };
    const auto get = [&] {
        Ref<::_CVLRecord> got;
        table->GetRecord(key, got.slot());
        LONG number = 0;
        got->get_nKey(&number);
        sum = sum + number;
    };
    good &= Compare("GetRecord, held", Cost(get_directly), Cost(get));
    record = {};
    direct_record.reset();
    good &= Compare("GetRecord, made anew", Cost(get_directly), Cost(get));
    return good ? 0 : 1;
}
