#include "System/DirectoryListing.h"

#include <system_error>

namespace tallowbrook {

std::expected<std::vector<std::filesystem::path>, FileError> entriesOf(
    const std::filesystem::path& directory) {
    std::vector<std::filesystem::path> entries;
    std::error_code error;
    std::filesystem::directory_iterator listing{directory, error};
    for (; !error && listing != std::filesystem::directory_iterator{}; listing.increment(error))
        entries.push_back(listing->path());
    // A list cut short must not pass for the whole: what is missing in it would never be looked at.
    if (error) return std::unexpected(FileError{"list", error.value()});
    return entries;
}

std::vector<std::filesystem::path> listDirectory(const std::filesystem::path& directory) {
    return entriesOf(directory).value_or(std::vector<std::filesystem::path>{});
}

}  // namespace tallowbrook
