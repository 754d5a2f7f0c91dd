// The log: one message a line, handed to every sink.
#ifndef PLINTH_LOG_H
#define PLINTH_LOG_H

#include "core/array.h"
#include "core/disk_file.h"
#include "core/format.h"
#include "core/instance_manager.h"
#include "core/string.h"
#include "core/types.h"

namespace Plinth {

// A sink.
class LogCallback {
  public:
    LogCallback() {}
    virtual ~LogCallback() {}
    // The finished message, without a line end.
    virtual void Log(const String& message) = 0;

  private:
    LogCallback(const LogCallback&);
    LogCallback& operator=(const LogCallback&);
};

enum LogImportance { kLogNormal = 1, kLogImportant = 2 };

// A text file of log lines.
class LogFile : public DiskFile {
  public:
    // Creates the file, or empties an existing one. Throws std::bad_alloc for a name that has no
    // text or lost it for want of memory; a file that cannot be opened is no obstacle.
    explicit LogFile(const String& name);
    virtual ~LogFile();

    // One line, with "HIGH: " in front when it is important: to the debugger's output in any case,
    // and to the file, flushed, when that is open. `extra` is not written. A message of up to 4095
    // characters needs no memory; without memory for a longer one, throws std::bad_alloc.
    void WriteLine(const String& message, UInt32 importance, const String& extra);

  private:
    void WriteText(const char* line, size_t length);
};

// The sink that writes a log file.
class LogFileCallback : public LogCallback {
  public:
    explicit LogFileCallback(const String& name);
    virtual ~LogFileCallback();
    virtual void Log(const String& message);

    // Owned by the sink.
    LogFile* GetLogFile() { return logFile; }

  private:
    LogFile* logFile;
};

// Owns the sinks and calls them in the order in which they were added.
class LogManager {
  public:
    LogManager();
    ~LogManager();

    // Adds a sink for the file and returns its log file, owned by the sink. A file that cannot be
    // opened is no obstacle: the sink's lines then reach the debugger alone. Without memory for the
    // sink, throws std::bad_alloc and adds none.
    LogFile* AddLogFileCallback(const String& name);
    // Takes the sink over; a null one is not added. Where the list cannot grow, destroys the sink
    // and throws std::bad_alloc.
    void AddLogCallback(LogCallback* callback);
    Int32 CallbackCount() const { return callbacks.Count(); }

    // Closes the gap and destroys the sink, which may log and change the list meanwhile; an index
    // outside the list does nothing.
    void RemoveLogCallback(Int32 index);
    // Destroys all sinks, in order.
    void ClearLogCallbacks();

    void LogMessage(const String& message);

  private:
    LogManager(const LogManager&);
    LogManager& operator=(const LogManager&);

    Array<LogCallback*> callbacks;
};

template <>
InstanceManager<LogManager>*& InstanceManager<LogManager>::HolderPointer();

// The one log manager. The first use may throw, as InstanceManager::Get does.
LogManager& GetLogManager();

// The log call, printf-style, without a line end. A message is cut at 4095 characters. No message
// is lost without notice: without memory for one, throws std::bad_alloc.
void Log(const char* format, ...) PLINTH_PRINTF(1, 2);

}  // namespace Plinth

#endif
