#pragma once

#include <QLabel>
#include <QString>

/// A length of time, such as "0:40" or "1:02:05".
QString timeText(double seconds);

/// What a file or folder is called: its name, or the whole path where it has none.
QString nameOfPath(const QString &path);

/// A text of any letters, so that what stands beside it stays in its order.
QString isolated(const QString &text);

/// A label that shows as much of a plain text as there is room for, and all of it as its tool tip.
class ElidedLabel : public QLabel
{
    Q_OBJECT

public:
    explicit ElidedLabel(QWidget *parent = nullptr);
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QString shownText() const;
};
