#include "ToneFile.h"

#include <QDataStream>
#include <QIODevice>
#include <QList>
#include <QRandomGenerator>

#include <algorithm>
#include <array>
#include <cmath>

namespace {

constexpr int rate = 16'000; // samples per second
constexpr int samples = rate * 2;

/// A plucked string after Karplus and Strong (1983): noise in a loop that loses its high tones as it goes
/// round.
void addString(QList<double> &sound, int start, double frequency, QRandomGenerator &random)
{
    QList<double> loop(qsizetype(rate / frequency));
    for (double &value : loop)
        value = random.generateDouble() * 2 - 1;
    for (qsizetype i = start, place = 0; i < sound.size(); ++i) {
        const qsizetype next = (place + 1) % loop.size();
        sound[i] += loop[place] * 0.2;
        loop[place] = (loop[place] + loop[next]) * 0.498;
        place = next;
    }
}

} // namespace

QByteArray toneFile(quint32 seed)
{
    constexpr std::array scale{0, 3, 5, 7, 10, 12, 15}; // a minor pentatonic, in semitones
    QRandomGenerator random(seed);
    QList<double> sound(samples, 0.0);
    const double root = 146.83 * std::pow(2, random.bounded(8) / 12.0);
    for (int note = 0; note < 6; ++note) {
        const int semitones = note == 0 ? 0 : scale[size_t(random.bounded(int(scale.size())))];
        addString(sound, note * rate / 5, root * std::pow(2, semitones / 12.0), random);
    }

    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setByteOrder(QDataStream::LittleEndian);
    out.writeRawData("RIFF", 4);
    out << quint32(36 + samples * 2);
    out.writeRawData("WAVEfmt ", 8);
    out << quint32(16) << quint16(1) << quint16(1) << quint32(rate) << quint32(rate * 2) << quint16(2) << quint16(16);
    out.writeRawData("data", 4);
    out << quint32(samples * 2);
    for (qsizetype i = 0; i < samples; ++i) {
        const double end = std::min(1.0, double(samples - i) / (rate / 8.0)); // fades out at the very end
        out << qint16(std::clamp(sound[i] * end, -1.0, 1.0) * 32'000);
    }
    return bytes;
}
