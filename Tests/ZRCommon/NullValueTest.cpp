#include "ZRCommon/NullValue.h"

#include <gtest/gtest.h>

TEST(NullValue, IsADash)
{
    EXPECT_EQ(NullValue::nullFieldValue(), QStringLiteral("-"));
}

TEST(NullValue, IsWrittenIntoAFieldAndRecognisedThere)
{
    QLineEdit field;
    EXPECT_FALSE(NullValue::isNullFieldValue(field));
    NullValue::setNullFieldValue(field);
    EXPECT_EQ(field.text(), QStringLiteral("-"));
    EXPECT_TRUE(NullValue::isNullFieldValue(field));
}

TEST(NullValue, IsRecognisedHoweverItCameAndOnlyWhenItIsTheWholeText)
{
    QLineEdit field;
    field.setText(QStringLiteral("-"));
    EXPECT_TRUE(NullValue::isNullFieldValue(field));
    for (const char *text : {"", "--", " -", "- ", "-5"}) {
        field.setText(QString::fromUtf8(text));
        EXPECT_FALSE(NullValue::isNullFieldValue(field)) << text;
    }
}
