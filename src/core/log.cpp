#include "core/log.h"

#include <new>

#include <windows.h>

namespace Plinth {

namespace {

enum { kMessageSize = 4096 };

InstanceManager<LogManager>* logManagerHolder = NULL;

}  // namespace

template <>
InstanceManager<LogManager>*& InstanceManager<LogManager>::HolderPointer() {
    return logManagerHolder;
}

// ---------------------------------------------------------------- the file sink

LogFile::LogFile(const String& name) {
    Open(name, kFileWrite, false);
}

LogFile::~LogFile() {
}

void LogFile::WriteLine(const String& message, UInt32 importance, const String&) {
    String line;
    line.Format("%s", importance == kLogImportant ? "HIGH: " : "");
    line.Append(message);
    line.Append('\n');
    if (line.Data() == NULL) {
        return;
    }
    OutputDebugStringA(line.Text());
    if (IsOpen()) {
        Write(line.Text(), line.Length());
        Flush();
    }
}

LogFileCallback::LogFileCallback(const String& name) : logFile(new (std::nothrow) LogFile(name)) {
}

LogFileCallback::~LogFileCallback() {
    delete logFile;
}

void LogFileCallback::Log(const String& message) {
    if (logFile != NULL) {
        logFile->WriteLine(message, kLogNormal, String());
    }
}

// ---------------------------------------------------------------- the manager

LogManager::LogManager() {
}

LogManager::~LogManager() {
    ClearLogCallbacks();
}

LogFile* LogManager::AddLogFileCallback(const String& name) {
    LogFileCallback* const callback = new (std::nothrow) LogFileCallback(name);
    LogFile* const logFile = callback != NULL ? callback->GetLogFile() : NULL;
    if (logFile == NULL) {
        delete callback;
        return NULL;
    }
    return AddLogCallback(callback) ? logFile : NULL;
}

bool LogManager::AddLogCallback(LogCallback* callback) {
    if (callback == NULL) {
        return false;
    }
    if (!callbacks.Add(callback)) {
        delete callback;
        return false;
    }
    return true;
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
    GetLogManager().LogMessage(String(message));
}

}  // namespace Plinth
