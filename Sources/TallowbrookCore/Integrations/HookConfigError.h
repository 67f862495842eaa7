// Why the configuration file of an agent was left alone.
#pragma once

#include <string>
#include <variant>

#include "Integrations/OrderedJSON.h"

namespace tallowbrook {

struct HookConfigError {
    struct MalformedJSON {
        JSONParseError error;
        bool operator==(const MalformedJSON&) const = default;
    };
    struct UnexpectedStructure {
        std::string path;          // such as "hooks.Stop[].hooks"
        std::string expectedKind;  // "object" or "array"
        bool operator==(const UnexpectedStructure&) const = default;
    };
    struct RootNotObject {
        bool operator==(const RootNotObject&) const = default;
    };
    std::variant<MalformedJSON, UnexpectedStructure, RootNotObject> reason;
    bool operator==(const HookConfigError&) const = default;

    static HookConfigError malformedJSON(JSONParseError error);
    static HookConfigError unexpectedStructure(std::string path, std::string expectedKind);
    static HookConfigError rootNotObject() { return {RootNotObject{}}; }

    // A sentence or two for the user.
    std::string description() const;
};

}  // namespace tallowbrook
