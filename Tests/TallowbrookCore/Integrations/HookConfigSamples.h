// Configuration files with hooks, written briefly, and an installation of few events.
#pragma once

#include <gtest/gtest.h>

#include <expected>
#include <optional>
#include <string>

#include "Integrations/HookConfigMerger.h"

namespace tallowbrook {

inline const std::string sampleHelper = "/Users/x/bin/tallowbrook-hook";

// Two events, of which the second has no timeout.
inline HookInstallSpec sampleSpec() {
    return {Provider::claudeCode,
            {"Start", "Stop"},
            HookCommand::exec(sampleHelper, {"claude-code"}),
            5,
            {"Stop"}};
}

// Just as it is to be installed, with and without a timeout.
inline const std::string exactHandler =
    R"({"type":"command","command":"/Users/x/bin/tallowbrook-hook","args":["claude-code"],"timeout":5})";
inline const std::string exactHandlerWithoutTimeout =
    R"({"type":"command","command":"/Users/x/bin/tallowbrook-hook","args":["claude-code"]})";
// Ours, of another time.
inline const std::string staleHandler =
    R"({"type":"command","command":"/old/tallowbrook-hook claude-code"})";
inline const std::string foreignHandler = R"({"type":"command","command":"echo done"})";

inline std::string groupOf(const std::string& handlers) {
    return R"({"hooks":[)" + handlers + "]}";
}

inline std::string eventOf(const std::string& name, const std::string& groups) {
    return "\"" + name + "\":[" + groups + "]";
}

inline std::string configOf(const std::string& events) { return R"({"hooks":{)" + events + "}}"; }

inline const std::string installedConfig =
    configOf(eventOf("Start", groupOf(exactHandler)) + "," +
             eventOf("Stop", groupOf(exactHandlerWithoutTimeout)));

// The tree of `text` in the layout of a written file, without a line feed at the end.
inline std::string laidOut(const std::string& text) {
    const auto node = OrderedJSON::parse(text);
    if (!node) ADD_FAILURE() << text << ": " << node.error().description();
    return node ? OrderedJSON::serialize(*node, "  ") : "";
}

// What the user would be told; empty after a success.
template <typename Value>
std::string failureOf(const std::expected<Value, HookConfigError>& result) {
    return result ? "" : result.error().description();
}

inline std::string unexpectedStructure(const std::string& path, const std::string& kind) {
    return "Unexpected structure at " + path + " (expected " + kind +
           "). The merge is ambiguous, so the file was not modified.";
}

}  // namespace tallowbrook
