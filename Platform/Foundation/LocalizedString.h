#pragma once

#include <QString>
#include <QStringList>

namespace platform {

/// The framework's own texts in the user's language. They are looked up in tables of the framework's own, so that a
/// host need not install a translator.
///
/// The language is the first of the languages of QLocale(), the host's default locale, that has a table, otherwise
/// English, the language of the sources, whose table has nothing but the forms for counts. A change of the default
/// locale counts from the next call on. Tables are Qt's compiled translations, resources named
/// ":/ZRCommon/translations/zrcommon_<language>.qm" (zrcommon_de, zrcommon_pt_BR) with the context "ZRCommon": a host
/// adds a language by adding such a resource.
///
/// Any thread.

/// The text in the user's language, or the text itself where no table has it. It is UTF-8, written as one literal
/// at the call, so that the tables can be checked against the sources. Values go in with QString::arg().
QString localizedString(const char *text);

/// The text in the form that the language has for the count, "%n" in it replaced by the number as the default locale
/// writes it. Where the table does not have it the text itself is taken.
QString localizedString(const char *text, int count);

/// Takes these languages ("de-DE", "de", "en"), the best first, in place of those of the default locale. An empty
/// list goes back to the default locale.
void setLocalizedStringLanguages(const QStringList &languages);

} // namespace platform
