#include "ZRCommon/ZRLocalizedString.h"

#include "Support/TestSupport.h"

#include <QDirIterator>
#include <QLocale>
#include <QRegularExpression>
#include <QXmlStreamReader>

#include <map>
#include <thread>

namespace {

struct ZRLocalizedStringTest : testing::Test {
    const QLocale before;
    ~ZRLocalizedStringTest() override
    {
        ZRLocalization::setLanguages({});
        QLocale::setDefault(before);
    }
};

TEST_F(ZRLocalizedStringTest, FollowsTheLocaleOfTheHost)
{
    QLocale::setDefault(QLocale(QStringLiteral("de_DE")));
    EXPECT_EQ(ZRLocalizedString("Songs"), QStringLiteral("Titel"));
    QLocale::setDefault(QLocale(QStringLiteral("de_AT")));
    EXPECT_EQ(ZRLocalizedString("Songs"), QStringLiteral("Titel"));
    QLocale::setDefault(QLocale(QStringLiteral("en_US")));
    EXPECT_EQ(ZRLocalizedString("Songs"), QStringLiteral("Songs"));
    QLocale::setDefault(QLocale::c());
    EXPECT_EQ(ZRLocalizedString("Songs"), QStringLiteral("Songs"));
}

TEST_F(ZRLocalizedStringTest, TakesTheFirstOfTheLanguagesThatIsKnown)
{
    ZRLocalization::setLanguages({QStringLiteral("xx-YY"), QStringLiteral("de-DE"), QStringLiteral("en-US")});
    EXPECT_EQ(ZRLocalizedString("Songs"), QStringLiteral("Titel"));
    ZRLocalization::setLanguages({QStringLiteral("en-GB"), QStringLiteral("de")});
    EXPECT_EQ(ZRLocalizedString("Songs"), QStringLiteral("Songs")) << "English, which is told before";
    ZRLocalization::setLanguages({QStringLiteral("xx"), QString(), QStringLiteral("../de")});
    EXPECT_EQ(ZRLocalizedString("Songs"), QStringLiteral("Songs"));
    QLocale::setDefault(QLocale(QStringLiteral("de_DE")));
    ZRLocalization::setLanguages({});
    EXPECT_EQ(ZRLocalizedString("Songs"), QStringLiteral("Titel"));
}

TEST_F(ZRLocalizedStringTest, GivesATextThatNoTableHasAsItIs)
{
    ZRLocalization::setLanguages({QStringLiteral("de")});
    EXPECT_EQ(ZRLocalizedString("No such \xC3\xBC text"), QStringLiteral("No such ü text"));
    EXPECT_EQ(ZRLocalizedString(""), QString());
}

TEST_F(ZRLocalizedStringTest, KnowsThePluralFormsOfALanguageThatTheHostAdds)
{
    ZRLocalization::setLanguages({QStringLiteral("pl-PL")});
    const std::pair<int, const char *> rows[] = {
        {1, "1 utwór w A"}, {2, "2 utwory w A"}, {5, "5 utworów w A"}, {22, "22 utwory w A"}, {0, "0 utworów w A"}};
    for (const auto &[count, text] : rows)
        EXPECT_EQ(ZRLocalizedString("%n songs in %1", count).arg(QStringLiteral("A")).toStdString(), text);
}

TEST_F(ZRLocalizedStringTest, PutsTheCountInWhereNoTableHasTheText)
{
    ZRLocalization::setLanguages({QStringLiteral("en")});
    EXPECT_EQ(ZRLocalizedString("%n songs in %1", 5), QStringLiteral("5 songs in %1"));
    EXPECT_EQ(ZRLocalizedString("%n pears", -1), QStringLiteral("-1 pears"));
}

TEST_F(ZRLocalizedStringTest, CountsInEnglishAndAsTheLocaleWritesNumbers)
{
    EXPECT_EQ(ZRLocalizedString("%n slides", 1), QStringLiteral("1 slide"));
    EXPECT_EQ(ZRLocalizedString("%n slides", 0), QStringLiteral("0 slides"));
    QLocale::setDefault(QLocale(QStringLiteral("en_US")));
    EXPECT_EQ(ZRLocalizedString("%n slides", 12345), QStringLiteral("12,345 slides"));
    ZRLocalization::setLanguages({QStringLiteral("xx")});
    EXPECT_EQ(ZRLocalizedString("%n slides", 1), QStringLiteral("1 slide"));
    ZRLocalization::setLanguages({QStringLiteral("de")});
    EXPECT_EQ(ZRLocalizedString("%n slides", 1), QStringLiteral("1 Folie"));
}

TEST_F(ZRLocalizedStringTest, AnswersOnAnyThread)
{
    std::thread other([] {
        for (int number = 0; number < 100; ++number)
            ZRLocalization::setLanguages({number % 2 ? QStringLiteral("de") : QStringLiteral("en")});
    });
    for (int number = 0; number < 100; ++number) {
        const QString text = ZRLocalizedString("Songs");
        EXPECT_TRUE(text == QStringLiteral("Titel") || text == QStringLiteral("Songs"));
    }
    other.join();
}

// The texts of a translation's source file that are translated; true for those with forms for a count.
std::map<QString, bool> translatedTexts(const QString &path)
{
    std::map<QString, bool> result;
    const QByteArray bytes = testSupport::readFile(path);
    QXmlStreamReader xml(bytes);
    QString source;
    bool hasForms = false;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (xml.name() == QLatin1String("message"))
            hasForms = xml.attributes().value(QStringLiteral("numerus")) == QLatin1String("yes");
        else if (xml.name() == QLatin1String("source"))
            source = xml.readElementText();
        else if (xml.name() == QLatin1String("translation") && xml.attributes().isEmpty())
            result[source] = hasForms;
    }
    EXPECT_FALSE(xml.hasError()) << qPrintable(path) << qPrintable(xml.errorString());
    return result;
}

