#pragma once

#include "Support/TestSupport.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

/// A file of the sample data that is, or claims to be, a property list, and what readers should make of it.
struct PropertyListSample {
    QString name;
    QByteArray bytes;
    QString expectation;
    bool isJudged = true; ///< Otherwise it is only known that nothing must crash.
    bool isValid = false;
};

/// The samples whose noted form matches, such as "^binary".
inline QList<PropertyListSample> propertyListSamples(const QRegularExpression &form)
{
    QList<PropertyListSample> samples;
    const QJsonObject notes =
        QJsonDocument::fromJson(testSupport::readFile(testSupport::sampleFile(QStringLiteral("EXPECTED.json"))))
            .object();
    for (auto note = notes.begin(); note != notes.end(); ++note) {
        const QJsonObject fields = note.value().toObject();
        if (!note.key().startsWith(QLatin1String("plists/"))
            || !form.match(fields.value(QLatin1String("verified")).toString()).hasMatch())
            continue;
        PropertyListSample sample;
        sample.name = note.key();
        sample.bytes = testSupport::readFile(testSupport::sampleFile(note.key()));
        sample.expectation = fields.value(QLatin1String("expected")).toString();
        sample.isValid = sample.expectation.startsWith(QLatin1String("VALID"));
        sample.isJudged = sample.isValid || sample.expectation.startsWith(QLatin1String("INVALID"));
        samples.append(sample);
    }
    return samples;
}
