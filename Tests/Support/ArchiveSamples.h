#pragma once

#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/KeyedUnarchiver.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

/// Host classes with keys of their own, as archives hold them.
namespace archiveSamples {

/// A photo that slides share.
class Picture : public platform::Object, public platform::KeyedCoding
{
    ZR_OBJECT(Picture, platform::Object)
public:
    Picture() = default;
    explicit Picture(QString itsPath)
        : path(std::move(itsPath))
    { }

    void encodeWithKeyedArchiver(platform::KeyedArchiver &archiver) const override { archiver.encode(path, "path"); }
    void decodeFromKeyedUnarchiver(platform::KeyedUnarchiver &unarchiver) override
    {
        path = unarchiver.decodeString("path");
    }

    QString path;
};

/// A slide that knows its neighbours, one of them weakly, and holds others.
class Slide : public platform::Object, public platform::KeyedCoding
{
    ZR_OBJECT(Slide, platform::Object)
public:
    Slide() = default;
    explicit Slide(QString itsTitle)
        : title(std::move(itsTitle))
    { }

    void encodeWithKeyedArchiver(platform::KeyedArchiver &archiver) const override
    {
        archiver.encode(title, "title");
        archiver.encodeDouble(seconds, "seconds");
        archiver.encodeInt32(transition, "transition");
        archiver.encodeObject(picture, "picture");
        archiver.encodeObject(previous.lock(), "previous");
        archiver.encodeObject(next, "next");
        archiver.encode(parts, "parts");
    }
    void decodeFromKeyedUnarchiver(platform::KeyedUnarchiver &unarchiver) override
    {
        title = unarchiver.decodeString("title");
        seconds = unarchiver.decodeDouble("seconds");
        transition = unarchiver.decodeInt32("transition");
        picture = unarchiver.decodeObjectOfClass<Picture>("picture");
        previous = unarchiver.decodeObjectOfClass<Slide>("previous");
        next = unarchiver.decodeObjectOfClass<Slide>("next");
        parts = unarchiver.decodeObjectsOfClass<Slide>("parts");
    }

    QString title;
    double seconds = 0;
    qint32 transition = 0;
    std::shared_ptr<Picture> picture;
    std::weak_ptr<Slide> previous;
    std::shared_ptr<Slide> next;
    QList<std::shared_ptr<Slide>> parts;
};

inline std::vector<std::weak_ptr<Slide>> &decodedSlides()
{
    static std::vector<std::weak_ptr<Slide>> slides;
    return slides;
}

/// Lets the slides go that were decoded since the last call and hold each other in a circle, as no host would write
/// them.
inline void breakCircles()
{
    for (const auto &each : std::exchange(decodedSlides(), {})) {
        if (const auto slide = each.lock()) {
            slide->next.reset();
            slide->parts.clear();
        }
    }
}

inline platform::ArchiveClasses classes()
{
    platform::ArchiveClasses classes;
    classes.registerClass<Slide>(QStringLiteral("Slide"), {QStringLiteral("NSObject")}, [] {
        auto slide = std::make_shared<Slide>();
        decodedSlides().push_back(slide);
        return slide;
    });
    classes.registerClass<Picture>(QStringLiteral("Picture"), {QStringLiteral("Asset"), QStringLiteral("NSObject")});
    return classes;
}

/// The archive's bytes; fails the running test when it cannot be written.
inline QByteArray finished(platform::KeyedArchiver &archiver)
{
    const auto bytes = archiver.finishEncoding();
    if (bytes)
        return bytes.value();
    ADD_FAILURE() << qPrintable(bytes.error().toString());
    return {};
}

/// An archive with these elements of "$objects" behind "$null", and its top: XML each.
inline QByteArray archive(const QByteArray &objects,
                          const QByteArray &top = "<key>root</key>"
                              + QByteArray("<dict><key>CF$UID</key><integer>1</integer></dict>"))
{
    return "<plist version=\"1.0\"><dict><key>$archiver</key><string>NSKeyedArchiver</string><key>$version</key>"
           "<integer>100000</integer><key>$top</key><dict>"
        + top + "</dict><key>$objects</key><array><string>$null</string>" + objects + "</array></dict></plist>";
}

inline QByteArray uid(int number)
{
    return "<dict><key>CF$UID</key><integer>" + QByteArray::number(number) + "</integer></dict>";
}

/// A class record.
inline QByteArray classRecord(const QByteArray &name)
{
    return "<dict><key>$classes</key><array><string>" + name
        + "</string><string>NSObject</string></array><key>$classname</key><string>" + name + "</string></dict>";
}

/// A record of the class that stands as the given object, with further keys.
inline QByteArray record(int classNumber, const QByteArray &content)
{
    return "<dict><key>$class</key>" + uid(classNumber) + content + "</dict>";
}

/// An array in place, with references.
inline QByteArray references(const QByteArray &key, const QList<int> &numbers)
{
    QByteArray result = "<key>" + key + "</key><array>";
    for (const int number : numbers)
        result += uid(number);
    return result + "</array>";
}

} // namespace archiveSamples
