#include "Platform/Foundation/UserDefaults.h"

#include "Support/TestSupport.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <cmath>
#include <limits>
#include <thread>

using platform::UserDefaults;

namespace {

const QString key = QStringLiteral("a key");

struct UserDefaultsTest : testing::Test {
    const QString path = testSupport::homePath() + QStringLiteral("/settings.ini");
    std::unique_ptr<UserDefaults> defaults = opened();

    std::unique_ptr<UserDefaults> opened() const
    {
        return std::make_unique<UserDefaults>(std::make_unique<QSettings>(path, QSettings::IniFormat));
    }
    // Writes what was set and reads it as another run of the program would.
    void reopen()
    {
        ASSERT_TRUE(defaults->synchronize());
        defaults.reset();
        defaults = opened();
    }
    void writeByHand(const QByteArray &value)
    {
        defaults.reset();
        testSupport::writeFile(path, "[General]\na%20key=" + value + "\n");
        defaults = opened();
    }
};

TEST_F(UserDefaultsTest, AnAbsentValueGivesTheEmptyValueOfEveryType)
{
    EXPECT_FALSE(defaults->object(key).isValid());
    EXPECT_EQ(defaults->string(key), QString());
    EXPECT_FALSE(defaults->boolean(key));
    EXPECT_EQ(defaults->integer(key), 0);
    EXPECT_EQ(defaults->real(key), 0);
    EXPECT_EQ(defaults->data(key), QByteArray());
    EXPECT_TRUE(defaults->array(key).isEmpty());
}

TEST_F(UserDefaultsTest, WhatIsSetIsVisibleAtOnceAndInTheNextRun)
{
    const QVariantList folders = {QStringLiteral("/a b"), QStringLiteral("/c,d"), QStringLiteral("ü\"")};
    const QByteArray bytes("\0\xFF,\n;@", 6);
    defaults->set(QStringLiteral("text"), QStringLiteral("@ Überschrift; \"x\""));
    defaults->set(QStringLiteral("boolean"), true);
    defaults->set(QStringLiteral("integer"), 240);
    defaults->set(QStringLiteral("real"), 0.75);
    defaults->set(QStringLiteral("data"), bytes);
    defaults->set(QStringLiteral("array"), folders);
    for (int run = 0; run < 2; ++run) {
        EXPECT_EQ(defaults->string(QStringLiteral("text")), QStringLiteral("@ Überschrift; \"x\""));
        EXPECT_TRUE(defaults->boolean(QStringLiteral("boolean")));
        EXPECT_EQ(defaults->integer(QStringLiteral("integer")), 240);
        EXPECT_EQ(defaults->real(QStringLiteral("real")), 0.75);
        EXPECT_EQ(defaults->data(QStringLiteral("data")), bytes);
        EXPECT_EQ(defaults->array(QStringLiteral("array")), folders);
        reopen();
    }
}

TEST_F(UserDefaultsTest, ArraysOfAnyLengthComeBackInTheNextRun)
{
    for (const QStringList &folders :
         {QStringList(), QStringList(QStringLiteral("/one")), QStringList({QStringLiteral("/one"), QString()})}) {
        const QVariantList elements(folders.begin(), folders.end());
        defaults->set(key, elements);
        reopen();
        EXPECT_EQ(defaults->array(key), elements) << folders.size();
        defaults->set(key, folders);
        EXPECT_EQ(defaults->array(key), elements) << folders.size();
    }
}

TEST_F(UserDefaultsTest, RegisteredDefaultsAreSeenWhereNothingWasSet)
{
    defaults->registerDefaults({{key, QStringLiteral("registered")}, {QStringLiteral("width"), 240}});
    defaults->registerDefaults({{QStringLiteral("width"), QStringLiteral("100")}});
    EXPECT_EQ(defaults->string(key), QStringLiteral("registered"));
    EXPECT_EQ(defaults->integer(QStringLiteral("width")), 100) << "the later registration counts";
    defaults->set(key, QStringLiteral("set"));
    EXPECT_EQ(defaults->string(key), QStringLiteral("set"));
    defaults->registerDefaults({{key, QStringLiteral("registered again")}});
    EXPECT_EQ(defaults->string(key), QStringLiteral("set"));
    defaults->remove(key);
    EXPECT_EQ(defaults->string(key), QStringLiteral("registered again"));
    defaults->set(key, QString());
    EXPECT_EQ(defaults->string(key), QString()) << "an empty text is a value";
    defaults->set(key, QVariant());
    EXPECT_EQ(defaults->string(key), QStringLiteral("registered again"));
}

TEST_F(UserDefaultsTest, RegisteredDefaultsAreNeverStored)
{
    defaults->registerDefaults({{key, QStringLiteral("registered")}});
    reopen();
    EXPECT_FALSE(defaults->object(key).isValid());
}

TEST_F(UserDefaultsTest, SynchronizingWritesAtOnceAndSeesWhatOthersWrote)
{
    const std::unique_ptr<UserDefaults> other = opened();
    defaults->set(key, 1);
    ASSERT_TRUE(defaults->synchronize());
    EXPECT_TRUE(testSupport::readFile(path).contains("a%20key=1"));
    ASSERT_TRUE(other->synchronize());
    EXPECT_EQ(other->integer(key), 1);
}

TEST_F(UserDefaultsTest, SynchronizingSaysWhenItCannotWrite)
{
    testSupport::writeFile(testSupport::homePath() + QStringLiteral("/file"), "x");
    UserDefaults unwritable(std::make_unique<QSettings>(testSupport::homePath() + QStringLiteral("/file/settings.ini"),
                                                        QSettings::IniFormat));
    unwritable.set(key, 1);
    EXPECT_FALSE(unwritable.synchronize());
    EXPECT_EQ(unwritable.integer(key), 1);
}

TEST_F(UserDefaultsTest, TakesTextsForBooleans)
{
    for (const char *text : {"YES", "yes", "Y", "true", "TRUE", "t", "1", "12", " 1", "+1", "-1", "007", "0Y", "9x"}) {
        defaults->set(key, QString::fromUtf8(text));
        EXPECT_TRUE(defaults->boolean(key)) << text;
    }
    for (const char *text : {"NO", "no", "false", "0", "", "off", "on", "x1", "000", "0.9", "--1", "-", "\xC3\xBC"}) {
        defaults->set(key, QString::fromUtf8(text));
        EXPECT_FALSE(defaults->boolean(key)) << text;
    }
}

TEST_F(UserDefaultsTest, TakesNumbersForBooleans)
{
    for (const QVariant &value : {QVariant(true), QVariant(1), QVariant(-2LL), QVariant(0.5), QVariant(2.5f)}) {
        defaults->set(key, value);
        EXPECT_TRUE(defaults->boolean(key));
    }
    for (const QVariant &value : {QVariant(false), QVariant(0), QVariant(0.0), QVariant(QByteArray("1")),
                                  QVariant(QVariantList({true})), QVariant(QVariantMap())}) {
        defaults->set(key, value);
        EXPECT_FALSE(defaults->boolean(key));
    }
}

TEST_F(UserDefaultsTest, TakesWhateverItFindsForIntegers)
{
    const qint64 largest = std::numeric_limits<qint64>::max();
    const qint64 smallest = std::numeric_limits<qint64>::min();
    const std::pair<QVariant, qint64> rows[] = {{QStringLiteral("240"), 240},
                                                {QStringLiteral(" -12 pixels"), -12},
                                                {QStringLiteral("\t\n\v\f\r 5"), 5},
                                                {QStringLiteral("+7"), 7},
                                                {QStringLiteral("1.9"), 1},
                                                {QStringLiteral("0x10"), 0},
                                                {QStringLiteral("wide"), 0},
                                                {QStringLiteral("--3"), 0},
                                                {QStringLiteral("99999999999999999999"), largest},
                                                {QStringLiteral("-99999999999999999999"), smallest},
                                                {QStringLiteral("-9223372036854775808"), smallest},
                                                {true, 1},
                                                {1.9, 1},
                                                {-1.9, -1},
                                                {1e30, largest},
                                                {9223372036854775808.0, largest},
                                                {-1e30, smallest},
                                                {-9223372036854775808.0, smallest},
                                                {std::nan(""), 0},
                                                {std::numeric_limits<quint64>::max(), largest},
                                                {smallest, smallest},
                                                {QByteArray("5"), 0},
                                                {QVariantList({5}), 0}};
    for (const auto &[value, integer] : rows) {
        defaults->set(key, value);
        EXPECT_EQ(defaults->integer(key), integer) << qPrintable(value.toString());
    }
}

TEST_F(UserDefaultsTest, TakesWhateverItFindsForReals)
{
    const std::pair<QVariant, double> rows[] = {{QStringLiteral("0.75"), 0.75},
                                                {QStringLiteral("\t-1.5e2x"), -150},
                                                {QStringLiteral("0,75"), 0},
                                                {QStringLiteral("inf"), 0},
                                                {QStringLiteral("nan"), 0},
                                                {QStringLiteral("1e999"), 0},
                                                {QStringLiteral("--1"), 0},
                                                {QStringLiteral("good"), 0},
                                                {3, 3},
                                                {true, 1},
                                                {std::numeric_limits<double>::infinity(), 0},
                                                {QVariantMap(), 0}};
    for (const auto &[value, real] : rows) {
        defaults->set(key, value);
        EXPECT_EQ(defaults->real(key), real) << qPrintable(value.toString());
    }
}

TEST_F(UserDefaultsTest, TakesNumbersForTextsAndNothingElse)
{
    const std::pair<QVariant, const char *> rows[] = {
        {240, "240"}, {0.5, "0.5"}, {true, "true"}, {QByteArray("x"), ""}, {QVariantList({QStringLiteral("x")}), ""}};
    for (const auto &[value, text] : rows) {
        defaults->set(key, value);
        EXPECT_EQ(defaults->string(key).toStdString(), text);
    }
}

TEST_F(UserDefaultsTest, ValuesOfAnotherTypeAreNoDataAndNoArray)
{
    for (const QVariant &value : {QVariant(5), QVariant(true), QVariant(QVariantMap({{key, 1}})), QVariant(1.5)}) {
        defaults->set(key, value);
        EXPECT_EQ(defaults->data(key), QByteArray());
        EXPECT_TRUE(defaults->array(key).isEmpty());
    }
    defaults->set(key, QStringLiteral("text"));
    EXPECT_EQ(defaults->data(key), QByteArray());
}

TEST_F(UserDefaultsTest, WhatWasWrittenByHandDoesNoHarm)
{
    for (const char *text :
         {"@Invalid()", "@ByteArray(", "@Variant(\\0\\0)", "@Rect(1 2)", "@@", "\"", "a,b,", "\\x"}) {
        writeByHand(text);
        defaults->string(key);
        defaults->boolean(key);
        defaults->integer(key);
        defaults->real(key);
        defaults->data(key);
        defaults->array(key);
    }
}

TEST_F(UserDefaultsTest, TheEmptyKeyHoldsNothing)
{
    defaults->set(key, 1);
    defaults->set(QString(), 2);
    EXPECT_FALSE(defaults->object(QString()).isValid());
    defaults->remove(QString());
    EXPECT_EQ(defaults->integer(key), 1);
}

TEST_F(UserDefaultsTest, ClearingForgetsAllThatWasSetAndRegistered)
{
    defaults->set(key, 1);
    defaults->registerDefaults({{key, 2}});
    ASSERT_TRUE(defaults->synchronize());
    defaults->clear();
    EXPECT_FALSE(defaults->object(key).isValid());
    EXPECT_FALSE(testSupport::readFile(path).contains("key"));
}

TEST_F(UserDefaultsTest, MayBeUsedFromSeveralThreads)
{
    std::thread writer([&] {
        for (int number = 0; number < 200; ++number)
            defaults->set(key, number);
    });
    for (int number = 0; number < 200; ++number) {
        defaults->registerDefaults({{QStringLiteral("other"), number}});
        EXPECT_GE(defaults->integer(key), 0);
    }
    writer.join();
    EXPECT_EQ(defaults->integer(key), 199);
}

TEST_F(UserDefaultsTest, TheStandardOnesAreTheHostsSettings)
{
    UserDefaults &standard = UserDefaults::standard();
    standard.clear();
    standard.set(key, QStringLiteral("value"));
    ASSERT_TRUE(standard.synchronize());
    EXPECT_EQ(QSettings().value(key).toString(), QStringLiteral("value"));
    EXPECT_EQ(&UserDefaults::standard(), &standard);
    standard.clear();
}

struct PersistentDomain : UserDefaultsTest {
    const QString name = QStringLiteral("com.apple.iphoto");

