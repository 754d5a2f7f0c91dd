#include "host/sdk/live_objects.h"

namespace maxhost {
namespace {
int liveObjectCount = 0;
LoanCounts loanCounts;
}  // namespace

int LiveObjectCount() {
    return liveObjectCount;
}

LiveObject::LiveObject() {
    ++liveObjectCount;
}

LiveObject::~LiveObject() {
    --liveObjectCount;
}

LoanCounts CountLoans() {
    return loanCounts;
}

void Loans::Lend(const void* lent) {
    ++lent_[lent];
    ++loanCounts.lent;
    ++loanCounts.outstanding;
}

bool Loans::TakeBack(const void* lent) {
    const auto found = lent_.find(lent);
    if (found == lent_.end()) {
        ++loanCounts.wrongReleases;
        return false;
    }
    if (--found->second == 0) {
        lent_.erase(found);
    }
    --loanCounts.outstanding;
    return true;
}

}  // namespace maxhost
