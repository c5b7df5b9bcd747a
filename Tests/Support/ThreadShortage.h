#pragma once

#include <pthread.h>

#include <gtest/gtest.h>

namespace testSupport {

/// No thread can be started while it lives: new threads ask for a larger stack than there are addresses.
class ThreadShortage
{
public:
    ThreadShortage()
    {
        pthread_getattr_default_np(&m_before);
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        pthread_attr_setstacksize(&attributes, size_t(1) << 50);
        EXPECT_EQ(pthread_setattr_default_np(&attributes), 0);
        pthread_attr_destroy(&attributes);
    }
    ~ThreadShortage()
    {
        pthread_setattr_default_np(&m_before);
        pthread_attr_destroy(&m_before);
    }
    ThreadShortage(const ThreadShortage &) = delete;
    ThreadShortage &operator=(const ThreadShortage &) = delete;

private:
    pthread_attr_t m_before;
};

} // namespace testSupport
