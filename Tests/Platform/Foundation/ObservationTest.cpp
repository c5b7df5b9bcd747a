#include "Platform/Foundation/Observation.h"

#include <gtest/gtest.h>

namespace {

using platform::Observation;

TEST(Observation, EndsTheRegistrationOnce)
{
    int ended = 0;
    {
        Observation observation([&] { ++ended; });
        observation.end();
        EXPECT_EQ(ended, 1);
        observation.end();
    }
    EXPECT_EQ(ended, 1);
}

TEST(Observation, EndsTheRegistrationWhenItIsDestroyed)
{
    int ended = 0;
    {
        const Observation observation([&] { ++ended; });
        EXPECT_EQ(ended, 0);
    }
    EXPECT_EQ(ended, 1);
}

TEST(Observation, HandsTheRegistrationOnWhenItIsMoved)
{
    int ended = 0;
    Observation outer;
    {
        Observation inner([&] { ++ended; });
        outer = std::move(inner);
        const Observation last = std::move(outer);
        EXPECT_EQ(ended, 0);
        outer = Observation();
        EXPECT_EQ(ended, 0);
    }
    EXPECT_EQ(ended, 1);
}

TEST(Observation, SurvivesBeingAssignedToItself)
{
    int ended = 0;
    Observation observation([&] { ++ended; });
    Observation &same = observation;
    observation = std::move(same);
    EXPECT_EQ(ended, 0);
    observation.end();
    EXPECT_EQ(ended, 1);
}

TEST(Observation, MayBeReplacedByItsOwnEnd)
{
    // As a handler that registers anew when it is removed.
    int ended = 0;
    Observation observation;
    observation = Observation([&] {
        ++ended;
        observation = Observation();
    });
    observation.end();
    EXPECT_EQ(ended, 1);
}

} // namespace
