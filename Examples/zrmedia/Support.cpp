#include "Support.h"

#include "JsonWriter.h"
#include "Messages.h"
#include "Output.h"
#include "Progress.h"
#include "ZRCommon/ZRLocalizedString.h"

#include <QEventLoop>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <exception>
#include <new>

namespace {

void writeDate(const QDateTime &date, JsonWriter &json)
{
    if (date.isValid())
        json.string(date.toUTC().toString(Qt::ISODate));
    else
        json.null();
}

} // namespace

Failure withoutExceptions(const Arguments &arguments, const std::function<Failure()> &command)
{
    try {
        return command();
    } catch (const std::bad_alloc &) {
        return arguments.file + QStringLiteral(": ") + ZRLocalizedString("not enough memory");
    } catch (const std::exception &exception) {
        return arguments.file + QStringLiteral(": ") + QString::fromUtf8(exception.what());
    }
}

Failure undecodableFile(const Arguments &arguments, const QList<QByteArray> &rawWords)
{
#ifdef Q_OS_UNIX
    for (const QByteArray &word : rawWords) {
        if (QByteArrayView(word).isValidUtf8()
            || (QString::fromLocal8Bit(word) != arguments.file && QString::fromLocal8Bit(word) != arguments.output))
            continue;
        QString name;
        for (const char c : word)
            name += uchar(c) < 0x80 ? QString(QLatin1Char(c)) : QStringLiteral("\\x%1").arg(uchar(c), 2, 16);
        return name + QStringLiteral(": ") + ZRLocalizedString("the file name is not UTF-8");
    }
#endif
    return {};
}

void fetchFile(const QString &path, const Arguments &arguments, Timings &timings)
{
    // Opening a pipe or device could wait for ever; the parser refuses them.
    if ((!arguments.showsTimings && !standardErrorIsTerminal()) || !QFileInfo(path).isFile())
        return;
    constexpr qint64 megabyte = 1'000'000;
    Timings::measured(timings.reading, [&] {
        QFile file(path);
        std::array<char, 256 * 1024> block;
        if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            return false;
        Progress progress(ZRLocalizedString("Reading"), QStringLiteral("MB"), file.size(), megabyte);
        qint64 done = 0;
        for (qint64 count = 0; (count = file.read(block.data(), qint64(block.size()))) > 0;)
            progress.setDone(done += count);
        return true;
    });
}

void waitForNotification(const QString &name, const platform::NotificationObject &object,
                         const std::function<void()> &start)
{
    QEventLoop loop;
    const platform::Observation observation = platform::NotificationCenter::defaultCenter().addObserver(
        [&loop](const platform::Notification &) { loop.quit(); }, name, object);
    start();
    loop.exec();
}

QString unknownName(const Arguments &arguments, const QString &text, const QStringList &names)
{
    constexpr qsizetype shownNames = 8;
    constexpr qsizetype longestName = 40;
    QStringList shown;
    for (const QString &name : names.first(std::min(names.size(), shownNames))) {
        const bool isShort = name.size() <= longestName;
        shown += quoted(isShort ? name : name.first(longestName) + QChar(0x2026));
    }
    QString list = shown.isEmpty() ? ZRLocalizedString("none") : shown.join(QStringLiteral(", "));
    if (names.size() > shown.size())
        list = ZRLocalizedString("%1 and %2 more").arg(list, QString::number(names.size() - shown.size()));
    return arguments.file + QStringLiteral(": ") + text.arg(arguments.collection, list);
}

void writeNames(const QStringList &names, Output &output)
{
    JsonWriter json(output, 1);
    json.beginArray();
    for (const QString &name : names)
        json.string(name);
    json.endArray();
    json.finish();
}

void writePhotos(const QList<std::shared_ptr<ZRImageThumbnail>> &photos, Output &output)
{
    Progress progress(ZRLocalizedString("Writing"), ZRLocalizedString("photos"), photos.size());
    progress.hideBesideOutput();
    JsonWriter json(output, 1);
    json.beginArray();
    qint64 done = 0;
    for (const auto &photo : photos) {
        if (output.hasFailed())
            break;
        json.beginObject();
        json.key("title");
        json.string(photo->title());
        json.key("imagePath");
        json.string(photo->imagePath());
        json.key("creationDate");
        writeDate(photo->creationDate(), json);
        json.endObject();
        progress.setDone(++done);
    }
    json.endArray();
    json.finish();
}
