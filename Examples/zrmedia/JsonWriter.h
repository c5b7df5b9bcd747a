#pragma once

#include "Platform/Foundation/PropertyList/PropertyList.h"

#include <QByteArrayView>
#include <QList>
#include <QStringView>

class Output;

/// Writes JSON in UTF-8 as it is told to, keeping none of it: a library of any size goes through in constant memory.
///
/// Property lists become JSON so: strings and booleans as they are; integers whole; reals in the fewest digits that
/// give the same number again, always with a decimal point or an exponent, and "NaN", "Infinity", "-Infinity" as
/// strings; dates as ISO 8601 in UTC ("2004-01-31T12:00:00Z", with milliseconds where there are any; those before
/// 1582-10-15 in the Julian calendar, as XML property lists have them, so that they read as in the file); data as
/// base64; reference numbers as {"CF$UID": 17}. Of a key that a dictionary holds twice only the last one is written.
class JsonWriter
{
public:
    /// @param linesToDepth how many containers within one another put each of their elements on a line of its own,
    /// indented by two blanks; those inside them stand in one line. 0 puts all in one line.
    explicit JsonWriter(Output &output, int linesToDepth);

    void beginArray() { begin('['); }
    void endArray() { end(']'); }
    void beginObject() { begin('{'); }
    void endObject() { end('}'); }

    /// The key of the value that is written next.
    void key(QByteArrayView utf8);

    void value(const platform::PropertyListView &value);
    void string(QByteArrayView utf8);
    void string(QStringView text);
    void number(double real);
    void integer(qint64 number);
    void unsignedInteger(quint64 number);
    void boolean(bool value);
    void data(const QByteArray &bytes);
    /// Seconds since 2001-01-01T00:00:00Z; null where no calendar reaches.
    void date(double referenceSeconds);
    void null();

    /// Ends the text with a line feed.
    void finish();

private:
    struct Level {
        bool isEmpty = true;
        bool hasLines = false;
    };

    void begin(char bracket);
    void end(char bracket);
    void beginElement();
    void newLine();
    void raw(QByteArrayView bytes);
    void quoted(QByteArrayView utf8);
    void dictionary(const platform::PropertyListView &value);
    void integer(const platform::PropertyListView &value);

    Output &m_output;
    int m_linesToDepth;
    QList<Level> m_levels;
    bool m_followsKey = false;
};
