#include "host/app/json_parts.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>

#include "kta/dump.h"

namespace maxhost::app {

Json Text(const std::string& text) {
    return kta::ToUtf8(text);
}

bool IsUtf8(const std::string& text) {
    return kta::ToUtf8(text) == text;
}

std::string PercentEscaped(std::string_view name) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string escaped;
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte <= 0x20 || byte >= 0x7f || c == '%') {
            escaped += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
        } else {
            escaped += c;
        }
    }
    return escaped;
}

std::string PercentUnescaped(std::string_view escaped) {
    std::string name;
    for (std::size_t i = 0; i < escaped.size(); ++i) {
        unsigned value = 0;
        const char* const digits = escaped.data() + i + 1;
        if (escaped[i] == '%' && i + 2 < escaped.size() &&
            std::from_chars(digits, digits + 2, value, 16).ptr == digits + 2) {
            name += static_cast<char>(value);
            i += 2;
        } else {
            name += escaped[i];
        }
    }
    return name;
}

namespace {

constexpr const char* kEscaped = "Escaped";

}  // namespace

void AddEscaped(Json& object, const std::string& member, const std::string& name) {
    if (!IsUtf8(name)) {
        object[member + kEscaped] = PercentEscaped(name);
    }
}

void AddEscaped(Json& object, const std::string& member, const std::vector<std::string>& names) {
    if (!std::ranges::all_of(names, IsUtf8)) {
        for (const std::string& name : names) {
            object[member + kEscaped].push_back(PercentEscaped(name));
        }
    }
}

std::string NameIn(const Json& object, const std::string& member) {
    const auto escaped = object.find(member + kEscaped);
    return escaped != object.end() ? PercentUnescaped(escaped->get<std::string>())
                                   : object.at(member).get<std::string>();
}

Json SettingOf(const ExporterOption& option, const ExportOptions& values) {
    if (const auto* const box = std::get_if<0>(&option.setting)) {
        return values.**box != 0;
    }
    if (const auto* const real = std::get_if<1>(&option.setting)) {
        // The shortest decimal number, not the float's own double.
        return Json::parse(Shortest(values.**real));
    }
    return values.*std::get<2>(option.setting);
}

Json OptionsOf(const ExportOptions& values) {
    Json options = Json::object();
    for (const ExporterOption& option : kExporterOptions) {
        if (IsEnabled(option, values)) {
            options[option.name] = SettingOf(option, values);
        }
    }
    return options;
}

Json ChunksOf(const std::vector<kta::ChunkTotal>& chunks) {
    Json json = Json::object();
    for (const kta::ChunkTotal& total : chunks) {
        json[total.type->name] = {{"count", total.count}, {"bytes", total.bytes}};
    }
    return json;
}

Json IssuesOf(const std::vector<kta::Issue>& issues) {
    Json json = Json::array();
    for (const kta::Issue& issue : issues) {
        json.push_back({{"file", kta::KindName(issue.file)},
                        {"severity", kta::SeverityName(issue.severity)},
                        {"code", kta::TypeOf(issue.code).name},
                        {"offset", issue.offset},
                        {"where", issue.where},
                        {"subject", Text(issue.subject)},
                        {"text", Text(issue.text)},
                        {"count", issue.count}});
    }
    return json;
}

std::string Figure(double value) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.6g", value);
    return text.data();
}

}  // namespace maxhost::app
