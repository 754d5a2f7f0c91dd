#include "tests/support/recording_converter.h"

#include <fstream>
#include <sstream>
#include <string>

namespace {

std::string calls;

void Record(const std::string& line) {
    if (!calls.empty()) {
        calls += '\n';
    }
    calls += line;
}

std::string TextOf(const char* text) {
    return text == nullptr ? "null" : std::string("\"").append(text).append("\"");
}

void RecordFile(const char* entry, const char* path) {
    std::ostringstream line;
    line << entry << '(' << TextOf(path) << ')';
    if (path != nullptr) {
        std::ifstream file(path, std::ios::binary | std::ios::ate);
        if (file) {
            line << ' ' << file.tellg() << " bytes";
        } else {
            line << " no file";
        }
    }
    Record(line.str());
}

}  // namespace

void InitSpecialHalden(const char* converterDirectory, const char* exportFileName, bool flag) {
    Record("InitSpecialHalden(" + TextOf(converterDirectory) + ", " + TextOf(exportFileName) +
           ", " + (flag ? "true" : "false") + ")");
}

void WriteKTActorFile(const char* ktaFileName) {
    RecordFile("WriteKTActorFile", ktaFileName);
}

void WriteKTMotionFile(const char* ktaFileName) {
    RecordFile("WriteKTMotionFile", ktaFileName);
}

void EndSpecialHalden() {
    Record("EndSpecialHalden()");
}

const char* RecordedCalls() {
    return calls.c_str();
}

void ResetRecordedCalls() {
    calls.clear();
}
