#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include "Platform/Foundation/Result.h"
#include "Platform/Media/JpegHuffmanTable_p.h"
#include "Platform/Media/JpegSegments_p.h"
#include "Platform/Media/Plane_p.h"

#include <memory>

namespace platform {

class JpegBitReader;
class JpegBits;

/// A picture at an eighth of its width and height: the mean of every block of 8 by 8 samples.
struct JpegEighth {
    struct Component {
        Plane plane; ///< Filled up to whole units of coding.
        int horizontalSampling = 1, verticalSampling = 1;
        /// How much of the plane is the picture.
        QSizeF extent;
    };
    QSize size; ///< Of the whole picture.
    std::vector<Component> components; ///< One: grey; three: luma, and the differences of blue and red.
};

/// Decodes JPEG files (ITU-T T.81) no further than their thumbnails need: of each block of 64 coefficients only the
/// first, the mean, while the codes of the others are passed over several at a time. Of a progressive file only the
/// scans with the first coefficients are read.
///
/// Takes what cameras write: Huffman coding, 8 bits, one or three components, sequential or progressive. For anything
/// else, and for what is damaged before half of its rows were read, another decoder has to be asked. Rows that are
/// missing repeat the last one that is there.
class JpegDcDecoder
{
public:
    explicit JpegDcDecoder(const ImageInput &input);
    ~JpegDcDecoder();

    /// The picture. Errors: `UnknownFormat` for a kind of JPEG file that is not taken, `Malformed`, `TooLarge`.
    Result<JpegEighth> decode();

private:
    struct Component {
        uchar identifier = 0;
        int quantization = 0; // number of its table
        bool isDecoded = false;
    };
    struct ScanComponent {
        size_t index = 0; // in the frame
        int predictor = 0;
        const JpegHuffmanTable *dc = nullptr;
        const JpegHuffmanTable *ac = nullptr;
        int factor = 1; // by which a coefficient is multiplied
        int offset = 0; // added, with rounding
    };
    struct Scan {
        std::vector<ScanComponent> components;
        bool isWanted = true; // holds first coefficients
    };

    std::optional<Error> readSegment(const JpegSegment &segment);
    std::optional<Error> readQuantization(QByteArrayView content);
    std::optional<Error> readHuffman(QByteArrayView content);
    std::optional<Error> readFrame(const JpegSegment &segment, QByteArrayView content);
    std::optional<Error> decodeScan(const JpegSegment &segment, QByteArrayView content);
    Result<Scan> readScan(QByteArrayView content);
    std::optional<Error> decodeAllUnits(Scan &scan, JpegBitReader &reader);
    std::optional<Error> decodeAllUnitsBmi2(Scan &scan, JpegBitReader &reader);
    template <bool isProgressive>
    std::optional<Error> decodeUnits(Scan &scan, JpegBitReader &reader);
    template <bool isProgressive>
    bool decodeUnit(Scan &scan, JpegBitReader &reader, int column, int row);
    template <bool isProgressive>
    static bool decodeBlock(ScanComponent &component, JpegBits &bits);
    bool restart(Scan &scan, JpegBitReader &reader) const;
    std::optional<Error> endEarly(const Scan &scan, int row, int rows);
    bool isComplete() const;

    const ImageInput &m_input;
    JpegSegments m_segments;
    std::array<int, 4> m_quantizers{}; // of the first coefficient, by table
    std::array<std::unique_ptr<JpegHuffmanTable>, 4> m_dcTables, m_acTables;
    int m_restartInterval = 0;
    bool m_isProgressive = false;
    int m_maximumHorizontal = 1, m_maximumVertical = 1;
    std::vector<Component> m_components;
    JpegEighth m_picture;
};

} // namespace platform
