#include "Setup/Refusal.h"

#include "Integrations/ConfigFileWriter.h"
#include "Setup/JSONAdvice.h"

namespace tallowbrook::host {
namespace {

// What is wrong inside a file is told without its name, and ends with the file being as it was.
Sentence ofText(const HookConfigError& error, const std::filesystem::path& file) {
    Sentence sentence{file.string() + ": " + error.description()};
    if (!std::holds_alternative<HookConfigError::MalformedJSON>(error.reason)) return sentence;
    const auto text = ConfigFileWriter::readText(file);
    const auto advice = text && *text ? adviceOn(**text) : std::nullopt;
    return advice ? sentence.followedBy(*advice) : sentence;
}

}  // namespace

Sentence refusal(const ConfigPlanError& error, const std::filesystem::path& file, bool isOnlyFile) {
    const auto* inside = std::get_if<HookConfigError>(&error.reason);
    const auto* outside = std::get_if<ConfigFileError>(&error.reason);
    const bool saysSo = inside || std::holds_alternative<ConfigFileError::NotUTF8>(outside->reason);
    const auto sentence = inside ? ofText(*inside, file) : Sentence{outside->description()};
    return saysSo && isOnlyFile ? sentence : sentence.followedBy("Nothing was changed.");
}

}  // namespace tallowbrook::host
