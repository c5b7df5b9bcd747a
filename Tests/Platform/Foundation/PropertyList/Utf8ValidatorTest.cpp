#include "Platform/Foundation/PropertyList/Utf8Validator_p.h"

#include <QByteArray>
#include <QRandomGenerator>

#include <gtest/gtest.h>

using namespace platform;

namespace {

void expectValidLength(const QByteArray &text, qsizetype expected)
{
    EXPECT_EQ(validUtf8Length(text, InstructionSet::Plain), expected) << text.toHex().constData();
    EXPECT_EQ(validUtf8Length(text, bestInstructionSet()), expected) << text.toHex().constData();
}

TEST(Utf8Validator, TakesTheLimitsOfEveryLength)
{
    expectValidLength(QByteArray(), 0);
    for (const char *character : {"\x7F", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80",
                                  "\xEF\xBF\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"}) {
        for (int before = 0; before < 130; ++before) {
            const QByteArray text = QByteArray(before, 'a') + character + QByteArray(70, 'b');
            expectValidLength(text, text.size());
            expectValidLength(QByteArray(before, 'a') + character, before + qsizetype(qstrlen(character)));
        }
    }
}

TEST(Utf8Validator, FindsEveryKindOfErrorWhereverItStands)
{
    for (const char *error : {"\x80",
                              "\xBF",
                              "\xC0\x80",
                              "\xC1\xBF",
                              "\xC2",
                              "\xC2\x41",
                              "\xE0\x9F\xBF",
                              "\xE1\x80",
                              "\xE1\x80\x41",
                              "\xE1\x41\x80",
                              "\xED\xA0\x80",
                              "\xED\xBF\xBF",
                              "\xF0\x8F\xBF\xBF",
                              "\xF1\x80\x80",
                              "\xF1\x80\x80\x41",
                              "\xF4\x90\x80\x80",
                              "\xF5\x80\x80\x80",
                              "\xF8\x88\x80\x80\x80",
                              "\xFE",
                              "\xFF"}) {
        for (int before = 0; before < 130; ++before) {
            expectValidLength(QByteArray(before, 'a') + error, before);
            expectValidLength(QByteArray(before, 'a') + error + QByteArray(70, 'b'), before);
            expectValidLength(QByteArray("\xC3\xBC").repeated(before) + error + QByteArray("\xC3\xBC").repeated(40),
                              before * 2);
        }
    }
}

TEST(Utf8Validator, AContinuationTooManyIsTheError)
{
    for (int before = 0; before < 70; ++before)
        expectValidLength(QByteArray(before, 'a') + "\xC3\xBC\x80" + QByteArray(70, 'a'), before + 2);
}

TEST(Utf8Validator, AgreesWithThePlainWayOnRandomBytes)
{
    QRandomGenerator random(5);
    const char *const pieces[] = {
        "a", "bcdefgh", "\xC3\xBC", "\xE6\x9D\xB1", "\xF0\x9F\x8E\xB5", "\xED\x9F\xBF", "\xF4\x8F\xBF\xBF"};
    for (int round = 0; round < 20000; ++round) {
        QByteArray text;
        while (text.size() < round % 300)
            text += pieces[random.bounded(7)];
        for (int flips = random.bounded(3); flips > 0 && !text.isEmpty(); --flips)
            text[random.bounded(int(text.size()))] = char(random.bounded(256));
        text.truncate(text.size() - random.bounded(4));
        ASSERT_EQ(validUtf8Length(text, InstructionSet::Plain), validUtf8Length(text, bestInstructionSet()))
            << text.toHex().constData();
    }
}

} // namespace
