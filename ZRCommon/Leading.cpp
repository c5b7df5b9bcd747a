#include "ZRCommon/Leading.h"

#include <QTextBlock>
#include <QTextCursor>

#include <cmath>
#include <optional>

namespace Leading {

namespace {

void setFormat(const QTextBlock &block, const QTextBlockFormat &format)
{
    QTextCursor(block).setBlockFormat(format);
}

// Changes the style of every run that begins before the end of the range. `changed` answers the new style for
// that of a run.
template <class Change>
void changeRuns(QTextDocument &document, Range range, const Change &changed)
{
    const qint64 end = qint64(range.location) + range.length;
    QTextCursor step(&document);
    bool stepIsOpen = false;
    QTextBlock block = document.begin();
    while (block.isValid() && block.position() < end) {
        const QTextBlockFormat runFormat = block.blockFormat();
        const QTextBlockFormat newFormat = changed(runFormat);
        if (newFormat != runFormat && !stepIsOpen) {
            step.beginEditBlock();
            stepIsOpen = true;
        }
        for (; block.isValid() && block.blockFormat() == runFormat; block = block.next()) {
            if (newFormat != runFormat)
                setFormat(block, newFormat);
        }
    }
    if (stepIsOpen)
        step.endEditBlock();
}

std::optional<Qt::Alignment> alignmentOfTheToolkit(Alignment alignment)
{
    switch (alignment) {
    case Alignment::Left:
        return Qt::AlignLeft | Qt::AlignAbsolute;
    case Alignment::Right:
        return Qt::AlignRight | Qt::AlignAbsolute;
    case Alignment::Center:
        return Qt::AlignHCenter;
    case Alignment::Justified:
        return Qt::AlignJustify;
    case Alignment::Natural:
        return Qt::Alignment();
    }
    return std::nullopt;
}

float lineSpacing(const QTextBlockFormat &format)
{
    return format.lineHeightType() == QTextBlockFormat::LineDistanceHeight ? float(format.lineHeight()) : 0.0f;
}

} // namespace

void changeAlignment(QTextDocument &document, Alignment alignment, Range range)
{
    const std::optional<Qt::Alignment> wanted = alignmentOfTheToolkit(alignment);
    if (!wanted)
        return;
    changeRuns(document, range, [&](QTextBlockFormat format) {
        if (alignment == Alignment::Natural)
            format.clearProperty(QTextFormat::BlockAlignment);
        else
            format.setAlignment(*wanted);
        return format;
    });
}

void changeLeading(QTextDocument &document, float leading, Range range)
{
    changeRuns(document, range, [&](QTextBlockFormat format) {
        const float spacing = lineSpacing(format) + leading;
        if (spacing > 0.0f && std::isfinite(spacing))
            format.setLineHeight(double(spacing), QTextBlockFormat::LineDistanceHeight);
        return format;
    });
}

} // namespace Leading