    QVariantMap domainOf(const QByteArray &file) const
    {
        testSupport::writeFile(testSupport::homePath() + QStringLiteral("/Library/Preferences/com.apple.iphoto.plist"),
                               file);
        return defaults->persistentDomainForName(name);
    }
};

TEST_F(PersistentDomain, IsReadFromThePreferencesOfTheOtherApplication)
{
    const QVariantMap domain = domainOf("<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>"
                                        "<key>RootDirectory</key><string>/photos &amp; more</string>"
                                        "<key>Count</key><integer>3</integer></dict></plist>");
    EXPECT_EQ(domain.value(QStringLiteral("RootDirectory")).toString(), QStringLiteral("/photos & more"));
    EXPECT_EQ(domain.value(QStringLiteral("Count")).toLongLong(), 3);
    EXPECT_EQ(domain.size(), 2);
}

TEST_F(PersistentDomain, IsReadInItsBinaryForm)
{
    // {"RootDirectory": "/p"}
    const QByteArray binary = QByteArray("bplist00\xD1\x01\x02\x5DRootDirectory\x52/p", 28)
        + QByteArray::fromHex("080b19")
        + QByteArray::fromHex("000000000000"
                              "01"
                              "01"
                              "0000000000000003"
                              "0000000000000000"
                              "000000000000001c");
    EXPECT_EQ(domainOf(binary).value(QStringLiteral("RootDirectory")).toString(), QStringLiteral("/p"));
}

TEST_F(PersistentDomain, IsReadAnewAtEachCall)
{
    EXPECT_EQ(domainOf("<dict><key>a</key><true/></dict>").size(), 1);
    EXPECT_EQ(domainOf("<dict><key>a</key><true/><key>b</key><true/></dict>").size(), 2);
}

TEST_F(PersistentDomain, IsEmptyWhenThereIsNoneOrItIsDamaged)
{
    EXPECT_TRUE(defaults->persistentDomainForName(name).isEmpty());
    for (const char *file : {"", "<plist><dict><key>a</key>", "<plist><array/></plist>", "bplist00", "\xFF\xFE"})
        EXPECT_TRUE(domainOf(file).isEmpty()) << file;
}

TEST_F(PersistentDomain, IsNeverReadFromOutsideTheFolderOfPreferences)
{
    testSupport::writeFile(testSupport::homePath() + QStringLiteral("/outside.plist"),
                           "<dict><key>a</key><true/></dict>");
    for (const char *inside : {"/Library/Preferences/.plist", "/Library/Preferences/folder/inside.plist"})
        testSupport::writeFile(testSupport::homePath() + QLatin1String(inside), "<dict><key>a</key><true/></dict>");
    EXPECT_TRUE(defaults->persistentDomainForName(QStringLiteral("../../outside")).isEmpty());
    EXPECT_TRUE(defaults->persistentDomainForName(QStringLiteral("folder/inside")).isEmpty());
    EXPECT_TRUE(defaults->persistentDomainForName(QString()).isEmpty());
    EXPECT_TRUE(defaults->persistentDomainForName(QStringLiteral("a") + QChar(u'\0')).isEmpty());
}

} // namespace
