#include "Platform/Interface/DragRunner.h"

#include <QUrl>

#include <gtest/gtest.h>

using platform::Drag;

namespace {

Drag dragOf(QWidget *source, std::unique_ptr<QMimeData> data = std::make_unique<QMimeData>())
{
    Drag drag;
    drag.data = std::move(data);
    drag.source = source;
    return drag;
}

} // namespace

TEST(DragRunner, RunsWhateverStandsInForTheWindowSystem)
{
    QWidget widget;
    int runs = 0;
    const auto former = platform::setDragRunner([&](Drag &drag) {
        ++runs;
        EXPECT_EQ(drag.source, &widget);
        return Qt::CopyAction;
    });
    EXPECT_FALSE(former);
    EXPECT_EQ(platform::runDrag(dragOf(&widget)), Qt::CopyAction);
    EXPECT_EQ(platform::runDrag(dragOf(nullptr)), Qt::IgnoreAction);
    EXPECT_EQ(platform::runDrag(dragOf(&widget, nullptr)), Qt::IgnoreAction);
    EXPECT_EQ(runs, 1);
    EXPECT_TRUE(platform::setDragRunner(former));
}

TEST(DragRunner, ARunnerMayReplaceItselfAndDestroyTheSource)
{
    auto *widget = new QWidget;
    platform::setDragRunner([&](Drag &drag) {
        platform::setDragRunner({});
        delete widget;
        EXPECT_FALSE(drag.source);
        return Qt::MoveAction;
    });
    EXPECT_EQ(platform::runDrag(dragOf(widget)), Qt::MoveAction);
    EXPECT_FALSE(platform::setDragRunner({}));
}

TEST(DragRunner, FilesAreUrlsAndText)
{
    const auto data = platform::fileNamesData({QStringLiteral("/a/b c.jpg"), QString::fromUtf8("/ü#%.png")});
    EXPECT_EQ(data->urls(),
              QList<QUrl>({QUrl::fromLocalFile("/a/b c.jpg"), QUrl::fromLocalFile(QString::fromUtf8("/ü#%.png"))}));
    EXPECT_EQ(data->text(), QString::fromUtf8("/a/b c.jpg\n/ü#%.png"));
    const auto none = platform::fileNamesData({});
    EXPECT_TRUE(none->hasFormat(QStringLiteral("text/uri-list")));
    EXPECT_TRUE(none->urls().isEmpty());
}
