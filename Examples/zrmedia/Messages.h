#pragma once

#include "Platform/Foundation/Result.h"

#include <QString>

/// What is said to whoever called the program. Names come from files that anybody may have written, so that nothing
/// of them reaches a terminal as it stands.

/// Writes "zrmedia: ", the message, its control characters made visible, and a line feed to standard error.
void say(const QString &message);

/// The text with its control characters, those of Unicode among them, written as \n, \r, \t or \x1b.
QString withVisibleControls(const QString &text);

/// The name in the language's own quotation marks.
QString quoted(const QString &name);

/// "path: byte 17: reason". Reasons that concern a file as a whole are in the user's language; those of a parser, about
/// a place in it, are in English.
QString described(const platform::Error &error);
