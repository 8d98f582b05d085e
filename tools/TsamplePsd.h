#pragma once

#include <QByteArray>
#include <QImage>

// A layered-image file in its simplest valid form: an 8-bit RGB (or RGBA) merged picture,
// stored raw and planar, with no colour table, no image resources and no layers. Shared by
// the sample generator and the tests, which cannot have such files written otherwise.
namespace TsamplePsd {

inline void put16(QByteArray& out, quint16 value)
{
    out.append(char(value >> 8));
    out.append(char(value & 0xff));
}

inline void put32(QByteArray& out, quint32 value)
{
    put16(out, quint16(value >> 16));
    put16(out, quint16(value & 0xffff));
}

inline QByteArray encode(const QImage& source, bool withAlpha)
{
    const QImage picture = source.convertToFormat(QImage::Format_RGBA8888);
    const int channels = withAlpha ? 4 : 3;
    QByteArray out("8BPS");
    put16(out, 1);                // version
    out.append(6, '\0');          // reserved
    put16(out, quint16(channels));
    put32(out, quint32(picture.height()));
    put32(out, quint32(picture.width()));
    put16(out, 8);                // bits per channel
    put16(out, 3);                // RGB colour mode
    put32(out, 0);                // colour mode data
    put32(out, 0);                // image resources
    put32(out, 0);                // layer and mask information
    put16(out, 0);                // raw image data
    for (int c = 0; c < channels; ++c) {
        for (int y = 0; y < picture.height(); ++y) {
            const uchar* line = picture.constScanLine(y);
            for (int x = 0; x < picture.width(); ++x)
                out.append(char(line[x * 4 + c]));
        }
    }
    return out;
}

} // namespace TsamplePsd
