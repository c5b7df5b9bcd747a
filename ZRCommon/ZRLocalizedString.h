#pragma once

#include "Platform/Foundation/LocalizedString.h"

/// The framework's texts in the user's language, under the name that `ZRCommon` and hosts use:
/// see `platform::localizedString`. Any thread.
///
/// A text of a host's own that is not in the framework's tables comes back as it is. The host translates it with a
/// QTranslator, or adds a resource table (see LocalizedString.h). One table serves a language: that of the host then
/// holds the framework's texts as well.
inline QString ZRLocalizedString(const char *text)
{
    return platform::localizedString(text);
}

/// The same in the form for a count.
inline QString ZRLocalizedString(const char *text, int count)
{
    return platform::localizedString(text, count);
}

namespace ZRLocalization {

/// Takes these languages in place of those of the default locale: see `platform::setLocalizedStringLanguages`.
inline void setLanguages(const QStringList &languages)
{
    platform::setLocalizedStringLanguages(languages);
}

} // namespace ZRLocalization