TEST_F(ZRLocalizedStringTest, EveryTextInTheSourcesIsTranslated)
{
    const QString root = QStringLiteral(ZR_SOURCE_DIR);
    const auto german = translatedTexts(root + QStringLiteral("/Resources/translations/zrcommon_de.ts"));
    const auto english = translatedTexts(root + QStringLiteral("/Resources/translations/zrcommon_en.ts"));
    EXPECT_TRUE(german.count(QStringLiteral("Songs")));
    const QRegularExpression call(
        QStringLiteral("\\b(?:ZRL|l)ocalizedString\\(\\s*(\"((?:[^\"\\\\]|\\\\.)*)\"\\s*([,)]))?"));
    QStringList paths;
    for (const char *folder : {"/Platform", "/ZRCommon", "/Examples/zrmedia", "/Examples/Storyboard"}) {
        QDirIterator files(root + QLatin1String(folder), {QStringLiteral("*.cpp"), QStringLiteral("*.h")}, QDir::Files);
        while (files.hasNext())
            paths.append(files.next());
    }
    for (const QString &path : std::as_const(paths)) {
        if (QFileInfo(path).completeBaseName().endsWith(QLatin1String("LocalizedString")))
            continue;
        const QString code = QString::fromUtf8(testSupport::readFile(path));
        for (QRegularExpressionMatchIterator calls = call.globalMatch(code); calls.hasNext();) {
            const QRegularExpressionMatch match = calls.next();
            const QString text = match.captured(2).replace(QLatin1String("\\\""), QLatin1String("\""));
            const auto found = german.find(text);
            EXPECT_TRUE(match.hasCaptured(2)) << qPrintable(path) << ": the text must be one literal";
            if (found == german.end())
                ADD_FAILURE() << qPrintable(path) << ": no German for \"" << qPrintable(text) << "\"";
            else
                EXPECT_EQ(found->second, match.captured(3) == u',') << qPrintable(text) << ": forms for a count";
            EXPECT_EQ(english.count(text), match.captured(3) == u',' ? 1U : 0U) << qPrintable(text);
        }
    }
}

} // namespace
