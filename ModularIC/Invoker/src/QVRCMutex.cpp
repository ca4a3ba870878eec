#include "QVRCMutex.h"

QVRCMutex::QVRCMutex() { pthread_mutex_init(&m_mutex, nullptr); }

QVRCMutex::~QVRCMutex() { pthread_mutex_destroy(&m_mutex); }

void QVRCMutex::Lock() { pthread_mutex_lock(&m_mutex); }

void QVRCMutex::Unlock() { pthread_mutex_unlock(&m_mutex); }
