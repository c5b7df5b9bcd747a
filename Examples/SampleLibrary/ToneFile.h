#pragma once

#include <QByteArray>

/// A few plucked notes, always the same for the same seed: a WAV file of two seconds, one channel, 16 bits.
QByteArray toneFile(quint32 seed);
