#include "core/log.h"

#include <new>

#include <windows.h>

#include "core/holder.h"

namespace Plinth {

namespace {

enum { kMessageSize = 4096, kLineRoom = 8 };

InstanceManager<LogManager>* logManagerHolder = NULL;

}  // namespace

template <>
InstanceManager<LogManager>*& InstanceManager<LogManager>::HolderPointer() {
    return logManagerHolder;
}

// ---------------------------------------------------------------- the file sink

LogFile::LogFile(const String& name) {
    Open(name, kFileWrite, false);
    if (Name().Data() == NULL) {
        throw std::bad_alloc();
    }
}

LogFile::~LogFile() {
}

// The messages of the log call need no memory here: the last one may say that there is none.
void LogFile::WriteLine(const String& message, UInt32 importance, const String&) {
    const char* const prefix = importance == kLogImportant ? "HIGH: " : "";
    char shortLine[kMessageSize + kLineRoom];
    if (message.Length() < kMessageSize) {
        const int length =
            FormatInto(shortLine, sizeof(shortLine), "%s%s\n", prefix, message.Text());
        WriteText(shortLine, length);
        return;
    }
    String line(prefix);
    line.Append(message);
    line.Append('\n');
    if (line.Data() == NULL) {
        throw std::bad_alloc();
    }
    WriteText(line.Text(), line.Length());
}

void LogFile::WriteText(const char* line, size_t length) {
    OutputDebugStringA(line);
    if (IsOpen()) {
        Write(line, length);
        Flush();
    }
}

LogFileCallback::LogFileCallback(const String& name) : logFile(new LogFile(name)) {
}

LogFileCallback::~LogFileCallback() {
    delete logFile;
}

void LogFileCallback::Log(const String& message) {
    logFile->WriteLine(message, kLogNormal, String());
}

// ---------------------------------------------------------------- the manager

LogManager::LogManager() {
}

LogManager::~LogManager() {
    ClearLogCallbacks();
}

LogFile* LogManager::AddLogFileCallback(const String& name) {
    LogFileCallback* const callback = new LogFileCallback(name);
    AddLogCallback(callback);
    return callback->GetLogFile();
}

void LogManager::AddLogCallback(LogCallback* callback) {
    if (callback == NULL) {
        return;
    }
    ObjectHolder<LogCallback> sink(callback);
    callbacks.Add(callback);
    sink.Release();
}

// A sink may log and change the list while it is destroyed, so it leaves the list before.
void LogManager::RemoveLogCallback(Int32 index) {
    if (index >= 0 && index < callbacks.Count()) {
        LogCallback* const callback = callbacks[index];
        callbacks.Remove(index);
        delete callback;
    }
}

void LogManager::ClearLogCallbacks() {
    while (callbacks.Count() > 0) {
        RemoveLogCallback(0);
    }
    callbacks.Clear();
}

void LogManager::LogMessage(const String& message) {
    for (Int32 i = 0; i < callbacks.Count(); ++i) {
        callbacks[i]->Log(message);
    }
}

LogManager& GetLogManager() {
    return InstanceManager<LogManager>::Get();
}

void Log(const char* format, ...) {
    char message[kMessageSize];
    va_list arguments;
    va_start(arguments, format);
    FormatBounded(message, kMessageSize, format, arguments);
    va_end(arguments);
    const String text(message);
    if (text.Data() == NULL) {
        throw std::bad_alloc();
    }
    GetLogManager().LogMessage(text);
}

}  // namespace Plinth
