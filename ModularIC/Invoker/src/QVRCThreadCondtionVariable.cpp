#include "QVRCThreadCondtionVariable.h"

QVRCThreadCondtionVariable::QVRCThreadCondtionVariable() { pthread_cond_init(&m_cond, nullptr); }

QVRCThreadCondtionVariable::~QVRCThreadCondtionVariable() { pthread_cond_destroy(&m_cond); }

void QVRCThreadCondtionVariable::SignalConditionVariable() { pthread_cond_signal(&m_cond); }

void QVRCThreadCondtionVariable::WaitConditionVariable(QVRCMutex* mutex, unsigned long /*timeout*/) {
    pthread_cond_wait(&m_cond, mutex->GetHandle());
}
