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

// Parts of the state become the database's own. After a failure it can be read once more.
std::unique_ptr<Database> CVLDBEngine::ReadState(std::shared_ptr<ByteBuffer> state,
                                                 BagSeal seal) const {
    auto database = NewDatabase();
    PropertyBagReader bag(std::move(state), seal);
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
        snapshot_ = std::make_shared<ByteBuffer>(ObjectState(BagSeal::kNone));
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
        snapshot_.reset();
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
        auto database = ReadState(snapshot_, BagSeal::kNone);
        const PermitStateEnum permission = PermissionIn(database);
        // The registry follows, if the database was handed over inside the transaction.
        const std::string& owner = database->session->owner;
        if (!EqualFold(owner, DBOwner())) MoveEntry(DBOwner(), owner, *database);
        Install(std::move(database));
        authority_->permission = permission;
        transaction_ = false;
        snapshot_.reset();
        LogTransaction("<Transaction Aborted> ~Rolling Back~");
        return true;
    });
}

}  // namespace tavolin
