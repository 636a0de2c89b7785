// One open database: everything that a database file holds.
#pragma once

#include <memory>
#include <string>

#include "tavolin/base/date.h"
#include "tavolin/model/session.h"
#include "tavolin/model/table_set.h"
#include "tavolin/model/types.h"
#include "tavolin/model/user_set.h"

namespace tavolin {

class PropertyBagReader;
class PropertyBagWriter;

// The owner's name is in the session, where a renamed user finds it.
struct Database {
    std::shared_ptr<Session> session;
    std::string name;
    std::string path;
    std::string password;
    Date created;
    LogType switches;
    // Nothing until a database is open.
    std::shared_ptr<CVLTableSet> tables;
    std::shared_ptr<CVLDBUserSet> users;

    void WriteProperties(PropertyBagWriter& bag) const;
    // Raises DamagedState for the state of something else.
    void ReadProperties(PropertyBagReader& bag);
};

}  // namespace tavolin
