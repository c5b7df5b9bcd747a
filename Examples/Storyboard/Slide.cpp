#include "Slide.h"

#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/KeyedUnarchiver.h"

#include <QFileInfo>
#include <QUrl>

#include <algorithm>
#include <cmath>

namespace {

/// Without what no file can hold: control characters, halves of surrogate pairs and the like become spaces.
QString cleaned(const QString &title)
{
    std::u32string text = title.toStdU32String();
    std::replace_if(
        text.begin(), text.end(),
        [](char32_t c) { return QChar::isNonCharacter(c) || QChar::category(c) == QChar::Other_Control; }, U' ');
    return QString::fromStdU32String(text);
}

} // namespace

Slide::Slide(const QString &photoPath)
    : m_photoPath(photoPath)
{
    m_settings.title = cleaned(QFileInfo(photoPath).completeBaseName());
}

std::shared_ptr<Slide> Slide::duplicate() const
{
    auto copy = std::make_shared<Slide>();
    copy->m_photoPath = m_photoPath;
    copy->m_settings = m_settings;
    return copy;
}

Slide::Settings Slide::withinRanges(Settings settings)
{
    settings.title = cleaned(settings.title);
    settings.seconds =
        std::isfinite(settings.seconds) ? std::clamp(settings.seconds, shortest, longest) : Settings().seconds;
    if (int(settings.transition) < 0 || int(settings.transition) >= transitionCount)
        settings.transition = Settings().transition;
    const double turned = std::isfinite(settings.angle) ? std::fmod(settings.angle, 360) : 0;
    settings.angle = turned < 0 ? std::fmod(turned + 360, 360) : turned;
    return settings;
}

void Slide::encodeWithKeyedArchiver(platform::KeyedArchiver &archiver) const
{
    archiver.encode(QUrl::fromLocalFile(m_photoPath), "photo"); // which holds names of any characters
    archiver.encode(m_settings.title, "title");
    archiver.encodeDouble(m_settings.seconds, "seconds");
    archiver.encodeInt32(int(m_settings.transition), "transition");
    archiver.encodeDouble(m_settings.angle, "angle");
}

void Slide::decodeFromKeyedUnarchiver(platform::KeyedUnarchiver &unarchiver)
{
    m_photoPath = unarchiver.decodeUrl("photo").toLocalFile();
    Settings settings;
    settings.title = unarchiver.decodeString("title");
    if (unarchiver.containsValueForKey("seconds"))
        settings.seconds = unarchiver.decodeDouble("seconds");
    settings.transition = Transition(unarchiver.decodeInt32("transition"));
    settings.angle = unarchiver.decodeDouble("angle");
    setSettings(settings);
}
