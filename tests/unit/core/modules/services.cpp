// A module with the core library inside, which logs and has services of its own.
#include "services.h"
#include "core/instance_manager.h"
#include "core/log.h"
#include "core/memory_manager.h"

namespace {

ServiceEvent report = nullptr;

// Holds a block's storage as long as it lives.
class Sink : public Plinth::LogCallback {
  public:
    Sink() : storage_(Plinth::GetMemoryManager().AllocateInBlocks(100, 2, 16, 2)) {}
    ~Sink() override {
        Plinth::GetMemoryManager().FreeInBlocks(storage_);
        report("sink destroyed");
    }
    void Log(const Plinth::String& message) override { report(message.Text()); }

  private:
    void* storage_;
};

// Goes before the log manager, which it still uses.
class EarlyService {
  public:
    EarlyService();
    ~EarlyService() { Plinth::Log("the early service ends"); }
};

// Goes after the memory manager.
class LateService {
  public:
    LateService();
    ~LateService() { report("the late service ends"); }
};

Plinth::InstanceManager<EarlyService>* earlyHolder = nullptr;
Plinth::InstanceManager<LateService>* lateHolder = nullptr;

}  // namespace

template <>
Plinth::InstanceManager<EarlyService>*& Plinth::InstanceManager<EarlyService>::HolderPointer() {
    return earlyHolder;
}

template <>
Plinth::InstanceManager<LateService>*& Plinth::InstanceManager<LateService>::HolderPointer() {
    return lateHolder;
}

EarlyService::EarlyService() {
    Plinth::InstanceManager<EarlyService>::Holder().SetPriority(-1);
}

LateService::LateService() {
    Plinth::InstanceManager<LateService>::Holder().SetPriority(20000);
}

extern "C" SERVICES_EXPORT void UseServices(ServiceEvent event, const char* logName) {
    report = event;
    Plinth::InstanceManager<LateService>::Get();
    Plinth::InstanceManager<EarlyService>::Get();
    Plinth::GetLogManager().AddLogCallback(new Sink);
    Plinth::GetLogManager().AddLogFileCallback(logName);
    Plinth::GetMemoryManager().AllocateInBlocks(10, 1, 16, 1);
    Plinth::Log("%s", "in use");
}
