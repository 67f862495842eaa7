// What came of the wish to see a session's window.
#pragma once

#include <string>

#include "Output/Sentence.h"

namespace tallowbrook::host {

struct FocusOutcome {
    enum class Result {
        focused,
        instead,  // something that helps, such as the application without the right tab
        nothing,
    };
    Result result = Result::nothing;
    Sentence sentence;  // what was done, or why not
    bool operator==(const FocusOutcome&) const = default;

    static FocusOutcome focused(std::string sentence) {
        return {Result::focused, Sentence{std::move(sentence)}};
    }
    static FocusOutcome instead(std::string sentence) {
        return {Result::instead, Sentence{std::move(sentence)}};
    }
    static FocusOutcome nothing(std::string sentence) {
        return {Result::nothing, Sentence{std::move(sentence)}};
    }
};

}  // namespace tallowbrook::host
