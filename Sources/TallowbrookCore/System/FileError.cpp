#include "System/FileError.h"

#include <system_error>

namespace tallowbrook {

std::string FileError::reason() const { return std::generic_category().message(errorNumber); }

std::string FileError::description() const { return step + " failed: " + reason(); }

}  // namespace tallowbrook
