#include "core/instance_manager.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include "core/log.h"
#include "core/memory_manager.h"
#include "wrapped_calls.h"

namespace {

using Plinth::InstanceManager;
using Plinth::InstanceManagerBase;
using Plinth::InstanceRegistry;

using Events = std::vector<std::string>;

class RecordingHolder : public InstanceManagerBase {
  public:
    RecordingHolder(std::string name, int order, Events& events)
        : name_(std::move(name)), events_(events) {
        SetPriority(order);
    }
    ~RecordingHolder() override { events_.push_back(name_ + " holder"); }
    void DestroyInstance() override { events_.push_back(name_ + " instance"); }

  private:
    std::string name_;
    Events& events_;
};

// The holders' names in the order of their destruction.
std::string OrderOf(const std::vector<std::pair<std::string, int>>& holders) {
    Events events;
    {
        InstanceRegistry registry;
        for (const auto& [name, priority] : holders) {
            registry.Register(new RecordingHolder(name, priority, events));
        }
        EXPECT_EQ(registry.Count(), static_cast<int>(holders.size()));
    }
    EXPECT_EQ(events.size(), 2 * holders.size());
    std::string order;
    for (size_t i = 0; i < events.size(); i += 2) {
        const std::string name = events[i].substr(0, events[i].find(' '));
        EXPECT_EQ(events[i], name + " instance");
        EXPECT_EQ(events[i + 1], name + " holder");
        order += (order.empty() ? "" : " ") + name;
    }
    return order;
}

// ---------------------------------------------------------------- holders

TEST(InstanceHolder, PriorityAndComparison) {
    Events events;
    RecordingHolder low("low", 0, events);
    RecordingHolder high("high", 10000, events);
    EXPECT_TRUE(low < high);
    EXPECT_FALSE(high < low);
    EXPECT_TRUE(high > low);
    EXPECT_FALSE(low > high);
    EXPECT_FALSE(low == high);
    low.SetPriority(10000);
    EXPECT_EQ(low.Priority(), 10000);
    EXPECT_TRUE(low == high);
    EXPECT_FALSE(low < high);
    EXPECT_FALSE(low > high);
}

int servicesAlive = 0;
int servicesMade = 0;

struct Service {
    Service() {
        ++servicesAlive;
        ++servicesMade;
    }
    ~Service() { --servicesAlive; }
};

TEST(InstanceHolder, MakesTheInstanceOnFirstUse) {
    const int registered = InstanceRegistry::Global().Count();
    InstanceManager<Service>& holder = InstanceManager<Service>::Holder();
    EXPECT_EQ(holder.Priority(), 0);
    EXPECT_EQ(servicesMade, 0);
    Service& service = InstanceManager<Service>::Get();
    EXPECT_EQ(&InstanceManager<Service>::Get(), &service);
    EXPECT_EQ(&InstanceManager<Service>::Holder(), &holder);
    EXPECT_EQ(servicesMade, 1);
    EXPECT_EQ(InstanceRegistry::Global().Count(), registered + 1);
    holder.DestroyInstance();
    EXPECT_EQ(servicesAlive, 0);
    holder.DestroyInstance();
    InstanceManager<Service>::Get();
    EXPECT_EQ(servicesMade, 2);
    EXPECT_EQ(servicesAlive, 1);
    EXPECT_EQ(InstanceRegistry::Global().Count(), registered + 1);
}

// There is no memory for it at first.
struct LargeService {
    static void* operator new(size_t size) {
        if (refused) {
            throw std::bad_alloc();
        }
        return ::operator new(size);
    }
    static void operator delete(void* memory) { ::operator delete(memory); }

