#include "kta/dump.h"

#include <iostream>
#include <memory>

#include "kta/command/command.h"
#include "kta/completion.h"
#include "kta/text.h"

namespace kta::command {
namespace {

struct DumpOptions {
    std::string file;
    DumpSelection selection;
    bool json = false;
};

Status Dump(const DumpOptions& options) {
    const Reading reading = ReadGiven(options.file);
    const std::string name = NameOf(options.file);
    if (options.json) {
        DumpJson(name, reading, std::cout, options.selection);
    } else if (reading.file) {
        DumpText(name, *reading.file, std::cout, options.selection);
    }
    return Report(FaultLines(name, reading), reading);
}

}  // namespace

Command AddDump(CLI::App& kta) {
    const auto options = std::make_shared<DumpOptions>();
    CLI::App* dump =
        kta.add_subcommand("dump", "Every chunk and field of a file, in file order, with offsets");
    dump->add_option("FILE", options->file, "Actor or motion file; - is standard input")
        ->required();
    CLI::Option* json = dump->add_flag("--json", options->json, "As one JSON object");
    std::vector<std::string> kinds;
    for (const KTAChunkType& type : kChunkTypes) {
        kinds.push_back(type.name);
    }
    CLI::Option* const chunks = AddList(
        *dump, "--chunks", options->selection.chunks,
        "The chunks of these kinds alone, as in node,mesh: " + Joined(kinds), CLI::IsMember(kinds));
    OfferWords(chunks, kinds)->type_name("KIND,...")->option_text("KIND,...");
    dump->add_flag_callback(
        "--no-arrays", [options] { options->selection.withArrays = false; },
        "Without vertices, faces, keys, weights and points");
    dump->add_flag_callback(
            "--no-offsets", [options] { options->selection.withOffsets = false; },
            "Without offsets and the file's name, so that two dumps can be compared line by line")
        ->excludes(json);
    return {dump, [options] { return Dump(*options); }};
}

}  // namespace kta::command
