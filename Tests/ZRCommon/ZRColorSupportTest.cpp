#include "ZRCommon/ZRColorSupport.h"

#include "Support/TestSupport.h"

#include <QColor>

using ZRColorSupport::colorForKeyZR;
using ZRColorSupport::setColorZR;

namespace {

const QString key = QStringLiteral("background");

struct ZRColorSupportTest : testing::Test {
    const QString path = testSupport::homePath() + QStringLiteral("/settings.ini");
    platform::UserDefaults defaults{std::make_unique<QSettings>(path, QSettings::IniFormat)};

    QByteArray archived(const QColor &color)
    {
        setColorZR(defaults, color, key);
        return defaults.data(key);
    }
};

TEST_F(ZRColorSupportTest, KeepsColoursOfEveryModelExactly)
{
    for (const QColor &color :
         {QColor(Qt::red), QColor(1, 2, 3, 4), QColor::fromRgba64(0x1234, 0x5678, 0x9abc, 0xdef0),
          QColor::fromHsv(200, 100, 50), QColor::fromHsv(-1, 0, 50), QColor::fromHsl(10, 20, 30, 40),
          QColor::fromCmyk(1, 2, 3, 4), QColor::fromRgbF(1.5f, -0.25f, 0.5f, 1.0f)}) {
        setColorZR(defaults, color, key);
        EXPECT_EQ(colorForKeyZR(defaults, key), color);
        EXPECT_EQ(colorForKeyZR(defaults, key).spec(), color.spec());
    }
}

TEST_F(ZRColorSupportTest, StoresDataOfAFixedForm)
{
    EXPECT_EQ(archived(QColor(255, 128, 0, 64)).toHex(), "014040ffff808000000000");
}

TEST_F(ZRColorSupportTest, FindsTheColourInTheNextRun)
{
    setColorZR(defaults, QColor(10, 20, 30), key);
    ASSERT_TRUE(defaults.synchronize());
    const platform::UserDefaults next(std::make_unique<QSettings>(path, QSettings::IniFormat));
    EXPECT_EQ(colorForKeyZR(next, key), QColor(10, 20, 30));
}

TEST_F(ZRColorSupportTest, AnswersNothingForAMissingKey)
{
    EXPECT_FALSE(colorForKeyZR(defaults, key).isValid());
    EXPECT_FALSE(colorForKeyZR(defaults, QString()).isValid());
}

TEST_F(ZRColorSupportTest, FindsARegisteredColour)
{
    const QByteArray bytes = archived(Qt::green);
    defaults.remove(key);
    defaults.registerDefaults({{key, bytes}});
    EXPECT_EQ(colorForKeyZR(defaults, key), QColor(Qt::green));
}

TEST_F(ZRColorSupportTest, AnInvalidColourReadsBackAsNone)
{
    setColorZR(defaults, QColor(), key);
    EXPECT_FALSE(colorForKeyZR(defaults, key).isValid());
}

TEST_F(ZRColorSupportTest, AnswersNothingForDataThatIsNoColour)
{
    const QByteArray red = archived(Qt::red);
    for (qsizetype length = 0; length < red.size(); ++length) {
        defaults.set(key, red.first(length));
        EXPECT_FALSE(colorForKeyZR(defaults, key).isValid()) << length;
    }
    const char *rows[] = {
        "06ffffffff000000000000", // no such model
        "ffffffffff000000000000", // nor this
        "02ffff8ca0ffffffff0000", // a hue of 360 degrees
        "0401ffffeeffffffff0000", // a hue of 655.18 degrees
        "053c007e00000000000000", // an extended red that is not a number
        "053c007c00000000000000", // an extended red that is infinite
        "014040ffff80800000000000", // a byte too many
    };
    for (const char *row : rows) {
        defaults.set(key, QByteArray::fromHex(row));
        EXPECT_FALSE(colorForKeyZR(defaults, key).isValid()) << row;
    }
}

TEST_F(ZRColorSupportTest, AnswersNothingForAValueThatIsNoData)
{
    for (const QVariant &value :
         {QVariant(QStringLiteral("#ff0000")), QVariant(5), QVariant(QVariantList({1, 0, 0}))}) {
        defaults.set(key, value);
        EXPECT_FALSE(colorForKeyZR(defaults, key).isValid());
    }
}

} // namespace