    static bool refused;
};

bool LargeService::refused = true;

TEST(InstanceHolder, WithoutMemoryForTheInstanceALaterUseMakesIt) {
    EXPECT_THROW(InstanceManager<LargeService>::Get(), std::bad_alloc);
    const int registered = InstanceRegistry::Global().Count();
    LargeService::refused = false;
    LargeService& service = InstanceManager<LargeService>::Get();
    EXPECT_EQ(&InstanceManager<LargeService>::Get(), &service);
    EXPECT_EQ(InstanceRegistry::Global().Count(), registered);
}

// ---------------------------------------------------------------- the registry

TEST(InstanceRegistryTest, AscendingPriority) {
    EXPECT_EQ(OrderOf({{"memory", 10000}, {"log", 0}, {"other", 0}}), "log other memory");
    EXPECT_EQ(OrderOf({{"a", 3}, {"b", -2}, {"c", 0}, {"d", 2}}), "b c d a");
    EXPECT_EQ(OrderOf({{"a", 1}, {"b", 2}}), "a b");
    EXPECT_EQ(OrderOf({{"a", 0}}), "a");
    EXPECT_EQ(OrderOf({}), "");
}

// The first of the smallest is swapped to the front of what is left, so equals may change places.
TEST(InstanceRegistryTest, EqualPrioritiesFollowTheSelectionSort) {
    EXPECT_EQ(OrderOf({{"a", 0}, {"b", 0}, {"c", 0}}), "a b c");
    EXPECT_EQ(OrderOf({{"a", 5}, {"b", 5}, {"c", 1}}), "c b a");
}

TEST(InstanceRegistryTest, GrowsByOneElementAtATime) {
    Events events;
    InstanceRegistry registry;
    for (int i = 1; i <= 5; ++i) {
        const long before = ReallocationCount();
        registry.Register(new RecordingHolder("x", i, events));
        EXPECT_EQ(ReallocationCount() - before, 1);
        EXPECT_EQ(registry.Count(), i);
    }
}

TEST(InstanceRegistryTest, DestroyAllLeavesItEmptyAndUsable) {
    Events events;
    InstanceRegistry registry;
    registry.Register(new RecordingHolder("a", 0, events));
    registry.DestroyAll();
    EXPECT_EQ(events, (Events{"a instance", "a holder"}));
    EXPECT_EQ(registry.Count(), 0);
    registry.DestroyAll();
    EXPECT_EQ(events.size(), 2u);
    registry.Register(new RecordingHolder("b", 0, events));
    registry.DestroyAll();
    EXPECT_EQ(events.size(), 4u);
}

// Registers another holder while it is destroyed.
class RegisteringHolder : public InstanceManagerBase {
  public:
    RegisteringHolder(InstanceRegistry& registry, Events& events)
        : registry_(registry), events_(events) {}
    void DestroyInstance() override { registry_.Register(new RecordingHolder("late", 0, events_)); }

  private:
    InstanceRegistry& registry_;
    Events& events_;
};

TEST(InstanceRegistryTest, DestroysWhatIsRegisteredMeanwhile) {
    Events events;
    InstanceRegistry registry;
    registry.Register(new RegisteringHolder(registry, events));
    registry.DestroyAll();
    EXPECT_EQ(events, (Events{"late instance", "late holder"}));
    EXPECT_EQ(registry.Count(), 0);
}

// ---------------------------------------------------------------- process exit

class ReportingSink : public Plinth::LogCallback {
  public:
    ~ReportingSink() override { std::fputs("log destroyed;", stderr); }
    void Log(const Plinth::String&) override {}
};

// Reports its end among the services.
class LastService {
  public:
    LastService() { InstanceManager<LastService>::Holder().SetPriority(10001); }
    ~LastService() { std::fputs("last destroyed;", stderr); }
};

class FirstService {
  public:
    FirstService() { InstanceManager<FirstService>::Holder().SetPriority(-1); }
    ~FirstService() { std::fputs("first destroyed;", stderr); }
};

[[noreturn]] void UseServicesAndExit() {
    InstanceManager<LastService>::Get();
    Plinth::GetMemoryManager();
    Plinth::GetLogManager().AddLogCallback(new ReportingSink);
    InstanceManager<FirstService>::Get();
    std::exit(0);
}

TEST(InstanceDeathTest, ServicesAreDestroyedAtExitInOrder) {
    EXPECT_EXIT(UseServicesAndExit(), testing::ExitedWithCode(0),
                "first destroyed;log destroyed;last destroyed;");
}

// Code that runs after the exit sequence finds services again.
void UseServicesLate() {
    Plinth::String text("late ");
    text.FormatAdd("%s;", "use");
    std::fputs(text.Text(), stderr);
}

[[noreturn]] void UseServicesBehindTheExitSequence() {
    std::atexit(UseServicesLate);
    InstanceManager<LastService>::Get();
    Plinth::GetMemoryManager();
    std::exit(0);
}

TEST(InstanceDeathTest, ServicesComeBackWhenTheyAreUsedAfterwards) {
    // In a process of its own, where nothing has used them before.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(UseServicesBehindTheExitSequence(), testing::ExitedWithCode(0),
                "last destroyed;late use;");
}

}  // namespace
