#include "Platform/Media/ImageMetadata_p.h"

#include "Platform/Media/JpegSegments_p.h"

#include <QtEndian>

#include <algorithm>

namespace platform {
namespace {

constexpr qint64 blockSize = 80 * 1024;
/// Parts of a file beyond this number are not looked at: more than any camera writes, few enough to be quick.
constexpr int maximumParts = 1000;

constexpr QByteArrayView exifName("Exif\0\0", 6), pictureFormatName("MPF\0", 4), profileName("ICC_PROFILE\0", 12);

int orientationOf(const TiffStructure &exif, const TiffStructure::Directory &directory)
{
    const qint64 value = exif.number(directory, OrientationTag).value_or(1);
    return value >= 1 && value <= 8 ? int(value) : 1;
}

// The thumbnail must lie within the segment, since nothing else is part of EXIF.
void readExif(const QByteArray &segment, qint64 offset, ImageMetadata &result)
{
    const ImageInput input{QByteArrayView(segment)};
    const auto exif = TiffStructure::at(input);
    if (!exif)
        return;
    const TiffStructure::Directory picture = exif->directory(exif->firstDirectory());
    result.orientation = orientationOf(*exif, picture);
    if (picture.next == 0 || picture.next == exif->firstDirectory())
        return;
    const TiffStructure::Directory thumbnail = exif->directory(picture.next);
    const qint64 place = exif->number(thumbnail, ThumbnailOffsetTag).value_or(0);
    const qint64 length = exif->number(thumbnail, ThumbnailLengthTag).value_or(0);
    if (place > 0 && place < segment.size() && length > 0)
        result.thumbnail = {offset + place, std::min<qint64>(length, segment.size() - place)};
}

void readPictureFormat(const QByteArray &segment, qint64 offset, qint64 fileSize, ImageMetadata &result)
{
    constexpr qint64 entrySize = 16;
    constexpr quint32 kindMask = 0x00FFFFFF;
    constexpr quint32 largeThumbnails[] = {0x010001, 0x010002}; // for VGA and for full HD
    const ImageInput input{QByteArrayView(segment)};
    const auto index = TiffStructure::at(input);
    if (!index)
        return;
    const ByteRange entries = index->bytes(index->directory(index->firstDirectory()), PictureEntriesTag);
    const qint64 last = std::min(entries.length, maximumParts * entrySize) - entrySize;
    quint32 chosen = kindMask;
    for (qint64 entry = entries.offset; entry <= entries.offset + last; entry += entrySize) {
        const quint32 kind = index->longWord(entry) & kindMask;
        const qint64 length = index->longWord(entry + 4);
        const qint64 place = offset + index->longWord(entry + 8);
        const bool isThere = place > offset && length > 0 && place < fileSize && length <= fileSize - place;
        if (isThere && kind < chosen && std::count(std::begin(largeThumbnails), std::end(largeThumbnails), kind) > 0) {
            chosen = kind;
            result.preview = {place, length};
        }
    }
}

// Answers whether all segments in front of the picture have been seen.
bool readSegments(const ImageInput &input, qint64 fileSize, ImageMetadata &result)
{
    bool hasExif = false, hasPictureFormat = false;
    JpegSegments segments(input);
    for (int i = 0; i < maximumParts; ++i) {
        const auto segment = segments.next();
        if (!segment || segment->offset + segment->length > input.size())
            return false;
        if (segment->marker == StartOfScan)
            return true;
        if (segment->marker != FirstApplicationData + 1 && segment->marker != ColorProfileData)
            continue;
        char name[12] = {};
        const qint64 nameLength = input.read(segment->offset, name, std::min<qint64>(sizeof name, segment->length));
        const auto begins = [&](QByteArrayView text) { return QByteArrayView(name, nameLength).startsWith(text); };
        const auto behind = [&](QByteArrayView text) {
            return input.read(segment->offset + text.size(), segment->length - text.size());
        };
        if (segment->marker == ColorProfileData && begins(profileName)) {
            result.profile.push_back({segment->offset, segment->length});
        } else if (segment->marker == ColorProfileData && begins(pictureFormatName) && !hasPictureFormat) {
            hasPictureFormat = true;
            readPictureFormat(behind(pictureFormatName), segment->offset + pictureFormatName.size(), fileSize, result);
        } else if (segment->marker != ColorProfileData && begins(exifName) && !hasExif) {
            hasExif = true;
            readExif(behind(exifName), segment->offset + exifName.size(), result);
        }
    }
    return true; // enough
}

} // namespace

ImageMetadata jpegMetadata(const ImageInput &input)
{
    const QByteArray block = input.read(0, blockSize);
    ImageMetadata result;
    if (!readSegments(ImageInput(block), input.size(), result) && input.size() > block.size()) {
        result = {};
        readSegments(input, input.size(), result);
    }
    return result;
}

int exifOrientation(const ImageInput &exif)
{
    const auto structure = TiffStructure::at(exif);
    return structure ? orientationOf(*structure, structure->directory(structure->firstDirectory())) : 1;
}

ImageMetadata webpMetadata(const ImageInput &input)
{
    constexpr qint64 headSize = 8;
    ImageMetadata result;
    qint64 place = 12; // behind the head of the file
    for (int i = 0; i < maximumParts; ++i) {
        char head[headSize];
        if (input.read(place, head, headSize) < headSize)
            break;
        const QByteArrayView name(head, 4);
        const ByteRange content{place + headSize, qFromLittleEndian<quint32>(head + 4)};
        if (content.length > input.size() - content.offset)
            break;
        if (name == "ICCP" && result.profile.empty()) {
            result.profile.push_back(content);
        } else if (name == "EXIF") {
            QByteArray exif = input.read(content.offset, content.length);
            if (exif.startsWith(exifName)) // by writers who took it for that of a JPEG file
                exif.remove(0, exifName.size());
            result.orientation = exifOrientation(ImageInput(exif));
        }
        place = content.offset + content.length + content.length % 2;
    }
    return result;
}

ImageMetadata tiffMetadata(const ImageInput &input)
{
    ImageMetadata result;
    if (const auto structure = TiffStructure::at(input)) {
        const TiffStructure::Directory picture = structure->directory(structure->firstDirectory());
        result.orientation = orientationOf(*structure, picture);
        if (const ByteRange profile = structure->bytes(picture, ProfileTag); !profile.isEmpty())
            result.profile.push_back(profile);
    }
    return result;
}

bool isRawTiff(const ImageInput &input)
{
    constexpr qint64 colorFilterArray = 32803, linearRaw = 34892;
    constexpr qint64 ofCameraMakers[] = {32767, 32769, 32770, 34713, 65000, 65535};
    constexpr int maximumSubdirectories = 16;
    const auto structure = TiffStructure::at(input);
    if (!structure)
        return false;
    const auto isRaw = [&](const TiffStructure::Directory &directory) {
        const qint64 photometric = structure->number(directory, PhotometricTag).value_or(0);
        const qint64 compression = structure->number(directory, CompressionTag).value_or(0);
        return photometric == colorFilterArray || photometric == linearRaw
            || std::count(std::begin(ofCameraMakers), std::end(ofCameraMakers), compression) > 0;
    };
    const TiffStructure::Directory first = structure->directory(structure->firstDirectory());
    if (structure->number(first, DngVersionTag) || isRaw(first))
        return true;
    for (const qint64 offset : structure->numbers(first, SubdirectoriesTag, maximumSubdirectories)) {
        if (isRaw(structure->directory(offset)))
            return true;
    }
    return first.next != 0 && isRaw(structure->directory(first.next));
}

} // namespace platform
