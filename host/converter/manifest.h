// What the stand-in writes in the place of the HDO file: a manifest of the files it was handed.
#pragma once

#include <string>
#include <vector>

namespace halden {

struct ManifestEntry {
    const char* kind = "";  // "actor", "motion"
    std::string path;
};

// Replaces `file` by a manifest of the entries' files, in their order: JSON that tells each one's
// name without its directory, its kind, its size and the SHA-256 (FIPS 180-4) of its bytes. Equal
// names and bytes give equal manifests. Throws std::system_error with the path that cannot be read
// or written in what(); a former `file` stays then.
void WriteManifest(const std::string& file, const std::vector<ManifestEntry>& entries);

}  // namespace halden
