#pragma once

#include <QFile>

#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace testSupport {

/// While it lives only so many threads can be started: they ask for large stacks, for which the addresses that the
/// process may use soon do not suffice.
class ThreadShortage
{
public:
    explicit ThreadShortage(int threadsLeft = 0)
    {
        constexpr rlim_t stackSize = rlim_t(1) << 30;
        QFile sizes(QStringLiteral("/proc/self/statm"));
        EXPECT_TRUE(sizes.open(QIODevice::ReadOnly));
        const rlim_t used = sizes.readAll().split(' ').value(0).toULongLong() * rlim_t(sysconf(_SC_PAGESIZE));
        getrlimit(RLIMIT_AS, &m_addresses);
        rlimit addresses = m_addresses;
        addresses.rlim_cur = used + rlim_t(threadsLeft) * stackSize + stackSize / 2;
        EXPECT_EQ(setrlimit(RLIMIT_AS, &addresses), 0);

        pthread_getattr_default_np(&m_attributes);
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        pthread_attr_setstacksize(&attributes, stackSize);
        EXPECT_EQ(pthread_setattr_default_np(&attributes), 0);
        pthread_attr_destroy(&attributes);
    }
    ~ThreadShortage()
    {
        pthread_setattr_default_np(&m_attributes);
        pthread_attr_destroy(&m_attributes);
        setrlimit(RLIMIT_AS, &m_addresses);
    }
    ThreadShortage(const ThreadShortage &) = delete;
    ThreadShortage &operator=(const ThreadShortage &) = delete;

private:
    rlimit m_addresses;
    pthread_attr_t m_attributes;
};

} // namespace testSupport
