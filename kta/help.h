// The programs' help texts, wrapped to the terminal.
#pragma once

#include <CLI/CLI.hpp>
#include <cstddef>

#include <string>
#include <vector>
#include "kta/terminal.h"

namespace kta {

// The variable COLUMNS, else the terminal's width, else 80.
std::size_t TerminalColumns();

// Has the help of the command line, and of the commands that are added to it afterwards, wrapped to
// so many columns, at least 40 and at most 100. Descriptions and footers are paragraphs, which an
// empty line separates; other line ends in them count as blanks. A switch with a negative form
// shows as --[no-]name, and captured defaults stand behind the description.
void WrapHelp(CLI::App& app, std::size_t columns);

// ---------------------------------------------------------------- parts of the help

// "-o, --output", "--[no-]name", a positional's name.
std::string OptionNames(const CLI::Option* option, bool isPositional);

// The name of its value behind a blank; empty where it has none.
std::string ValueName(const CLI::Option* option);

std::string DescriptionWithDefault(const CLI::Option* option);

// What empty lines separate in a description or footer.
std::vector<std::string> ParagraphsOf(const std::string& text);

// The words of a paragraph that begins at column `indent`, in lines that end before `columns`.
std::string Wrapped(const std::string& text, std::size_t indent, std::size_t columns);

// Adds --color MODE: auto, always or never.
CLI::Option* AddColorOption(CLI::App& app, ColorMode& mode);

}  // namespace kta
