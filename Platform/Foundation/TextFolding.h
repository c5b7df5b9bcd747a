#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QStringView>

/// Text in the one form in which it is compared "without regard to case": canonical composition first
/// (Unicode normalization form C), then simple case folding of each code point (the mappings C and S of
/// Unicode's CaseFolding.txt, locale-independent), written as UTF-8.
///
/// Two texts are equal without regard to case when their folded bytes are equal, one occurs in the other when
/// its folded bytes do, and the order of folded bytes is the order of folded code points.
///
/// Folded text is UTF-8 with one exception: a lone surrogate, which only UTF-16 text can hold, is kept as the
/// three bytes that its number would have. No folded text ever holds a byte above 0xF4.
///
/// Any thread.
namespace platform::TextFolding {

/// The folded text.
QByteArray folded(QStringView text);

/// The same of UTF-8. Bytes that are no UTF-8 count as U+FFFD, as in QString::fromUtf8; unlike there, a
/// leading U+FEFF stays.
QByteArray folded(QByteArrayView utf8);

/// Appends the folded text to the end of `arena`, so that many texts share one block of memory. ASCII costs
/// little more than a copy; most other text is folded without being normalized first.
void appendFolded(QByteArray &arena, QByteArrayView utf8);

/// Whether the text equals one that is folded already.
bool equalsFolded(QByteArrayView utf8, QByteArrayView foldedText);

} // namespace platform::TextFolding
