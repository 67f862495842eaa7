#include "Integrations/ProviderLocations.h"

#include <array>

namespace tallowbrook {
namespace {

constexpr std::array<std::string_view, 1> claudeHomeExecutables{"/.claude/local/claude"};
constexpr std::array<std::string_view, 1> claudeExtensionExecutables{
    "/resources/native-binary/claude"};
constexpr ProviderLocations claude{
    .executableName = "claude",
    .configDirectory = "/.claude",
    .hookConfigFile = "/.claude/settings.json",
    .homeExecutables = claudeHomeExecutables,
    .extensionPrefix = "anthropic.claude-code-",
    .extensionExecutables = claudeExtensionExecutables,
    .absoluteExecutables = {},
};

constexpr std::array<std::string_view, 2> codexExtensionExecutables{"/bin/macos-aarch64/codex",
                                                                    "/bin/macos-x86_64/codex"};
constexpr std::array<std::string_view, 1> codexAbsoluteExecutables{
    "/Applications/Codex.app/Contents/Resources/codex"};
constexpr ProviderLocations codex{
    .executableName = "codex",
    .configDirectory = "/.codex",
    .hookConfigFile = "/.codex/hooks.json",
    .homeExecutables = {},
    .extensionPrefix = "openai.chatgpt-",
    .extensionExecutables = codexExtensionExecutables,
    .absoluteExecutables = codexAbsoluteExecutables,
};

}  // namespace

const ProviderLocations& ProviderLocations::of(Provider provider) {
    return provider == Provider::codexCLI ? codex : claude;
}

}  // namespace tallowbrook
