// An environment variable that a test sets, or unsets, for as long as this value lives.
#pragma once

#include <stdlib.h>

#include <optional>
#include <string>

namespace tallowbrook {

class EnvironmentVariable {
 public:
    // An absent `value` unsets the variable.
    EnvironmentVariable(std::string name, const std::optional<std::string>& value)
        : name_{std::move(name)} {
        if (const char* former = getenv(name_.c_str())) former_ = former;
        set(value);
    }
    ~EnvironmentVariable() { set(former_); }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

 private:
    void set(const std::optional<std::string>& value) {
        if (value)
            setenv(name_.c_str(), value->c_str(), 1);
        else
            unsetenv(name_.c_str());
    }

    std::string name_;
    std::optional<std::string> former_;
};

}  // namespace tallowbrook
