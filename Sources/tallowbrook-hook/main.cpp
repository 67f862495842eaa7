// tallowbrook-hook: records one agent event and is gone. It prints nothing, always exits with 0 and
// never lives longer than its watchdog, so that no agent ever notices it.
#include <unistd.h>

#include <optional>
#include <string>

#include "Arguments.h"
#include "Diagnostics/DiagnosticLog.h"
#include "EventBridge/SpoolSignal.h"
#include "EventBridge/SpoolWriter.h"
#include "EventIngestion/PayloadNormalizer.h"
#include "QuietExit.h"
#include "StandardInput.h"
#include "Terminal/TerminalLocation.h"

namespace tallowbrook::hook {
namespace {

constexpr std::int64_t maxLogBytes = 262144;

void printVersion() {
    const std::string line =
        "tallowbrook-hook " + std::string{PayloadNormalizer::adapterVersion} + "\n";
    [[maybe_unused]] const ssize_t written = write(STDOUT_FILENO, line.data(), line.size());
}

// What the log is told of a failure: fixed words and codes, nothing that the agent sent.
using Failure = std::optional<std::string>;

Failure recordPayload(std::string_view payload, PayloadSource source, const Arguments& arguments,
                      const TallowbrookPaths& paths) {
    const auto id = randomUUID();
    if (!id) return "unexpected error: FileError";
    auto event =
        PayloadNormalizer::normalize(payload, source, arguments.origin, currentInstant(), *id);
    if (!event) return "normalization failed: " + event.error().diagnosticCode();

    // Looked up only for an event that will be stored: it reads the process table.
    event->tty = ControllingTerminal::deviceName(getpid(), ControllingTerminal::maxAncestors);
    const auto appended = SpoolWriter{paths, SpoolConfiguration{}}.append(*event);
    if (appended) return std::nullopt;
    if (const auto* error = std::get_if<SpoolError>(&appended.error()))
        return "spool write failed: " + error->diagnosticCode();
    return "unexpected error: FileError";
}

Failure recordEvent(PayloadSource source, const Arguments& arguments,
                    const TallowbrookPaths& paths) {
    if (source == PayloadSource::codexNotify) {
        // The agent appends the payload to whatever words its user has configured.
        const bool hasPayload = arguments.positional.size() >= 2;
        return recordPayload(hasPayload ? arguments.positional.back() : "", source, arguments,
                             paths);
    }
    const auto input = readStandardInput(PayloadNormalizer::maxPayloadBytes);
    if (input.truncated)
        return "payload exceeded " + std::to_string(PayloadNormalizer::maxPayloadBytes) +
               " bytes; event dropped";
    return recordPayload(input.bytes(), source, arguments, paths);
}

Failure run(const Arguments& arguments, const TallowbrookPaths& paths) {
    const auto source = arguments.positional.empty()
                            ? std::nullopt
                            : fromRawValue<PayloadSource>(arguments.positional.front());
    if (!source) return "helper: unknown or missing source argument; event ignored";

    const std::string prefix = "helper: " + std::string{rawValue(*source)} + " ";
    try {
        if (const Failure failure = recordEvent(*source, arguments, paths))
            return prefix + *failure;
        return std::nullopt;
    } catch (...) {
        return prefix + "unexpected error: " + currentExceptionTypeName();
    }
}

}  // namespace
}  // namespace tallowbrook::hook

int main(int argc, char** argv) {
    using namespace tallowbrook;
    using namespace tallowbrook::hook;
    // First of all: whatever hangs later, the agent gets its hook back.
    armWatchdog(watchdogSeconds);
    ignoreDeadlySignals();
    const Arguments arguments = parseArguments(argc, argv);
    if (arguments.wantsVersion) {
        printVersion();
        return 0;
    }
    const TallowbrookPaths paths{arguments.home ? *arguments.home
                                                : TallowbrookPaths::defaultHome()};
    const DiagnosticLog log{paths.helperLogFile(), maxLogBytes};
    if (const auto failure = run(arguments, paths))
        log.append(*failure, currentInstant());
    else
        SpoolSignal::post();
    return 0;
}
