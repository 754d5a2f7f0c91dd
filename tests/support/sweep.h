// How much of a long sweep runs.
#pragma once

#include <cstddef>
#include <cstdlib>

namespace support {

// The distance from a sweep's case to the next that runs: 1 where the variable HDO_THOROUGH of the
// environment asks for all of them.
inline std::size_t SweepStride(std::size_t usual) {
    return std::getenv("HDO_THOROUGH") != nullptr ? 1 : usual;
}

}  // namespace support
