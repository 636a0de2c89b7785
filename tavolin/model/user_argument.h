// A user as members take him: by his name, or himself.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "tavolin/errors/trap.h"

namespace tavolin {

class CVLDBUser;

// A view: a name must outlive the call.
class UserArgument {
  public:
    UserArgument(std::string_view name) : name_(name) {}    // NOLINT: conversions are its purpose
    UserArgument(const std::string& name) : name_(name) {}  // NOLINT
    UserArgument(const char* name) : name_(name) {}         // NOLINT
    UserArgument(std::shared_ptr<CVLDBUser> user)           // NOLINT
        : is_user_(true), user_(std::move(user)) {}
    // What can be neither: the member raises `error` where it would look for the user.
    static UserArgument Unusable(RunTimeError error) {
        UserArgument user{std::string_view()};
        user.error_ = error;
        return user;
    }

    bool is_user() const {
        if (error_ != 0) RaiseRunTime(static_cast<RunTimeError>(error_));
        return is_user_;
    }
    std::string_view name() const { return name_; }
    const std::shared_ptr<CVLDBUser>& user() const { return user_; }

  private:
    std::string_view name_;
    bool is_user_ = false;
    std::int32_t error_ = 0;
    std::shared_ptr<CVLDBUser> user_;
};

}  // namespace tavolin
