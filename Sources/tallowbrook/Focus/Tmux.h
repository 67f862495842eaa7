// The panes of a running tmux, asked with its own command.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Focus/FocusOperations.h"
#include "Focus/FocusOutcome.h"

namespace tallowbrook::host {

class Tmux {
 public:
    struct Pane {
        std::string id;       // such as %3
        std::string session;  // such as $1
        std::string devicePath;
        std::string directory;  // of the program in it
        bool operator==(const Pane&) const = default;
    };

    // Absent when there is no tmux on PATH. The operations must outlive the value.
    static std::optional<Tmux> find(const FocusOperations& operations);

    // Each pane once, with the first of the sessions that have it. Empty also when no server runs.
    std::vector<Pane> panes() const;

    // Makes the pane the one its session shows.
    bool select(const Pane& pane) const;

    // The device path of a client that shows the pane's session; else of any other client, which
    // is made to show it; absent when no client is attached.
    std::optional<std::string> show(const Pane& pane) const;

    // The outcome for a pane that no client shows.
    static FocusOutcome selectedUnseen(const Pane& pane);

 private:
    Tmux(std::string program, const FocusOperations& operations)
        : program_{std::move(program)}, operations_{&operations} {}

    // The lines that the command prints; absent when it fails.
    std::optional<std::vector<std::string>> run(std::vector<std::string> arguments) const;

    std::string program_;
    const FocusOperations* operations_;
};

}  // namespace tallowbrook::host
