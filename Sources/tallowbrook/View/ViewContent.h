// What the live view shows, as of one moment, and what it can do: all that it asks of its owner.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Domain/Instant.h"
#include "Lists/SessionList.h"

namespace tallowbrook::host {

// How the host itself stands.
struct HostState {
    bool leads = true;                       // else another host tells
    Instant since{};                         // it watches
    std::vector<std::string> channels = {};  // by which it tells
    std::string trouble = {};  // what is wrong now, a sentence; empty where nothing is
    bool isOff = false;
    bool isPaused = false;
    std::string quietUntil = {};             // "07:00" in quiet hours, else empty
    std::optional<Instant> nextChange = {};  // when the above says something else by itself
};

struct ViewContent {
    SessionList list;
    HostState host;
};

struct ViewActions {
    // Begins to; the outcome comes back by `LiveView::report`.
    std::function<void(const ListedSession&)> focus;
    // A text of several lines.
    std::function<std::string(const ListedSession&)> explain;
    // Pauses what is told, or ends the pause.
    std::function<void(bool isPaused)> setPaused;
    // Where it is empty, the view offers no such key.
    std::function<void(const ListedSession&)> mute;
};

}  // namespace tallowbrook::host
