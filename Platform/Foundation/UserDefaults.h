#pragma once

#include <QByteArray>
#include <QSettings>
#include <QString>
#include <QVariant>

#include <memory>
#include <mutex>

namespace platform {

/// What the user prefers: values under keys, kept from one run of the program to the next. A value is looked for
/// among what was set, which is the host's QSettings, and then among the registered defaults, which programs
/// register anew at each start and which are never stored.
///
/// The file behind it may have been edited by hand, and the settings' own format keeps most values as text: a
/// getter therefore takes whatever type it finds and makes the best of it, and gives its empty value for what makes
/// no sense. Names of groups in keys ("group/key") are those of QSettings. The empty key holds nothing.
///
/// Thread safety: every operation may be called on any thread.
class UserDefaults
{
public:
    /// The defaults of this application. They open QSettings at the first call: organisation and application must
    /// have their names by then.
    static UserDefaults &standard();

    /// Defaults over a store of one's own.
    explicit UserDefaults(std::unique_ptr<QSettings> settings);

    /// Adds values for keys that nothing was set for. What was registered for the same keys before is replaced.
    void registerDefaults(const QVariantMap &defaults);

    /// The value as it is stored; invalid when there is none.
    QVariant object(const QString &key) const;
    /// The text; a number or boolean as text. Empty for everything else.
    QString string(const QString &key) const;
    /// A boolean, or whether a number is not 0. Of a text, whether it begins, after blanks, a sign and zeros, with
    /// one of Y, y, T, t and 1 to 9: "YES", "true" and "12" are true, "NO", "false", "0" and "off" are not.
    bool boolean(const QString &key) const;
    /// The whole number; the one that a text begins with, after blanks ("12 pixels" is 12); reals are cut towards
    /// 0. Numbers that 64 bits cannot hold give the nearest that they can; what is no number gives 0.
    qint64 integer(const QString &key) const;
    /// The number; the one that a text begins with, after blanks, with a point in every locale. What is no finite
    /// number gives 0.
    double real(const QString &key) const;
    /// The bytes; empty for everything else.
    QByteArray data(const QString &key) const;
    /// The elements. A single text counts as an array of one, since the settings' format does not tell them apart;
    /// numbers in an array may come back as text. Empty for everything else.
    QVariantList array(const QString &key) const;

    /// Keeps the value under the key; an invalid one removes it. It is visible at once, and written soon.
    void set(const QString &key, const QVariant &value);
    /// Removes what was set. The registered default, if there is one, is visible again.
    void remove(const QString &key);

    /// Writes what was set to disk at once, and reads what others wrote.
    /// @return whether that worked.
    bool synchronize();

    /// The preferences of another application, read from its property list in the folder "Library/Preferences" of
    /// the user's home: that of "com.apple.iphoto" is "com.apple.iphoto.plist". They are read anew at each call.
    /// @return nothing when there is no such list, it is damaged, its root is no dictionary, or the name is none.
    QVariantMap persistentDomainForName(const QString &name) const;

    /// Forgets everything: what was set, on disk too and at once, and what was registered. For tests. What the user
    /// prefers is gone for good, and defaults that parts of the program registered at its start stay away until they
    /// are registered anew; a program that offers its user a fresh start removes its own keys instead.
    void clear();

private:
    mutable std::mutex m_mutex; // QSettings is not to be used by several threads at once
    std::unique_ptr<QSettings> m_settings;
    QVariantMap m_registered;
};

} // namespace platform
