// The programs' help texts, wrapped to the terminal.
#pragma once

#include <CLI/CLI.hpp>
#include <cstddef>

namespace kta {

// The variable COLUMNS, else the terminal's width, else 80.
std::size_t TerminalColumns();

// Has the help of the command line, and of the commands that are added to it afterwards, wrapped to
// so many columns, at least 40 and at most 100. Descriptions and footers are paragraphs, which an
// empty line separates; other line ends in them count as blanks. A switch with a negative form
// shows as --[no-]name, and captured defaults stand behind the description.
void WrapHelp(CLI::App& app, std::size_t columns);

}  // namespace kta
