// What can go wrong while the spool is written or claimed.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <variant>

#include "System/FileError.h"

namespace tallowbrook {

struct SpoolError {
    struct Io {
        // "open-lock", "flock", "rotate", "open-spool", "write"; of the drainer "claim".
        std::string step;
        int errorNumber = 0;
        bool operator==(const Io&) const = default;
    };
    struct LineTooLarge {
        std::size_t byteCount = 0;  // with the line feed
        bool operator==(const LineTooLarge&) const = default;
    };
    struct LockTimeout {
        bool operator==(const LockTimeout&) const = default;
    };
    std::variant<Io, LineTooLarge, LockTimeout> reason;
    bool operator==(const SpoolError&) const = default;

    static SpoolError io(std::string step, int errorNumber) {
        return {Io{std::move(step), errorNumber}};
    }
    static SpoolError lineTooLarge(std::size_t byteCount) { return {LineTooLarge{byteCount}}; }
    static SpoolError lockTimeout() { return {LockTimeout{}}; }

    // "io-flock-errno9", "line-too-large(16385)" or "lock-timeout".
    std::string diagnosticCode() const;
};

// A spool operation also fails when the spool directory cannot be made.
using SpoolAccessError = std::variant<SpoolError, FileError>;

}  // namespace tallowbrook
