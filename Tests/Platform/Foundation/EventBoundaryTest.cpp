#include "Platform/Foundation/EventBoundary.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Support/TestSupport.h"

#include <stdexcept>

namespace {

Q_LOGGING_CATEGORY(testLog, "zr.test")

TEST(EventBoundary, AnswersThatACallReturned)
{
    bool called = false;
    EXPECT_TRUE(platform::callGuarded(testLog(), QStringLiteral("call"), [&] { called = true; }));
    EXPECT_TRUE(called);
}

TEST(EventBoundary, LogsWhatWasCalledAndTheExceptionWithItsType)
{
    testSupport::expectWarning(QStringLiteral("drop of photos: std::out_of_range: no such photo"));
    EXPECT_FALSE(platform::callGuarded(testLog(), QStringLiteral("drop of photos"),
                                       [] { throw std::out_of_range("no such photo"); }));
}

TEST(EventBoundary, LogsAFailedAssertionWithItsDescription)
{
    testSupport::expectWarning(
        QStringLiteral("platform::InternalInconsistency: Invalid parameter not satisfying: 1 == 2"));
    EXPECT_FALSE(
        platform::callGuarded(testLog(), QStringLiteral("call"), [] { ZR_ASSERT_PARAMETER(nullptr, 1 == 2); }));
}

TEST(EventBoundary, LogsAnExceptionThatIsNone)
{
    testSupport::expectWarning(QStringLiteral("call: an exception of unknown type"));
    EXPECT_FALSE(platform::callGuarded(testLog(), QStringLiteral("call"), [] { throw 17; }));
}

} // namespace
