#include "Platform/Media/LargePictureTurn_p.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

using platform::LargePictureTurn;

TEST(LargePictureTurn, IsHeldByOneThreadAtATime)
{
    std::atomic<int> inside = 0, most = 0;
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([&] {
            for (int i = 0; i < 200; ++i) {
                const LargePictureTurn file(LargePictureTurn::smallBytes + 1);
                const LargePictureTurn picture(LargePictureTurn::smallBytes + 1);
                const int count = ++inside;
                most = std::max<int>(most, count);
                std::this_thread::yield();
                --inside;
            }
        });
    threads.clear();
    EXPECT_EQ(most, 1);
}

TEST(LargePictureTurn, IsNotWaitedForBySmallPictures)
{
    const LargePictureTurn held(LargePictureTurn::smallBytes + 1);
    std::jthread([] { const LargePictureTurn small(LargePictureTurn::smallBytes); }).join();
}
