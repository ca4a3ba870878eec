#ifndef QVRCMUTEX_H
#define QVRCMUTEX_H

#include "BQMLock.h"

// The thread pool's and the raw data store's mutex is the base library's.
using QVRCMutex = BQMLock;
using QVRCMutexLock = BQMLockGuard;

#endif
