#pragma once

// Makes the next pthread_mutex_init / pthread_cond_init of the calling thread fail, for tests of
// constructors that must report such failures. Link PthreadInitFaults.cpp into the test: it
// interposes both functions for the whole executable and forwards every other call.
namespace QvTest
{
/// The calling thread's next pthread_mutex_init returns \a error without initialising.
void FailNextPthreadMutexInit(int error);
/// The calling thread's next pthread_cond_init returns \a error without initialising.
void FailNextPthreadCondInit(int error);
} // namespace QvTest
