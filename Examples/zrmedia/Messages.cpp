#include "Messages.h"

#include "StandardDescriptors.h"
#include "ZRCommon/ZRLocalizedString.h"

#include <utility>

namespace {

QString localizedReason(const QString &reason)
{
    const std::pair<QLatin1String, QString> reasons[] = {
        {QLatin1String("there is no such file"), ZRLocalizedString("there is no such file")},
        {QLatin1String("it is not a regular file"), ZRLocalizedString("it is not a regular file")},
        {QLatin1String("the file cannot be opened for reading"),
         ZRLocalizedString("the file cannot be opened for reading")},
        {QLatin1String("the file cannot be read to its end"), ZRLocalizedString("the file cannot be read to its end")},
        {QLatin1String("the file is larger than 4 GiB"), ZRLocalizedString("the file is larger than 4 GiB")},
        {QLatin1String("not enough memory for the file"), ZRLocalizedString("not enough memory for the file")},
        {QLatin1String("this is no property list"), ZRLocalizedString("this is no property list")},
        {QLatin1String("the property list is no dictionary"), ZRLocalizedString("the property list is no dictionary")},
        {QLatin1String("it holds neither playlists nor tracks"),
         ZRLocalizedString("it holds neither playlists nor tracks")},
        {QLatin1String("it holds neither albums nor photos"), ZRLocalizedString("it holds neither albums nor photos")},
        {QLatin1String("it expands without measure"), ZRLocalizedString("it expands without measure")},
        {QLatin1String("the file is empty"), ZRLocalizedString("the file is empty")},
        {QLatin1String("it begins like no picture"), ZRLocalizedString("it begins like no picture")},
        {QLatin1String("the file is too large"), ZRLocalizedString("the file is too large")},
        {QLatin1String("there is not enough memory to read it"),
         ZRLocalizedString("there is not enough memory to read it")},
        {QLatin1String("its name is not UTF-8"), ZRLocalizedString("its name is not UTF-8")},
        {QLatin1String("its thumbnail cannot be written"), ZRLocalizedString("its thumbnail cannot be written")},
    };
    for (const auto &[english, localized] : reasons) {
        if (reason == english)
            return localized;
    }
    return reason;
}

} // namespace

void say(const QString &message)
{
    writeToStandardError(QByteArray("zrmedia: " + withVisibleControls(message).toUtf8() + '\n'));
}

QString withVisibleControls(const QString &text)
{
    QString visible;
    for (const QChar c : text) {
        if (c == QLatin1Char('\n'))
            visible += QLatin1String("\\n");
        else if (c == QLatin1Char('\r'))
            visible += QLatin1String("\\r");
        else if (c == QLatin1Char('\t'))
            visible += QLatin1String("\\t");
        else if (c.category() == QChar::Other_Control)
            visible += QStringLiteral("\\x%1").arg(c.unicode(), 2, 16, QLatin1Char('0'));
        else
            visible += c;
    }
    return visible;
}

QString quoted(const QString &name)
{
    return ZRLocalizedString("\"%1\"").arg(name);
}

QString described(const platform::Error &error)
{
    platform::Error localized = error;
    localized.reason = localizedReason(error.reason);
    return localized.toString();
}
