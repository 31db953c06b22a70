// A named mutex.
#pragma once

#include <pthread.h>
#include <string>

/// A mutex with default attributes: not recursive, to be unlocked by the thread that locked it.
class CMutexLock {
public:
    /// @param name  tells mutexes apart for whoever debugs
    explicit CMutexLock(const std::string& name);
    ~CMutexLock();
    CMutexLock(const CMutexLock&) = delete;
    CMutexLock& operator=(const CMutexLock&) = delete;

    /// @return 0, or the error number of pthread
    int Lock();
    int Unlock();

    /// @return true when the lock was taken, without waiting
    bool TryLock();

    const std::string& GetName() const { return mName; }

private:
    pthread_mutex_t mMutex;
    std::string mName;
};
