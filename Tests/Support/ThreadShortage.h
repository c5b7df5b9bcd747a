#pragma once

namespace testSupport {

/// While it lives only so many threads can be started, whoever starts them; then the system answers that it is short
/// of resources. One at a time.
class ThreadShortage
{
public:
    explicit ThreadShortage(int threadsLeft = 0);
    ~ThreadShortage();
    ThreadShortage(const ThreadShortage &) = delete;
    ThreadShortage &operator=(const ThreadShortage &) = delete;
};

} // namespace testSupport
