// The rules of a studio as a JSON file; docs/kta.md describes it.
#pragma once

#include <stdexcept>
#include <string>

#include "kta/check.h"

namespace kta {

// Why a rules file is refused, in one line without the file's name.
class RulesError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Adds the rules and severities of the file's text to the options. Throws RulesError where the text
// is no JSON or holds what no rule has; the options are then as they were.
void AddRules(const std::string& text, CheckOptions& options);

}  // namespace kta
