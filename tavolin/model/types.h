// The published enumerations and structures that several classes share.
#pragma once

#include <array>
#include <cstdint>

namespace tavolin {

// The right that a member needs, and the permission state that an engine is in.
enum PermitStateEnum : std::int32_t {
    ToRead = 1,
    ToReadWrite = 2,
    ToLoad = 3,
    ToSave = 4,
    ToDelete = 5,
    Ownership = 6,
    Undefined = 9,
};

enum TableEnum : std::int32_t { isPrimaryTable = 1, isLinkedTable = 2 };

enum attachmentEnum : std::int32_t { Miscellenius = 1, aPicture = 2, aSound = 3, aMovie = 4 };

inline constexpr int kFieldCount = 10;
inline constexpr std::uint8_t kNoField = 99;

// The fields whose values make up a record's key, in this order; 99 is an unused part.
struct PrimaryKeyType {
    std::uint8_t Part0 = kNoField;
    std::uint8_t Part1 = kNoField;
    std::uint8_t Part2 = kNoField;
    std::uint8_t Part3 = kNoField;

    std::array<std::uint8_t, 4> Parts() const { return {Part0, Part1, Part2, Part3}; }
    bool Holds(int field) const {
        return Part0 == field || Part1 == field || Part2 == field || Part3 == field;
    }
    friend bool operator==(const PrimaryKeyType&, const PrimaryKeyType&) = default;
};

// Which activities the log file receives. `logTableUnlinking` is kept and reported, but unlinking
// is logged under `logTablesLinking`.
struct LogType {
    bool logErrors = false;
    bool logDBLogOn = false;
    bool logOwnerChange = false;
    bool logUserCreation = false;
    bool logTableCreation = false;
    bool logLkTableCreation = false;
    bool logTableDeletion = false;
    bool logLkTableDeletion = false;
    bool logTablesLinking = false;
    bool logTableUnlinking = false;
    bool logRecordAdd = false;
    bool logRecordUpDate = false;
    bool logRecordDelete = false;
    bool logTransactions = false;

    friend bool operator==(const LogType&, const LogType&) = default;
};

}  // namespace tavolin
