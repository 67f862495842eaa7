// An event line as text, for tests that change one member at a time.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tallowbrook {

class EventLineText {
 public:
    // Gives the member this value, a JSON text, adding the member where it is missing.
    EventLineText with(std::string_view key, std::string_view value) const {
        EventLineText changed = *this;
        for (auto& member : changed.members_)
            if (member.first == key) {
                member.second = value;
                return changed;
            }
        return changed.adding(key, value);
    }

    // Adds a member, even if one of this name is there already.
    EventLineText adding(std::string_view key, std::string_view value) const {
        EventLineText changed = *this;
        changed.members_.emplace_back(key, value);
        return changed;
    }

    EventLineText without(std::string_view key) const {
        EventLineText changed = *this;
        std::erase_if(changed.members_, [&](const auto& member) { return member.first == key; });
        return changed;
    }

    std::string text() const {
        std::string text = "{";
        for (const auto& [key, value] : members_) {
            if (text.size() > 1) text += ',';
            text.append("\"").append(key).append("\":").append(value);
        }
        return text + "}";
    }

 private:
    // What `minimalEvent` looks like.
    std::vector<std::pair<std::string, std::string>> members_{
        {"adapterVersion", R"("0.1.0")"},
        {"category", R"("turnCompleted")"},
        {"channel", R"("hook")"},
        {"detail", "{}"},
        {"eventType", R"("Stop")"},
        {"id", R"("0A1B2C3D-4E5F-4A6B-8C7D-9E0F1A2B3C4D")"},
        {"observedAt", R"("2026-11-15T03:30:55.123Z")"},
        {"origin", R"("live")"},
        {"provider", R"("claudeCode")"},
        {"schema", "1"},
    };
};

}  // namespace tallowbrook
