// What a failure of the database means to the user.
#pragma once

#include <SQLiteCpp/Exception.h>

#include <filesystem>
#include <string_view>

#include "Output/Sentence.h"

namespace tallowbrook::host {

// Whether what lies in the file is no sound database, so that no later try will fare better.
bool isDamage(const SQLite::Exception& error);

// Says what is damaged about the file, and how to go on without it.
Sentence damagedDatabase(const std::filesystem::path& file, std::string_view what);

// A failure of a database that is open. `file` is where it lies.
Sentence databaseFailure(const std::filesystem::path& file, const SQLite::Exception& error);

}  // namespace tallowbrook::host
