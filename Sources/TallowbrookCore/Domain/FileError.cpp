#include "Domain/FileError.h"

#include <system_error>

namespace tallowbrook {

std::string FileError::description() const {
    return step + " failed: " + std::generic_category().message(errorNumber);
}

}  // namespace tallowbrook
