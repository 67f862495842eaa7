// The help of the command line, at most 80 columns wide.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace tallowbrook::host {

class HelpText : public CLI::Formatter {
 public:
    std::string make_help(const CLI::App* command, std::string name,
                          CLI::AppFormatMode mode) const override;
};

}  // namespace tallowbrook::host
