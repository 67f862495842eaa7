#include "Watch/SpoolState.h"

#include <system_error>

namespace tallowbrook::host {
namespace {

std::filesystem::file_time_type changedAt(const std::filesystem::path& file) {
    std::error_code error;
    const auto time = std::filesystem::last_write_time(file, error);
    return error ? std::filesystem::file_time_type{} : time;
}

}  // namespace

SpoolState SpoolState::of(const TallowbrookPaths& paths) {
    // The directory changes with every rename in it, and the active file with every append.
    std::error_code error;
    const auto bytes = std::filesystem::file_size(paths.activeSpoolFile(), error);
    return {changedAt(paths.spoolDirectory()), changedAt(paths.activeSpoolFile()),
            error ? 0 : bytes};
}

}  // namespace tallowbrook::host
