// One transaction at a time, of the whole database.
#include <utility>

#include "tavolin/base/text.h"
#include "tavolin/engine/report.h"
#include "tavolin/persist/property_bag.h"

namespace tavolin {

ByteBuffer CVLDBEngine::ObjectState(BagSeal seal) const {
    PropertyBagWriter bag(seal);
    database_->WriteProperties(bag);
    return std::move(bag).Finish();
}

std::unique_ptr<Database> CVLDBEngine::ReadState(ByteBuffer state, BagSeal seal) const {
    auto database = NewDatabase();
    PropertyBagReader bag(std::make_shared<ByteBuffer>(std::move(state)), seal);
    database->ReadProperties(bag);
    return database;
}

bool CVLDBEngine::TransactionBegin() {
    static constexpr const char* kSource = "CVLDBEngine:TransactionBegin Method";
    return Report(kSource, [&] {
        if (transaction_) {
            Raise(CVLErrorNum::GetTransAlreadyStartedError(), kSource,
                  Message("A Transaction Is In Process, Commit To Start A New One!"));
        }
        AskOpen(kSource);
        snapshot_ = ObjectState(BagSeal::kNone);
        transaction_ = true;
        LogTransaction("<Transaction Began>");
        return true;
    });
}

bool CVLDBEngine::TransactionCommit() {
    static constexpr const char* kSource = "CVLDBEngine:TransactionCommit Method";
    return Report(kSource, [&] {
        if (!transaction_) {
            Raise(CVLErrorNum::GetNoTransStartedError(), kSource,
                  Message("Cannot Commit Because No Transaction Have Been Started!"));
        }
        transaction_ = false;
        snapshot_ = {};
        const bool saved = SaveDB();
        LogTransaction("<Transaction Committed>");
        return saved;
    });
}

bool CVLDBEngine::TansactionAbort() {
    static constexpr const char* kSource = "CVLDBEngine:TransactionAbort Method";
    return Report(kSource, [&] {
        if (!transaction_) {
            Raise(CVLErrorNum::GetNoTransStartedError(), kSource,
                  Message("Cannot Abort Because No Transaction Have Been Started!"));
        }
        transaction_ = false;
        auto database = ReadState(std::move(snapshot_), BagSeal::kNone);
        const std::string owner = DBOwner();
        Install(std::move(database));
        Recheck();
        // The registry follows, if the database was handed over inside the transaction.
        if (!EqualFold(owner, DBOwner())) {
            AddEntry(DBOwner(), DBPath(), DBName());
            RemoveEntry(owner, DBPath(), DBName());
        }
        LogTransaction("<Transaction Aborted> ~Rolling Back~");
        return true;
    });
}

}  // namespace tavolin
