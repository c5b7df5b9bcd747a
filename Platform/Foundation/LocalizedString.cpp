#include "Platform/Foundation/LocalizedString.h"

#include <QLocale>
#include <QTranslator>

#include <memory>
#include <mutex>
#include <optional>

namespace platform {

namespace {

// The table of one language.
class Table
{
public:
    static Table &shared()
    {
        static Table table;
        return table;
    }

    void setLanguages(const QStringList &languages)
    {
        const std::lock_guard lock(m_mutex);
        m_languages = languages;
        m_locale.reset();
    }

    QString text(const char *source, int count)
    {
        const std::lock_guard lock(m_mutex);
        if (m_locale != QLocale())
            load();
        const QString translated =
            m_translator ? m_translator->translate("ZRCommon", source, nullptr, count) : QString();
        return translated.isNull() ? QString::fromUtf8(source) : translated;
    }

private:
    void load()
    {
        m_locale = QLocale();
        m_translator.reset();
        const QStringList languages = m_languages.isEmpty() ? m_locale->uiLanguages() : m_languages;
        for (const QString &language : languages) {
            if (loadLanguage(language))
                return;
        }
        loadLanguage(QStringLiteral("en"));
    }

    // "de-AT" is tried as de_AT, then as de.
    bool loadLanguage(const QString &language)
    {
        auto translator = std::make_unique<QTranslator>();
        const QString name = QStringLiteral("zrcommon_") + QString(language).replace(u'-', u'_');
        if (!translator->load(name, QStringLiteral(":/ZRCommon/translations"), QStringLiteral("_")))
            return false;
        m_translator = std::move(translator);
        return true;
    }

    std::mutex m_mutex;
    QStringList m_languages; // in place of the locale's
    std::optional<QLocale> m_locale; // for which the translator was loaded
    std::unique_ptr<QTranslator> m_translator;
};

} // namespace

QString localizedString(const char *text)
{
    return Table::shared().text(text, -1);
}

QString localizedString(const char *text, int count)
{
    return Table::shared().text(text, count).replace(QLatin1String("%n"), QLocale().toString(count));
}

void setLocalizedStringLanguages(const QStringList &languages)
{
    Table::shared().setLanguages(languages);
}

} // namespace platform
