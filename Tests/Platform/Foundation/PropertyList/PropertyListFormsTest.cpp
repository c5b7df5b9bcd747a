#include "Platform/Foundation/PropertyList/PropertyListReaders_p.h"

#include <QStringEncoder>

#include <gtest/gtest.h>

using namespace platform;

namespace {

struct Form {
    QStringConverter::Encoding converter;
    TextEncoding encoding;
    int unit;
};
const Form forms[] = {{QStringConverter::Utf16LE, TextEncoding::Utf16LittleEndian, 2},
                      {QStringConverter::Utf16BE, TextEncoding::Utf16BigEndian, 2},
                      {QStringConverter::Utf32LE, TextEncoding::Utf32LittleEndian, 4},
                      {QStringConverter::Utf32BE, TextEncoding::Utf32BigEndian, 4}};

enum class Mark { Without, With };

QByteArray encoded(const QString &text, const Form &form, Mark mark)
{
    QStringEncoder encoder(form.converter,
                           mark == Mark::With ? QStringConverter::Flag::WriteBom : QStringConverter::Flag::Default);
    return encoder(text);
}

TEST(PropertyListForms, AreRecognisedWithAndWithoutByteOrderMark)
{
    for (const Form &form : forms) {
        for (const char16_t *text : {u"<true/>", u"{ a = b; }", u"<?xml version=\"1.0\"?>"}) {
            const auto without = detectTextForm(encoded(QString::fromUtf16(text), form, Mark::Without));
            EXPECT_EQ(without.encoding, form.encoding);
            EXPECT_EQ(without.markLength, 0);
            const auto with = detectTextForm(encoded(QString::fromUtf16(text), form, Mark::With));
            EXPECT_EQ(with.encoding, form.encoding);
            EXPECT_EQ(with.markLength, form.unit);
        }
    }
    EXPECT_EQ(detectTextForm("\xEF\xBB\xBF<").markLength, 3);
    for (const char *text : {"", "<", "<a", "<true/>", "\xFF", "\xEF\xBB"}) {
        EXPECT_EQ(detectTextForm(text).encoding, TextEncoding::Utf8) << text;
        EXPECT_EQ(detectTextForm(text).markLength, 0) << text;
    }
}

TEST(PropertyListForms, WideTextIsReadInXmlAndOldStyle)
{
    for (const Form &form : forms) {
        for (const Mark mark : {Mark::Without, Mark::With}) {
            const QString xml = QStringLiteral(
                "<?xml version='1.0' encoding='UTF-16'?><dict><key>Größe</key><string>\U0001F3B5 €</string></dict>");
            const auto list = PropertyList::parse(encoded(xml, form, mark));
            ASSERT_TRUE(list) << qPrintable(list.error().toString());
            EXPECT_EQ(list.value().value(u"Größe").toString(), QString::fromUcs4(U"\U0001F3B5 €"));
            const auto oldStyle = PropertyList::parse(encoded(QStringLiteral("{ a = \"\u00FC\"; }"), form, mark));
            ASSERT_TRUE(oldStyle) << qPrintable(oldStyle.error().toString());
            EXPECT_EQ(oldStyle.value().value(u"a").toString(), u"\u00FC");
        }
    }
}

TEST(PropertyListForms, ErrorsInWideTextStandWhereTheyAreInTheFile)
{
    for (const Form &form : forms) {
        const QString before = QStringLiteral("<!-- \U0001F3B5ü --><array>"); // 25 units of UTF-16, 24 characters
        const int units = form.unit == 2 ? int(before.size()) : int(before.toUcs4().size());
        for (const Mark mark : {Mark::Without, Mark::With}) {
            const auto list = PropertyList::parse(encoded(before + QStringLiteral("<int/></array>"), form, mark));
            ASSERT_FALSE(list);
            EXPECT_EQ(list.error().byteOffset, (units + (mark == Mark::With ? 1 : 0)) * form.unit);
        }
    }
}

TEST(PropertyListForms, BrokenWideTextIsRefused)
{
    const auto errorOf = [](const QByteArray &bytes) {
        const auto utf8 = transcodeToUtf8(bytes, detectTextForm(bytes));
        return utf8 ? QString() : utf8.error().toString();
    };
    const QByteArray start("\xFF\xFE<\0", 4);
    EXPECT_EQ(errorOf(start + QByteArray("\0\xD8", 2)), u"byte 4: surrogate without its other half");
    EXPECT_EQ(errorOf(start + QByteArray("\0\xD8z\0", 4)), u"byte 4: surrogate without its other half");
    EXPECT_EQ(errorOf(start + QByteArray("\0\xDC", 2)), u"byte 4: surrogate without its other half");
    EXPECT_EQ(errorOf(start + 'a'), u"byte 4: the last character is cut off");
    EXPECT_EQ(errorOf(QByteArray("\xFF\xFE\0\0\0\0\x11\0", 8)), u"byte 4: a number that is no character");
    EXPECT_EQ(errorOf(QByteArray("\xFF\xFE\0\0\0\xD8\0\0", 8)), u"byte 4: surrogate without its other half");
    EXPECT_EQ(errorOf(QByteArray("\xFF\xFE\0\0\0\0", 6)), u"byte 4: the last character is cut off");
}

TEST(PropertyListForms, TheDeclarationMayNameASingleByteEncoding)
{
    const auto stringIn = [](const QByteArray &encoding, const QByteArray &text) {
        const auto list = PropertyList::parse(
            QByteArray("<?xml version=\"1.0\" encoding=" + encoding + "?><string>" + text + "</string>"));
        return list ? list.value().toString() : list.error().toString();
    };
    EXPECT_EQ(stringIn("\"ISO-8859-1\"", "Gr\xFCn \x80"), u"Gr\u00FCn \u0080");
    EXPECT_EQ(stringIn("'windows-1252'", "\x80 \x93Gr\xFCn\x94 \x81"), u"\u20AC \u201CGr\u00FCn\u201D \u0081");
    EXPECT_EQ(stringIn("\"UTF-8\"", "Gr\xC3\xBCn"), u"Gr\u00FCn");
    EXPECT_EQ(stringIn("'utf8'", "a"), u"a");
    EXPECT_EQ(stringIn("\"US-ASCII\"", "a"), u"a");
}

TEST(PropertyListForms, ErrorsInSingleByteTextStandWhereTheyAreInTheFile)
{
    const QByteArray before = "<?xml version='1.0' encoding='latin1'?><array><!-- \xE4\xF6\xFC -->";
    const auto list = PropertyList::parse(QByteArray(before + "<int/></array>"));
    ASSERT_FALSE(list);
    EXPECT_EQ(list.error().byteOffset, before.size());
}

TEST(PropertyListForms, OtherEncodingsAreRefusedWithTheirPlace)
{
    for (const char *name : {"foobar", "UTF-16", "Shift_JIS", "macintosh"}) {
        const auto list =
            PropertyList::parse(QByteArray("<?xml version=\"1.0\" encoding=\"" + QByteArray(name) + "\"?><true/>"));
        ASSERT_FALSE(list) << name;
        EXPECT_EQ(list.error().code, ErrorCode::UnsupportedEncoding);
        EXPECT_EQ(list.error().byteOffset, 30);
    }
    EXPECT_FALSE(PropertyList::parse("\xEF\xBB\xBF<?xml version='1.0' encoding='ISO-8859-1'?><true/>"));
}

TEST(PropertyListForms, AByteOrderMarkCountsInOffsets)
{
    const auto list = PropertyList::parse("\xEF\xBB\xBF<array><int/></array>");
    ASSERT_FALSE(list);
    EXPECT_EQ(list.error().byteOffset, 10);
}

TEST(PropertyListForms, DataOfTheOldStyleIsNoMarkup)
{
    const auto list = PropertyList::parse("<0fbd 77>");
    ASSERT_TRUE(list) << qPrintable(list.error().toString());
    EXPECT_EQ(list.value().toData(), QByteArray("\x0f\xbd\x77"));
    EXPECT_TRUE(PropertyList::parse(" <data>QUJD</data>"));
    EXPECT_TRUE(PropertyList::parse("\n<dict/>"));
}

TEST(PropertyListForms, BytesThatAreNoListAreRefused)
{
    for (const char *text : {"bplist", "bplist00", "<", "</", "<!", "<?", "<?xml",
                             "<?xml version='1.0' encoding=", "<?xml version='1.0' encoding='"})
        EXPECT_FALSE(PropertyList::parse(text)) << text;
}

} // namespace
