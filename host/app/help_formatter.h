// How --help shows the options.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace maxhost::app {

// One block an option: its names and the name of its value, then its description wrapped to 100
// columns. A switch with a negative form shows as --[no-]name.
class HelpFormatter : public CLI::Formatter {
  public:
    std::string make_group(std::string group, bool isPositional,
                           std::vector<const CLI::Option*> options) const override;
    std::string make_option(const CLI::Option* option, bool isPositional) const override;
};

}  // namespace maxhost::app
