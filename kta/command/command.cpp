#include "kta/command/command.h"

#include <charconv>
#include <iostream>
#include <system_error>

#include "kta/text.h"
#include "kta/whole_file.h"

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#endif

namespace kta::command {

void Complain(const std::string& text) {
    std::cerr << "kta: " << OneLine(text) << '\n';
}

Status Report(const std::vector<std::string>& faultLines, const Reading& reading) {
    for (const std::string& line : faultLines) {
        Complain(line);
    }
    if (!reading.inputError.empty()) {
        return kUnusable;
    }
    return reading.faults.empty() ? kDone : kFaultyFile;
}

Reading ReadGiven(const std::string& path) {
    if (path != "-") {
        return ReadFile(path);
    }
#ifdef _WIN32
    _setmode(_fileno(stdin), _O_BINARY);
#endif
    return Read(std::cin);
}

std::string NameOf(const std::string& path) {
    return path == "-" ? "standard input" : path;
}

Reading ReadPart(const std::string& path, KTAFileKind kind, Status& status) {
    Reading reading = ReadGiven(path);
    RequireKind(reading, kind);
    const std::string name = NameOf(path);
    status = std::max(status, Report(FirstFaults(FaultLines(name, reading), name), reading));
    if (reading.file && reading.file->kind != kind) {
        status = kUnusable;
        reading.file.reset();
    }
    return reading;
}

TextureFinder FinderFor(const std::string& actor, const std::vector<std::string>& folders) {
    std::optional<std::filesystem::path> beside;
    if (actor != "-") {
        beside = std::filesystem::path(actor).parent_path();
    }
    return {beside, {folders.begin(), folders.end()}};
}

std::string CheckCount(const std::string& text) {
    std::size_t count = 0;
    const char* const end = text.data() + text.size();
    const auto [next, error] = std::from_chars(text.data(), end, count);
    return error == std::errc() && next == end
               ? ""
               : "\"" + text + "\" is no number, expected a whole one of 0 or more";
}

namespace {

std::vector<std::string> ElementsOf(const std::string& text) {
    std::vector<std::string> elements;
    for (std::size_t begin = 0, end = 0; end != text.npos; begin = end + 1) {
        end = text.find(',', begin);
        elements.push_back(text.substr(begin, end - begin));
    }
    return elements;
}

}  // namespace

// CLI11's own lists leave out empty elements.
CLI::Option* AddList(CLI::App& app, const std::string& name, std::vector<std::string>& list,
                     const std::string& description, const CLI::Validator& each) {
    const auto fault = [each](const std::string& text) {
        const std::vector<std::string> elements = ElementsOf(text);
        for (const std::string& element : elements) {
            std::string refusal = element.empty() && elements.size() > 1
                                      ? "\"" + text + "\" has an empty element, expected none"
                                      : each(element);
            if (!refusal.empty()) {
                return refusal;
            }
        }
        return std::string();
    };
    return app
        .add_option_function<std::vector<std::string>>(
            name,
            [&list](const std::vector<std::string>& texts) {
                for (const std::string& text : texts) {
                    const std::vector<std::string> elements = ElementsOf(text);
                    list.insert(list.end(), elements.begin(), elements.end());
                }
            },
            description)
        ->allow_extra_args(false)
        ->check(CLI::Validator(fault, ""));
}

bool WriteOutput(const std::string& path, std::span<const std::uint8_t> bytes) {
    try {
        ReplaceWholeFile(path, [&](std::ostream& out) {
            out.write(reinterpret_cast<const char*>(bytes.data()),
                      static_cast<std::streamsize>(bytes.size()));
        });
        return true;
    } catch (const std::system_error& error) {
        Complain(path + ": cannot be written (" + error.code().message() + ")");
        return false;
    }
}

}  // namespace kta::command
