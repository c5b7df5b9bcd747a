#pragma once

#include <QTextDocument>

/// Changes to whole paragraphs of a text: alignment and line spacing.
///
/// Both operations walk the text by its runs of equal paragraph style: neighbouring paragraphs whose block formats
/// are equal are one run. The walk begins at the start of the text, not of the range, and goes on up to the end of
/// the range. Every run that begins before that end is changed, each as a whole, even beyond the range: on a text
/// of one run any range that ends behind position 0 changes the whole text.
///
/// Positions are those of QTextDocument: every paragraph counts its characters and one for its end, the last one
/// and the only one of an empty document as well. A range may reach beyond the text; one that ends at position 0 or
/// before, whatever its location, changes nothing.
///
/// All changes of one call are one step for undo, and none when nothing changes. Main thread, or the document's.
namespace Leading {

/// How the lines of a paragraph stand. The numbers are those that stored documents hold.
enum class Alignment {
    Left = 0,
    Right = 1,
    Center = 2,
    Justified = 3,
    Natural = 4, ///< To the side where the paragraph's script begins: the block format then states no alignment.
};

/// Part of a text: where it begins, and how many characters it has.
struct Range {
    int location = 0;
    int length = 0;
};

/// Gives every run the alignment. Left and right are those of the page, also in right-to-left text. A number that
/// is no alignment changes nothing.
void changeAlignment(QTextDocument &document, Alignment alignment, Range range);

/// Adds the leading to the line spacing of every run. Line spacing is the extra space between lines (the block
/// format's line height of type LineDistanceHeight) in the document's units, which are points at 72 per inch; a run
/// whose line height is of another type, or unset, has a spacing of 0. A run whose spacing would not be greater
/// than 0, or would be infinite, keeps what it has. Sums are in single precision.
void changeLeading(QTextDocument &document, float leading, Range range);

} // namespace Leading
