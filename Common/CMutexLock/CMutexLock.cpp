#include "CMutexLock/CMutexLock.h"

CMutexLock::CMutexLock(const std::string& name) : mName(name)
{
    pthread_mutex_init(&mMutex, nullptr);
}

CMutexLock::~CMutexLock()
{
    pthread_mutex_destroy(&mMutex);
}

int CMutexLock::Lock()
{
    return pthread_mutex_lock(&mMutex);
}

int CMutexLock::Unlock()
{
    return pthread_mutex_unlock(&mMutex);
}

bool CMutexLock::TryLock()
{
    return pthread_mutex_trylock(&mMutex) == 0;
}
