#include "tavolin/errors/trap.h"

#include <cerrno>
#include <filesystem>
#include <new>
#include <stdexcept>
#include <system_error>

namespace tavolin {
namespace {

RunTimeError NumberOf(std::error_condition condition) {
    struct Row {
        std::errc code;
        RunTimeError number;
    };
    static constexpr Row kRows[] = {
        {std::errc::no_such_file_or_directory, kFileNotFound},
        {std::errc::not_a_directory, kPathNotFound},
        {std::errc::file_exists, kFileExists},
        {std::errc::no_space_on_device, kDiskFull},
        {std::errc::file_too_large, kDiskFull},
        {std::errc::permission_denied, kPathAccessError},
        {std::errc::operation_not_permitted, kPathAccessError},
        {std::errc::is_a_directory, kPathAccessError},
        {std::errc::directory_not_empty, kPathAccessError},
        {std::errc::read_only_file_system, kPermissionDenied},
        {std::errc::device_or_resource_busy, kPermissionDenied},
        {std::errc::text_file_busy, kPermissionDenied},
        {std::errc::filename_too_long, kBadFileName},
        {std::errc::invalid_argument, kBadFileName},
        {std::errc::not_enough_memory, kOutOfMemory},
    };
    for (const Row& row : kRows) {
        if (condition == row.code) return row.number;
    }
    return kDeviceError;
}

// A file that is missing because its folder is: the path is what cannot be found.
bool FolderIsMissing(const std::filesystem::path& path) {
    try {
        std::error_code ignored;
        const auto folder = path.parent_path();
        return !folder.empty() && !std::filesystem::is_directory(folder, ignored);
    } catch (const std::bad_alloc&) {
        return false;
    }
}

}  // namespace

Error CurrentError() noexcept {
    try {
        throw;
    } catch (const Error& error) {
        // No member refuses with a number that has a text of its own: a handler threw it.
        if (!error.fresh() || GetErrorMessage(error.number()) == "ERROR") return error;
        return Error(error.number(), error.detail().empty() ? error.description() : error.detail());
    } catch (const DamagedState& damage) {
        return Error(damage.newer() ? kIncompatibleFormat : kCorruptedFile, damage.what());
    } catch (const std::bad_alloc&) {
        return Error(kOutOfMemory);
    } catch (const std::length_error&) {
        return Error(kOutOfMemory);
    } catch (const std::filesystem::filesystem_error& error) {
        const auto number = NumberOf(error.code().default_error_condition());
        const bool folder_missing = number == kFileNotFound && FolderIsMissing(error.path1());
        return Error(folder_missing ? kPathNotFound : number, error.what());
    } catch (const std::system_error& error) {
        return Error(NumberOf(error.code().default_error_condition()), error.what());
    } catch (const std::exception& error) {
        return Error(kInternalError, error.what());
    } catch (...) {
        return Error(kInternalError, "an exception of a type that the library does not know");
    }
}

void RaiseError(Error error, std::string_view context) {
    if (error.fresh()) {
        error.Settle();
    } else {
        error.Resource(context);
    }
    throw error;
}

void Raise(std::int32_t number, std::string_view source, const Message& message) {
    throw Error(number, source, message);
}

}  // namespace tavolin
