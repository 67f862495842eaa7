// A channel of which a test decides what becomes of each delivery.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Channels/Channel.h"

namespace tallowbrook::host {

struct FakeChannel {
    // What it answers at once to each delivery, from the first on; then it hands over.
    enum class Answer { handsOver, fails, refuses, later };

    struct State {
        std::vector<std::string> heard;  // titles
        std::vector<std::int64_t> begun;
        std::vector<Answer> answers;
        std::vector<ChannelEvent> events;
        bool isUsable = true;
        bool toldTwiceHarms = false;
        bool withdraws = false;
        bool isRung = false;
        int prepared = 0;                    // how often
        std::vector<std::string> withdrawn;  // sessions
        std::function<void(std::int64_t number)> onBegin = [](std::int64_t) {};
    };
    std::shared_ptr<State> state = std::make_shared<State>();

    Channel channel(const std::string& name = "lines") const {
        // The channel may outlive this value.
        const auto kept = state;
        return {
            .name = name,
            .isRung = kept->isRung,
            .state =
                [kept] {
                    return ChannelState{.isUsable = kept->isUsable,
                                        .reason = "as the test wants it",
                                        .replaces = kept->isRung,
                                        .withdraws = kept->isRung || kept->withdraws,
                                        .toldTwiceHarms = kept->toldTwiceHarms};
                },
            .prepare = [kept] { ++kept->prepared; },
            .begin = [kept](const Delivery& delivery) { begin(*kept, delivery); },
            .withdraw = [kept](const std::string& session) { kept->withdrawn.push_back(session); },
            .takeEvents = [kept] { return std::exchange(kept->events, {}); },
        };
    }

    std::vector<std::string> takeHeard() const { return std::exchange(state->heard, {}); }

 private:
    static void begin(State& state, const Delivery& delivery) {
        auto answer = Answer::handsOver;
        if (!state.answers.empty()) {
            answer = state.answers.front();
            state.answers.erase(state.answers.begin());
        }
        state.begun.push_back(delivery.number);
        state.onBegin(delivery.number);
        if (answer == Answer::later) return;
        using Kind = ChannelEvent::Kind;
        const auto kind = answer == Answer::fails     ? Kind::failed
                          : answer == Answer::refuses ? Kind::refused
                                                      : Kind::handedOver;
        if (kind == Kind::handedOver) state.heard.push_back(delivery.content.title);
        state.events.push_back({kind, delivery.number});
    }
};

}  // namespace tallowbrook::host
