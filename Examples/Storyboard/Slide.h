#pragma once

#include "Platform/Foundation/KeyedCoding.h"
#include "Platform/Foundation/Object.h"

#include <QString>

#include <memory>

/// A photo of a slide show, and how it is shown. The document makes and changes slides; everybody else looks at them.
/// Two slides of the same photo are two slides.
class Slide : public platform::Object, public platform::KeyedCoding
{
    ZR_OBJECT(Slide, platform::Object)

public:
    /// How the slide comes after the one before. The numbers stand in files.
    enum class Transition { None = 0, Dissolve = 1, Push = 2, Wipe = 3 };
    static constexpr int transitionCount = 4;
    static constexpr double shortest = 0.1, longest = 3600; // seconds

    /// What a person can set.
    struct Settings {
        QString title;
        double seconds = 5; ///< From `shortest` to `longest`.
        Transition transition = Transition::Dissolve;
        double angle = 0; ///< Degrees by which the photo is turned clockwise, from 0 to below 360.

        bool operator==(const Settings &) const = default;
    };

    /// For archives: a slide without a photo, until it is decoded.
    Slide() = default;
    /// @param photoPath the photo's file, whose name without its ending becomes the title
    explicit Slide(const QString &photoPath);
    /// Another slide of the same photo with the same settings.
    std::shared_ptr<Slide> duplicate() const;

    const QString &photoPath() const { return m_photoPath; }
    const Settings &settings() const { return m_settings; }
    /// Settings with what is out of its range brought into it.
    static Settings withinRanges(Settings settings);
    /// Internal: for the document, which announces the change. Takes them within their ranges.
    void setSettings(const Settings &settings) { m_settings = withinRanges(settings); }

    void encodeWithKeyedArchiver(platform::KeyedArchiver &archiver) const override;
    void decodeFromKeyedUnarchiver(platform::KeyedUnarchiver &unarchiver) override;

private:
    QString m_photoPath;
    Settings m_settings;
};
