// Who acts, and what he may do: the one thing that entities and sets know of the engine.
//
// An engine owns one Authority and writes it. Every tree of objects that it opens reads the
// Authority through a Session of the tree's own, so that a tree which another has replaced can be
// retired: its objects stay readable field by field and answer every change as for a user without
// rights. Objects that a host makes itself read it through the engine's free session, until they
// are given to a tree and take that tree's. Where there was no engine when they were made, they
// have a floating session, which asks for the newest engine each time.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "tavolin/model/types.h"

namespace tavolin {

class CVLDBUser;
class CVLTableSet;

struct Authority {
    std::shared_ptr<CVLDBUser> user;
    PermitStateEnum permission = Undefined;
    std::shared_ptr<CVLTableSet> tables;
    // Asked rather than kept here, because every save and every setting of a name changes them.
    // Nothing when there is no engine.
    std::function<std::string()> database_name;
    std::function<bool(std::string_view path)> is_own_file;
};

class Session {
  public:
    // Without an authority, a floating session.
    explicit Session(std::shared_ptr<Authority> authority) : authority_(std::move(authority)) {}

    // The session of the newest living engine of this thread, or that of the engine whose member is
    // running. Without any engine, a floating one.
    static std::shared_ptr<Session> Current();

    PermitStateEnum Permission() const { return retired_ ? Undefined : authority().permission; }
    // The logged-on user's name as it stands in messages: "---" when nobody is logged on.
    std::string UserName() const;
    // The open database's tables, or nothing.
    std::shared_ptr<CVLTableSet> Tables() const { return retired_ ? nullptr : authority().tables; }

    // The open database's name, or empty.
    std::string DatabaseName() const {
        return retired_ || !authority().database_name ? std::string() : authority().database_name();
    }
    // Whether a path leads to the open database's file or its log, which nothing else may be
    // written onto. A tree that was replaced has to spare the new one's files as well.
    bool IsOwnFile(std::string_view path) const {
        return authority().is_own_file && authority().is_own_file(path);
    }

    bool IsOwner() const { return Has<Ownership>(); }
    bool MayDelete() const { return Has<Ownership, ToDelete>(); }
    bool MayWrite() const { return Has<Ownership, ToDelete, ToReadWrite>(); }
    bool MayRead() const { return Has<Ownership, ToDelete, ToReadWrite, ToRead>(); }

    void Retire() { retired_ = true; }
    // One of the same engine for what is not in use any more.
    std::shared_ptr<Session> Retired() const {
        auto session = std::make_shared<Session>(authority_);
        session->Retire();
        return session;
    }

    // The name of the open database's owner.
    std::string owner;

  private:
    template <PermitStateEnum... permissions>
    bool Has() const {
        const PermitStateEnum permission = Permission();
        return ((permission == permissions) || ...);
    }

    const Authority& authority() const { return authority_ ? *authority_ : Newest(); }
    // That of the session that is current now; without any engine, one in which nobody is logged
    // on.
    static const Authority& Newest();

    std::shared_ptr<Authority> authority_;
    bool retired_ = false;
};

// Makes a session the current one until the end of the scope.
class SessionScope {
  public:
    explicit SessionScope(const std::shared_ptr<Session>& session);
    ~SessionScope();
    SessionScope(const SessionScope&) = delete;
    SessionScope& operator=(const SessionScope&) = delete;

    // Nothing when it is gone.
    std::shared_ptr<Session> session() const { return session_.lock(); }

  private:
    std::weak_ptr<Session> session_;
    const SessionScope* outer_;
};

// An engine's own place among the engines of its thread: from registration to the engine's end.
void RegisterSession(const std::shared_ptr<Session>& session);
void UnregisterSession(const std::shared_ptr<Session>& session);

}  // namespace tavolin
