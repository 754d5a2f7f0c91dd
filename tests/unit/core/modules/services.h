// The functions that the test module exports.
#pragma once

#ifdef _WIN32
#define SERVICES_EXPORT __declspec(dllexport)
#else
#define SERVICES_EXPORT __attribute__((visibility("default")))
#endif

using ServiceEvent = void (*)(const char* text);

// Reports messages that are logged, and what is destroyed, as they happen; logs "in use" to the
// sink that reports and to a log file. Leaves 10 bytes of a block allocated; the sink has 100 more,
// which it gives back.
extern "C" SERVICES_EXPORT void UseServices(ServiceEvent event, const char* logName);
