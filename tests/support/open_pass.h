// A pass whose operations can be called one by one, and what they log.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "core/log.h"
#include "core/string.h"
#include "export/export_pass.h"
#include "host/sdk/host.h"
#include "tests/support/temporary_directory.h"

namespace support {

// Writes to a file of its own, which goes with it.
class OpenPass {
  public:
    explicit OpenPass(const ExportOptions& options = DefaultExportOptions()) : options_(options) {
        Reset();
    }
    OpenPass(const OpenPass&) = delete;
    OpenPass& operator=(const OpenPass&) = delete;

    // Begins a new pass with an empty file.
    void Reset() {
        ResetExportState(pass_, maxhost::Host::Instance().GetInterface(), options_);
        EXPECT_TRUE(pass_->writer.Open(path_.c_str()));
    }

    ExportPass& operator*() { return *pass_.Get(); }
    ExportPass* operator->() { return pass_.Get(); }

    // The bytes written so far.
    std::string Written() {
        pass_->writer.Flush();
        return ReadFile(path_);
    }
    long Size() {
        pass_->writer.Flush();
        return static_cast<long>(std::filesystem::file_size(path_));
    }

  private:
    const ExportOptions options_;
    TemporaryDirectory directory_;
    const std::string path_ = directory_.PathOf("file");
    ExportPassHolder pass_;
};

// Takes down what is logged while it lives.
class LoggedLines {
  public:
    LoggedLines() { Plinth::GetLogManager().AddLogCallback(new Sink(lines_)); }
    ~LoggedLines() { Plinth::GetLogManager().ClearLogCallbacks(); }
    LoggedLines(const LoggedLines&) = delete;
    LoggedLines& operator=(const LoggedLines&) = delete;

    const std::vector<std::string>& Lines() const { return lines_; }

  private:
    class Sink : public Plinth::LogCallback {
      public:
        explicit Sink(std::vector<std::string>& lines) : lines_(lines) {}
        void Log(const Plinth::String& message) override {
            // Null where there was no memory for it.
            lines_.push_back(message.Data() != nullptr ? message.Data() : "");
        }

      private:
        std::vector<std::string>& lines_;
    };

    std::vector<std::string> lines_;
};

}  // namespace support
