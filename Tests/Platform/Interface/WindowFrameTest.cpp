#include "Platform/Interface/WindowFrame_p.h"

#include <gtest/gtest.h>

namespace {

using platform::frameOnScreens;
using platform::WindowFrame;

TEST(WindowFrameTest, GoesToTextAndBack)
{
    for (const WindowFrame &frame :
         {WindowFrame{QRect(10, -20, 300, 400), false}, WindowFrame{QRect(0, 0, 1, 1), true}}) {
        const auto back = WindowFrame::fromText(frame.toText());
        ASSERT_TRUE(back);
        EXPECT_EQ(back->rect, frame.rect);
        EXPECT_EQ(back->isMaximized, frame.isMaximized);
    }
    EXPECT_EQ((WindowFrame{QRect(10, -20, 300, 400), false}.toText()), QStringLiteral("10 -20 300 400"));
    EXPECT_EQ((WindowFrame{QRect(1, 2, 3, 4), true}.toText()), QStringLiteral("1 2 3 4 maximized"));
}

TEST(WindowFrameTest, TakesNoGarbage)
{
    for (const char *text :
         {"", " ", "1 2 3", "1 2 3 4 5", "1 2 3 4 maximised", "1 2 3 4 maximized 5", "a b c d", "1 2 0 4", "1 2 3 0",
          "1 2 -3 4", "1 2 3 99999999999", "16777216 0 10 10", "0 -16777216 10 10", "0 0 16777216 10", "1.5 2 3 4",
          "1  2 3 4", "1 2 3 4 ", "nan 0 1 1", "0x1 0 1 1"})
        EXPECT_FALSE(WindowFrame::fromText(QString::fromLatin1(text))) << '"' << text << '"';
    EXPECT_TRUE(WindowFrame::fromText(QStringLiteral("-16777215 16777215 16777215 1")));
}

TEST(WindowFrameTest, LeavesAFrameThatTheScreensCover)
{
    const QList<QRect> screens = {QRect(0, 0, 1000, 800), QRect(1000, 0, 1000, 1000)};
    for (const QRect &frame : {QRect(0, 0, 1000, 800), QRect(900, 100, 200, 200), QRect(1500, 850, 100, 100)})
        EXPECT_EQ(frameOnScreens(frame, screens), frame);
}

TEST(WindowFrameTest, BringsAFrameOntoAScreen)
{
    const QList<QRect> screens = {QRect(0, 20, 1000, 780), QRect(1000, 0, 1000, 1000)};
    struct Row {
        QRect frame, result;
    };
    const Row rows[] = {
        {QRect(-50, 100, 200, 200), QRect(0, 100, 200, 200)}, // beyond the left edge
        {QRect(100, 0, 200, 200), QRect(100, 20, 200, 200)}, // below a menu bar
        {QRect(900, 900, 200, 200), QRect(1000, 800, 200, 200)}, // mostly of the second screen
        {QRect(5000, 5000, 200, 200), QRect(800, 600, 200, 200)}, // where a third one was
        {QRect(-16000000, -16000000, 200, 200), QRect(0, 20, 200, 200)},
        {QRect(1200, 100, 3000, 300), QRect(1000, 100, 1000, 300)}, // larger than any
        {QRect(16000000, 0, 16000000, 16000000), QRect(0, 20, 1000, 780)},
    };
    for (const Row &row : rows)
        EXPECT_EQ(frameOnScreens(row.frame, screens), row.result) << row.frame.x() << ' ' << row.frame.y();
}

TEST(WindowFrameTest, LeavesAFrameWhereThereIsNoScreen)
{
    EXPECT_EQ(frameOnScreens(QRect(1, 2, 3, 4), {}), QRect(1, 2, 3, 4));
}

} // namespace
