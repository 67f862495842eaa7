// What a failure of the database means to the user.
#pragma once

#include <SQLiteCpp/Exception.h>

#include <filesystem>
#include <string_view>

#include "Output/Sentence.h"

namespace tallowbrook::host {

// Says what is damaged about the file, and how to go on without it.
Sentence damagedDatabase(const std::filesystem::path& file, std::string_view what);

// A failure of a database that is open, and of one that cannot be opened. `file` is where it lies.
Sentence databaseFailure(const std::filesystem::path& file, const SQLite::Exception& error);
Sentence openingFailure(const std::filesystem::path& file, const SQLite::Exception& error);

}  // namespace tallowbrook::host
