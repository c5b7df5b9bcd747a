#include "zrmedia/Progress.h"

#include <QLocale>

#include <gtest/gtest.h>

namespace {

class ProgressTest : public testing::Test
{
protected:
    void SetUp() override { QLocale::setDefault(QLocale::c()); }
    void TearDown() override { QLocale::setDefault(QLocale::system()); }
};

} // namespace

TEST_F(ProgressTest, TellsCountRateAndTimeLeft)
{
    EXPECT_EQ(Progress::text("Reading", "MB", 120, 182, 0.5), "Reading: 120 of 182 MB, 240 MB/s, 1 s left");
    EXPECT_EQ(Progress::text("Listing", "songs", 500, 2000, 1), "Listing: 500 of 2000 songs, 500 songs/s, 3 s left");
}

TEST_F(ProgressTest, LeavesOutWhatIsNotKnown)
{
    EXPECT_EQ(Progress::text("Listing", "songs", 500, 0, 1), "Listing: 500 songs, 500 songs/s");
    EXPECT_EQ(Progress::text("Listing", "songs", 0, 100, 1), "Listing: 0 of 100 songs");
    EXPECT_EQ(Progress::text("Listing", "songs", 100, 100, 1), "Listing: 100 of 100 songs, 100 songs/s");
}
