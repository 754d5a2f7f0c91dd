// Adding options to the command line: the values that they take, and the headings of the help.
#pragma once

#include <CLI/CLI.hpp>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/app/options.h"
#include "kta/completion.h"

namespace maxhost::app {

// In quotes, as a refusal names what was given.
std::string Quoted(const std::string& text);

// Whole numbers from `least` to `most`.
CLI::Validator Whole(int least, int most, const std::string& expected);

// Finite numbers that `accepts`.
CLI::Validator Real(bool (*accepts)(float), const std::string& expected);

// One group of options at a time, under one heading of the help.
class Group {
  public:
    Group(CLI::App& app, const char* heading) : app_(app), heading_(heading) {}

    template <class Value>
    CLI::Option* Add(const char* names, const char* valueName, Value& value,
                     const std::string& meaning) {
        return app_.add_option(names, value, meaning)
            ->type_name(valueName)
            ->allow_extra_args(false)
            ->group(heading_);
    }
    // A file or directory, whose name is not empty.
    template <class Value>
    CLI::Option* AddPath(const char* names, const char* valueName, Value& value,
                         const std::string& meaning) {
        return Add(names, valueName, value, meaning)
            ->check(CLI::Validator(
                [](std::string& text) {
                    return text.empty() ? std::string("\"\", expected a name") : std::string();
                },
                ""));
    }
    CLI::Option* Add(const char* names, bool& value, const std::string& meaning) {
        return app_.add_flag(names, value, meaning)->group(heading_);
    }
    // --name and --no-name; the last one counts.
    CLI::Option* AddSwitch(const std::string& name, Plinth::UInt8& value,
                           const std::string& meaning);
    CLI::Option* AddAxis(const char* name, std::optional<int>& value, const std::string& meaning);
    CLI::Option* AddMoment(const char* name, std::optional<Moment>& value,
                           const std::string& meaning);
    // One of some words; `expected` names them for a refusal.
    template <class Value>
    CLI::Option* AddChoice(const char* name, const char* valueName, Value& value,
                           const std::map<std::string, Value>& words, const std::string& expected,
                           const std::string& meaning) {
        CLI::Option* const option = app_.add_option_function<std::string>(
            name, [&value, words](const std::string& text) { value = words.at(text); }, meaning);
        std::vector<std::string> offers;
        for (const auto& [word, meant] : words) {
            offers.push_back(word);
        }
        return kta::OfferWords(option, offers)
            ->type_name(valueName)
            ->group(heading_)
            ->check(CLI::Validator(
                [words, expected](std::string& text) {
                    return words.contains(text) ? std::string()
                                                : Quoted(text) + ", expected " + expected;
                },
                ""));
    }

  private:
    CLI::App& app_;
    const char* heading_;
};

}  // namespace maxhost::app
