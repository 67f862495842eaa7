// Puts the helper's hook handlers into the text of an agent's configuration file, and takes them
// out again, touching nothing else.
//
// The file is JSON (RFC 8259) of the shape that HookConfigStructure.h describes. A handler of ours
// is one that runs the helper; it is exact when it runs it just as it would be installed today, and
// stale otherwise. What has an unexpected shape is never guessed at: the operation fails, and the
// caller leaves the file alone.
//
// Pure functions from text to text; safe from any thread.
#pragma once

#include <expected>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "Integrations/HookConfigError.h"
#include "Integrations/HookInstallSpec.h"

namespace tallowbrook {

struct HookInstallState {
    struct NotConfigured {  // no exact handler for any wanted event, and no stale one
        bool operator==(const NotConfigured&) const = default;
    };
    struct Installed {  // every event has an exact handler, and none is stale
        bool operator==(const Installed&) const = default;
    };
    struct Partial {
        std::vector<std::string> missingEvents;  // in the order in which they are wanted
        bool operator==(const Partial&) const = default;
    };
    struct NeedsRepair {
        int staleHandlers = 0;
        bool operator==(const NeedsRepair&) const = default;
    };
    std::variant<NotConfigured, Installed, Partial, NeedsRepair> state;
    bool operator==(const HookInstallState&) const = default;

    static HookInstallState notConfigured() { return {NotConfigured{}}; }
    static HookInstallState installed() { return {Installed{}}; }
    static HookInstallState partial(std::vector<std::string> missingEvents);
    static HookInstallState needsRepair(int staleHandlers) { return {NeedsRepair{staleHandlers}}; }
};

// In all of these an absent text stands for a file that does not exist.
namespace HookConfigMerger {

[[nodiscard]] std::expected<HookInstallState, HookConfigError> inspect(
    const std::optional<std::string>& text, const HookInstallSpec& spec);

// The text with an exact handler for every wanted event and without stale ones. Where nothing
// had to change, the text that came in, byte for byte.
[[nodiscard]] std::expected<std::string, HookConfigError> install(
    const std::optional<std::string>& text, const HookInstallSpec& spec);

// The text without any handler of ours, and without the groups, event lists and "hooks" object that
// this leaves empty. Where there is none, the text that came in.
[[nodiscard]] std::expected<std::optional<std::string>, HookConfigError> uninstall(
    const std::optional<std::string>& text, const HookInstallSpec& spec);

}  // namespace HookConfigMerger
}  // namespace tallowbrook
