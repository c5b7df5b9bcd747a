#include "Support/ThreadShortage.h"

#include <atomic>
#include <cerrno>
#include <limits>

#include <dlfcn.h>
#include <pthread.h>

namespace {

constexpr int unlimited = std::numeric_limits<int>::max();
std::atomic<int> threadsLeft = unlimited;

// Takes one of the threads that are left; answers false when there is none.
bool takeThread()
{
    int left = threadsLeft;
    while (left > 0 && left != unlimited && !threadsLeft.compare_exchange_weak(left, left - 1)) { }
    return left > 0;
}

} // namespace

// Stands before the system's own in every program that links this file. A limit of the system itself would not do: root
// passes it by, other programs of the same user count in, and the sanitizers need resources of their own.
extern "C" int pthread_create(pthread_t *thread, const pthread_attr_t *attributes, void *(*routine)(void *),
                              void *argument)
{
    static const auto next = reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
    return takeThread() ? next(thread, attributes, routine, argument) : EAGAIN;
}

namespace testSupport {

ThreadShortage::ThreadShortage(int left)
{
    threadsLeft = left;
}

ThreadShortage::~ThreadShortage()
{
    threadsLeft = unlimited;
}

} // namespace testSupport
