// C library calls of the core library, which the linker leads through here.
#pragma once

#include <climits>
#include <string>
#include <vector>

// Makes the realloc call number `failing` (0: the next one) and the later ones, `count` in all,
// give null while it lives.
class FailingReallocations {
  public:
    explicit FailingReallocations(int failing, int count = INT_MAX);
    ~FailingReallocations();
    FailingReallocations(const FailingReallocations&) = delete;
    FailingReallocations& operator=(const FailingReallocations&) = delete;

    // Calls that were refused.
    int Refused() const;
};

// The same for `new`, which throws; the test's own is refused too.
class FailingNews {
  public:
    explicit FailingNews(int failing, int count = INT_MAX);
    ~FailingNews();
    FailingNews(const FailingNews&) = delete;
    FailingNews& operator=(const FailingNews&) = delete;

    int Refused() const;
};

// The arguments of a call of MemoryManager::Reallocate.
struct StorageRequest {
    unsigned category;
    unsigned alignment;
    unsigned blockId;

    bool operator==(const StorageRequest&) const = default;
};

// Collects the requests while it lives. At most one lives at a time.
class StorageRequests {
  public:
    StorageRequests();
    ~StorageRequests();
    StorageRequests(const StorageRequests&) = delete;
    StorageRequests& operator=(const StorageRequests&) = delete;

    // Those since the last call, in order.
    std::vector<StorageRequest> Take();

    void Add(const StorageRequest& request) { requests_.push_back(request); }

  private:
    std::vector<StorageRequest> requests_;
};

// The number of realloc calls of the whole process so far. Makes the services first, which take
// some of their own.
long ReallocationCount();

#ifndef _WIN32
// The modes that files were opened with since the last call, in order.
std::vector<std::string> TakeOpenModes();
#endif
