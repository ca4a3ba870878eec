#include "BQMLock.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {
// A failing mutex call means a corrupted or misused mutex; carrying on would
// silently drop mutual exclusion.
void Check(int result, const char* call) {
    if (result == 0) return;
    std::fprintf(stderr, "%s: %s\n", call, std::strerror(result));
    std::abort();
}
}  // namespace

BQMLock::BQMLock() { Check(pthread_mutex_init(&mMutex, nullptr), "pthread_mutex_init"); }

BQMLock::~BQMLock() { pthread_mutex_destroy(&mMutex); }

void BQMLock::Lock() { Check(pthread_mutex_lock(&mMutex), "pthread_mutex_lock"); }

void BQMLock::Unlock() { Check(pthread_mutex_unlock(&mMutex), "pthread_mutex_unlock"); }
