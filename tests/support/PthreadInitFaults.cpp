#include "PthreadInitFaults.h"

#include <cstdio>
#include <cstdlib>

#include <dlfcn.h>
#include <pthread.h>

namespace
{
thread_local int t_mutexInitError = 0;
thread_local int t_condInitError = 0;

template <typename F>
F Next(const char* name)
{
    void* next = dlsym(RTLD_NEXT, name);
    if (next == nullptr)
    {
        fprintf(stderr, "PthreadInitFaults: no next %s\n", name);
        abort();
    }
    return reinterpret_cast<F>(next);
}
} // namespace

namespace QvTest
{
void FailNextPthreadMutexInit(int error)
{
    t_mutexInitError = error;
}

void FailNextPthreadCondInit(int error)
{
    t_condInitError = error;
}
} // namespace QvTest

// Exported so that the shared libraries' calls bind here instead of in libc.
extern "C" __attribute__((visibility("default"))) int pthread_mutex_init(pthread_mutex_t* mutex,
                                                                        const pthread_mutexattr_t* attributes)
{
    if (int error = t_mutexInitError)
    {
        t_mutexInitError = 0;
        return error;
    }
    using Function = int (*)(pthread_mutex_t*, const pthread_mutexattr_t*);
    static const Function next = Next<Function>("pthread_mutex_init");
    return next(mutex, attributes);
}

extern "C" __attribute__((visibility("default"))) int pthread_cond_init(pthread_cond_t* condition,
                                                                       const pthread_condattr_t* attributes)
{
    if (int error = t_condInitError)
    {
        t_condInitError = 0;
        return error;
    }
    using Function = int (*)(pthread_cond_t*, const pthread_condattr_t*);
    static const Function next = Next<Function>("pthread_cond_init");
    return next(condition, attributes);
}
