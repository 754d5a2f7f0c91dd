#include "kta/check/self_test.h"

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <set>
#include <system_error>

#include "kta/text.h"
#include "kta/whole_file.h"

namespace kta {
namespace {

namespace fs = std::filesystem;

// The codes that checking the two files tells, notes included.
std::set<IssueCode> CodesOf(const Specimen& specimen) {
    Reading actor = Read(specimen.actor);
    RequireKind(actor, kFileKindActor);
    Reading motion = Read(specimen.motion);
    RequireKind(motion, kFileKindMotion);
    CheckOptions options = specimen.options;
    options.notes = true;
    std::set<IssueCode> codes;
    for (const Issue& issue : Check(actor, &motion, options)) {
        codes.insert(issue.code);
    }
    return codes;
}

std::string NamesOf(const std::set<IssueCode>& codes) {
    std::vector<std::string> names;
    for (const IssueCode code : codes) {
        names.emplace_back(TypeOf(code).name);
    }
    return names.empty() ? "nothing" : Joined(names);
}

// Prints a line of what is told of the files; true when that is what must be.
bool Prove(const std::string& name, const Specimen& specimen, const std::set<IssueCode>& expected,
           std::ostream& out) {
    const std::set<IssueCode> found = CodesOf(specimen);
    out << name << ": "
        << (found == expected
                ? "ok"
                : "FAILED: " + NamesOf(found) + " told, expected " + NamesOf(expected))
        << '\n';
    return found == expected;
}

Specimen GoodSpecimen(bool sampled) {
    const DraftExport drafts = GoodExport();
    return {drafts.actor.Bytes(), (sampled ? drafts.sampled : drafts.keyframed).Bytes(), {}};
}

// ---------------------------------------------------------------- files

void Save(const fs::path& path, std::span<const std::uint8_t> bytes) {
    ReplaceWholeFile(path, [&](std::ostream& out) {
        out.write(reinterpret_cast<const char*>(bytes.data()),
                  static_cast<std::streamsize>(bytes.size()));
    });
}

void SaveSpecimen(const std::string& directory, const std::string& name, const Specimen& specimen) {
    if (!directory.empty()) {
        const fs::path base = fs::path(directory) / (name + ".hdo");
        Save(base.string() + "temp1", specimen.actor);
        Save(base.string() + "temp2", specimen.motion);
    }
}

void SaveRules(const std::string& directory) {
    nlohmann::ordered_json rules;
    const auto nameOf = [](IssueCode code) {
        return std::string(TypeOf(code).name).substr(std::string_view("rule-").size());
    };
    for (const auto& [code, most] : BrokenRules().budgets) {
        rules[nameOf(code)] = {{"most", most}};
    }
    for (const auto& [code, pattern] : BrokenRules().patterns) {
        rules[nameOf(code)] = {{"pattern", pattern}};
    }
    const std::string text = rules.dump(1) + "\n";
    Save(fs::path(directory) / "rules.json",
         {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

}  // namespace

bool RunSelfTest(const std::string& directory, std::ostream& out) {
    if (!directory.empty()) {
        fs::create_directories(directory);
        SaveRules(directory);
    }
    SaveSpecimen(directory, "good", GoodSpecimen(true));
    bool good = Prove("good files, sampled", GoodSpecimen(true), {}, out);
    good = Prove("good files, keyframed", GoodSpecimen(false), {}, out) && good;
    std::set<IssueCode> planted;
    for (const Planted& plant : PlantAll()) {
        const std::string name = TypeOf(plant.code).name;
        good = Prove(name, plant.specimen, {plant.code, plant.beside}, out) && good;
        planted.insert(plant.code);
        // What only rules find wrong is a good file otherwise.
        if (plant.specimen.options.rules.budgets.empty() &&
            plant.specimen.options.rules.patterns.empty()) {
            SaveSpecimen(directory, name, plant.specimen);
        }
    }
    for (const IssueType& type : IssueTypes()) {
        if (!planted.contains(type.code)) {
            out << type.name << ": FAILED: never planted\n";
            good = false;
        }
    }
    return good;
}

}  // namespace kta
