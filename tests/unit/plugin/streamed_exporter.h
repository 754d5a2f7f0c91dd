// An exporter whose operations can be called one by one.
#pragma once

#include <gtest/gtest.h>
#include <max.h>
#include <maxapi.h>

#include <cstdio>
#include <string>

#include "host/sdk/host.h"
#include "plugin/kta_exp.h"

namespace support {

// Writes to a file of its own.
class StreamedExporter : public KTAExp {
  public:
    StreamedExporter() {
        file = std::tmpfile();
        ip = maxhost::Host::Instance().GetInterface();
    }
    ~StreamedExporter() { std::fclose(file); }

    long Size() { return std::ftell(file); }
    std::string WrittenAt(long offset, std::size_t size) {
        std::string bytes(size, '?');
        EXPECT_EQ(std::fseek(file, offset, SEEK_SET), 0);
        EXPECT_EQ(std::fread(bytes.data(), 1, size, file), size);
        std::fseek(file, 0, SEEK_END);  // what is written next wants a seek between
        return bytes;
    }
};

}  // namespace support
