// The rules of a studio as a JSON file.
#include <nlohmann/json.hpp>

#include "kta/check.h"
#include "kta/text.h"

namespace kta {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kSeverities = "severities";
constexpr std::string_view kPrefix = "rule-";
constexpr auto kReplaceBytes = Json::error_handler_t::replace;

bool IsBudget(IssueCode code) {
    return code >= IssueCode::ruleNodes && code <= IssueCode::ruleFileSize;
}

// The names that a rules file may use: those of the codes without "rule-".
std::string RuleNames() {
    std::vector<std::string> names;
    for (const IssueType& type : IssueTypes()) {
        if (std::string_view(type.name).starts_with(kPrefix)) {
            names.emplace_back(std::string_view(type.name).substr(kPrefix.size()));
        }
    }
    return Joined(names);
}

// "PLACE is VALUE, expected EXPECTED".
[[noreturn]] void Refuse(const std::string& place, const Json& value, const std::string& expected) {
    const std::string shown = value.is_object()  ? "an object"
                              : value.is_array() ? "a list"
                                                 : value.dump(-1, ' ', false, kReplaceBytes);
    throw RulesError(place + " is " + shown + ", expected " + expected);
}

std::optional<Severity> ReadSeverity(const std::string& place, const Json& value) {
    if (value == "ignore") {
        return std::nullopt;
    }
    const auto severity = value.is_string() ? SeverityOf(value.get<std::string>()) : std::nullopt;
    if (!severity) {
        Refuse(place, value, "note, warning, error or ignore");
    }
    return severity;
}

void ReadBudget(const std::string& place, const Json& value, IssueCode code,
                CheckOptions& options) {
    if (!value.is_number_unsigned()) {
        Refuse(place, value, "a whole number, 0 or more");
    }
    options.rules.budgets[code] = value.get<std::uint64_t>();
}

void ReadPattern(const std::string& place, const Json& value, IssueCode code,
                 CheckOptions& options) {
    if (!value.is_string() || !IsPattern(value.get<std::string>())) {
        Refuse(place, value,
               "a regular expression of at most 1000 bytes without look-aheads and "
               "back-references");
    }
    options.rules.patterns[code] = value.get<std::string>();
}

void ReadRule(const std::string& name, const Json& rule, CheckOptions& options) {
    const IssueType* type = FindIssueType(std::string(kPrefix) + name);
    if (type == nullptr) {
        throw RulesError("\"" + name + "\" is no rule, expected one of " + RuleNames() + ", " +
                         kSeverities);
    }
    const std::string key = IsBudget(type->code) ? "most" : "pattern";
    if (!rule.is_object() || !rule.contains(key)) {
        Refuse(name, rule, "an object with \"" + key + "\"");
    }
    for (const auto& member : rule.items()) {
        const std::string place = name + "." + member.key();
        if (member.key() == "severity") {
            options.severities[type->code] = ReadSeverity(place, member.value());
        } else if (member.key() != key) {
            throw RulesError(place + " is no member of a rule, expected " + key + " or severity");
        } else if (IsBudget(type->code)) {
            ReadBudget(place, member.value(), type->code, options);
        } else {
            ReadPattern(place, member.value(), type->code, options);
        }
    }
}

void ReadSeverities(const Json& severities, CheckOptions& options) {
    if (!severities.is_object()) {
        Refuse(kSeverities, severities, "an object");
    }
    for (const auto& member : severities.items()) {
        const std::string place = std::string(kSeverities) + "." + member.key();
        const IssueType* type = FindIssueType(member.key());
        if (type == nullptr) {
            throw RulesError(place + " is no code, see kta check --list-codes");
        }
        options.severities[type->code] = ReadSeverity(place, member.value());
    }
}

}  // namespace

void AddRules(const std::string& text, CheckOptions& options) {
    Json rules;
    try {
        rules = Json::parse(text);
    } catch (const Json::parse_error& error) {
        throw RulesError("is no JSON, wrong at byte " + std::to_string(error.byte));
    }
    if (!rules.is_object()) {
        Refuse("the file", rules, "an object");
    }
    CheckOptions added = options;
    for (const auto& member : rules.items()) {
        if (member.key() == kSeverities) {
            ReadSeverities(member.value(), added);
        } else {
            ReadRule(member.key(), member.value(), added);
        }
    }
    options = std::move(added);
}

}  // namespace kta
