#include "ZRFoundation/ZRWorkUnit.h"

#include <gtest/gtest.h>

namespace {

struct Unit : ZRWorkUnit {
    void processWithServer(ZRProcessServer &) override { }
};

TEST(ZRWorkUnit, IsNotCancelledUntilSomebodySaysSo)
{
    Unit unit;
    EXPECT_FALSE(unit.cancelFlag());
    unit.setCancelFlag(true);
    EXPECT_TRUE(unit.cancelFlag());
    unit.setCancelFlag(false);
    EXPECT_FALSE(unit.cancelFlag());
}

} // namespace
