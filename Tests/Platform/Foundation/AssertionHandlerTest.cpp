#include "Platform/Foundation/AssertionHandler.h"

#include <QObject>

#include <optional>
#include <string>
#include <thread>

#include <gtest/gtest.h>

namespace {

using platform::AssertionHandler;
using platform::InternalInconsistency;

class Strip
{
public:
    void addIndex(int index) { ZR_ASSERT_PARAMETER(this, index >= 0 && index < 8); }
    void connect() { ZR_ASSERT(this, m_view, "outlet to the view is not connected"); }
    void readPhoto()
    {
        if (!m_view)
            platform::raiseInvalidParameter({"readPhoto", "PhotoReader", 274}, this, "photo_dict != NULL");
    }

private:
    const void *m_view = nullptr;
};

template <class Call>
std::optional<InternalInconsistency> failureOf(Call call)
{
    try {
        call();
    } catch (const InternalInconsistency &failure) {
        return failure;
    }
    return {};
}

TEST(AssertionHandler, LetsPassWhatHolds)
{
    Strip strip;
    EXPECT_NO_THROW(strip.addIndex(7));
}

TEST(AssertionHandler, NamesTheConditionMethodObjectFileAndLine)
{
    Strip strip;
    const int line = __LINE__ - 32;
    const auto failure = failureOf([&] { strip.addIndex(8); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->description(), QStringLiteral("Invalid parameter not satisfying: index >= 0 && index < 8"));
    EXPECT_TRUE(failure->method().contains(QStringLiteral("Strip::addIndex"))) << failure->what();
    EXPECT_EQ(failure->object(), QStringLiteral("(anonymous namespace)::Strip 0x%1").arg(quintptr(&strip), 0, 16));
    EXPECT_EQ(failure->file(), QStringLiteral("AssertionHandlerTest.cpp"));
    EXPECT_EQ(failure->line(), line);
}

TEST(AssertionHandler, CarriesAFixedDescriptionAsItStands)
{
    Strip strip;
    const auto failure = failureOf([&] { strip.connect(); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->description(), QStringLiteral("outlet to the view is not connected"));
}

TEST(AssertionHandler, CarriesANamedFileAndLine)
{
    Strip strip;
    const auto failure = failureOf([&] { strip.readPhoto(); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->description(), QStringLiteral("Invalid parameter not satisfying: photo_dict != NULL"));
    EXPECT_EQ(failure->method(), QStringLiteral("readPhoto"));
    EXPECT_EQ(failure->file(), QStringLiteral("PhotoReader"));
    EXPECT_EQ(failure->line(), 274);
}

TEST(AssertionHandler, TellsItAllInOneLineOfText)
{
    const InternalInconsistency failure(QStringLiteral("addIndex"), QStringLiteral("Strip 0x1"),
                                        QStringLiteral("Strip.cpp"), 12, QStringLiteral("no view – here"));
    const std::exception &exception = failure;
    EXPECT_STREQ(exception.what(), "no view – here (in addIndex of Strip 0x1, Strip.cpp:12)");
    const InternalInconsistency inFunction(QStringLiteral("add"), {}, QStringLiteral("a.cpp"), 1, QStringLiteral("b"));
    EXPECT_STREQ(inFunction.what(), "b (in add, a.cpp:1)");
}

TEST(AssertionHandler, NamesObjectsByTheirRunTimeClassAndName)
{
    struct Panel : QObject { };
    Panel panel;
    panel.setObjectName(QStringLiteral("inspector"));
    const QObject *const object = &panel;
    const QString description = platform::FailureObject(object).description();
    EXPECT_TRUE(description.contains(QStringLiteral("Panel 0x"))) << qPrintable(description);
    EXPECT_TRUE(description.endsWith(QStringLiteral(" \"inspector\""))) << qPrintable(description);
    EXPECT_TRUE(platform::FailureObject(nullptr).description().isEmpty());
    EXPECT_TRUE(platform::FailureObject(static_cast<Strip *>(nullptr)).description().isEmpty());
}

struct NotingHandler : AssertionHandler {
    void handleFailureInMethod(const QString &, const QString &, const QString &file, int lineNumber,
                               const QString &description) override
    {
        noted = file + u':' + QString::number(lineNumber) + u' ' + description;
        if (raises)
            throw std::string("own exception");
    }
    QString noted;
    bool raises = false;
};

TEST(AssertionHandler, CanBeReplacedForTheThread)
{
    NotingHandler handler;
    handler.raises = true;
    AssertionHandler::setCurrentHandler(&handler);
    EXPECT_EQ(&AssertionHandler::currentHandler(), &handler);
    Strip strip;
    EXPECT_THROW(strip.readPhoto(), std::string);
    EXPECT_EQ(handler.noted, QStringLiteral("PhotoReader:274 Invalid parameter not satisfying: photo_dict != NULL"));
    std::thread([&] {
        EXPECT_NE(&AssertionHandler::currentHandler(), &handler);
        EXPECT_THROW(strip.readPhoto(), InternalInconsistency);
    }).join();
    AssertionHandler::setCurrentHandler(nullptr);
    EXPECT_THROW(strip.readPhoto(), InternalInconsistency);
}

TEST(AssertionHandler, RaisesTheFailureAlsoWhenItsReplacementReturns)
{
    NotingHandler handler;
    AssertionHandler::setCurrentHandler(&handler);
    EXPECT_THROW(Strip().readPhoto(), InternalInconsistency);
    EXPECT_FALSE(handler.noted.isEmpty());
    AssertionHandler::setCurrentHandler(nullptr);
}

} // namespace
