// What became of a spool operation as one word, for tests to compare, across processes too.
#pragma once

#include <expected>
#include <string>
#include <variant>

#include "EventBridge/SpoolError.h"

namespace tallowbrook {

inline std::string codeOf(const SpoolError& error) { return error.diagnosticCode(); }
inline std::string codeOf(const FileError& error) {
    return error.step + "-errno" + std::to_string(error.errorNumber);
}
inline std::string codeOf(const SpoolAccessError& error) {
    return std::visit([](const auto& reason) { return codeOf(reason); }, error);
}

// "ok", "lock-timeout", "io-rotate-errno13", or "mkdir-errno13" where a directory is missing.
template <typename Value, typename Error>
std::string outcomeOf(const std::expected<Value, Error>& result) {
    return result ? "ok" : codeOf(result.error());
}

inline std::string ioCode(const std::string& step, int errorNumber) {
    return "io-" + step + "-errno" + std::to_string(errorNumber);
}

}  // namespace tallowbrook
