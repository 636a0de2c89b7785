// Lets a host end what may take long before it is done, with everything as it was:
//
//     std::atomic<bool> cancelled = false;  // set by a signal's handler or another thread
//     {
//         const tavolin::StopScope scope([&] { return cancelled.load(); });
//         engine.LinkTables("Orders", "Buyer", "Buyers");  // raises 32755 "Operation Cancelled"
//     }
//
// Those that ask, on the thread that made the scope, are CVLTable::Link, CVLDBEngine::LinkTables
// and CVLDBEngine::CreateNewLinkedTable, before each record of the table whose field is linked, and
// CVLDBEngine::DeleteRecord, before each record that it deletes and more often.
#pragma once

#include <functional>

#include "tavolin/base/export.h"

namespace tavolin {

// While one lives, `stop` is asked whether to stop; the innermost one's, where there are several.
// An empty one keeps those further out from being asked. The first yes raises 32755 where it was
// asked. Records that had been added or deleted by then are taken back, and when all are, the
// events of the record sets, of the tables and of the engine say so; the log keeps both lines. A
// handler who throws then keeps those behind him from being told, and nothing else. After its yes
// `stop` is not asked again. It is asked often, so it should be quick, and must not throw or call
// the library.
class TAVOLIN_API StopScope {
  public:
    explicit StopScope(std::function<bool()> stop);
    ~StopScope();
    StopScope(const StopScope&) = delete;
    StopScope& operator=(const StopScope&) = delete;

  private:
    friend class StopCheck;

    std::function<bool()> stop_;
    StopScope* outer_;
};

// What the library asks with, in its loops.
class StopCheck {
  public:
    StopCheck();
    // Whether there is anybody to ask.
    bool active() const { return scope_ != nullptr; }
    void Ask() const {
        if (scope_ != nullptr) AskScope();
    }

  private:
    void AskScope() const;

    StopScope* scope_;
};

}  // namespace tavolin
