// Parts that the JSON of a run and that of a receipt have in common.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "export/export_options.h"
#include "host/app/exporter_options.h"
#include "kta/check.h"
#include "kta/info.h"

namespace maxhost::app {

using Json = nlohmann::ordered_json;

// Bytes that are no UTF-8 are taken as Latin-1.
Json Text(const std::string& text);

// Whether Text() has the very bytes.
bool IsUtf8(const std::string& text);

// The name of a file that is no UTF-8, so that its bytes can be had again: those that are no ASCII,
// control characters and % as %XX.
std::string PercentEscaped(std::string_view name);
std::string PercentUnescaped(std::string_view escaped);

// Beside the name, or the list of names, that the object has as `member`: the same escaped, as
// `member`Escaped, where one of them is no UTF-8.
void AddEscaped(Json& object, const std::string& member, const std::string& name);
void AddEscaped(Json& object, const std::string& member, const std::vector<std::string>& names);

// The very bytes of that name.
std::string NameIn(const Json& object, const std::string& member);

// The value that the option has.
Json SettingOf(const ExporterOption& option, const ExportOptions& values);

// By the options' names on the command line, those in force alone.
Json OptionsOf(const ExportOptions& values);

// Count and bytes by the kinds' names.
Json ChunksOf(const std::vector<kta::ChunkTotal>& chunks);

// A list: file (actor or motion), severity, code, offset, where, subject, text, count.
Json IssuesOf(const std::vector<kta::Issue>& issues);

// Six significant digits.
std::string Figure(double value);

}  // namespace maxhost::app
