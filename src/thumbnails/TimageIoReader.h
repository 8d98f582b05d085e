#pragma once

#include <QImage>
#include <QSize>
#include <QString>
#include <QStringList>

// What a picture file's header says, read without decoding any pixel.
struct TpictureHeader
{
    bool valid = false;
    // Of the first part (sub-image), at full resolution.
    QSize size;
    // As the file names them ("R", "G", "B", "A", "Z"...); empty when the reader does not say.
    QStringList channels;
    // Bits per channel as stored (10 for a 10-bit DPX), and whether they hold floating point.
    int bits = 0;
    bool floating = false;
    // Parts of a multi-part file (pages of a TIFF, layers of a PSD after its merged picture)
    // and mip levels of the first part; 1 when there is only one.
    int parts = 1;
    int levels = 1;
    // The reader's name for the format ("openexr", "tiff", "psd"...); empty for Qt's readers.
    QString format;
};

// The formats of render and texture folders that Qt does not read well (OpenEXR, Radiance
// HDR, tiled and mip-mapped TIFF/TX, float and 16-bit TIFF, DPX, Cineon, PSD, TGA, DDS),
// read through OpenImageIO. Without it at build time, handlesSuffix is always false.
//
// Threads: every function is reentrant and touches the disk; worker threads only. Each call
// opens its own reader, asks it for no threads of its own (the caller is already one thread
// of a pool) and closes it before returning; OpenImageIO's shared image cache is not used.
// Memory: a picture is read in bands of about 4 MiB and box-filtered on the way into a
// reduced picture, so even a 4096 x 4096 float scanline file never has more than one band
// and the reduced result in memory. A tiled file with mip levels is read at the smallest
// level that still covers the box.
// Colour: floating-point data is scene-linear (unless the file says sRGB): shown through the
// sRGB curve, clamped to [0, 1]; integer data is shown as stored. Alpha is kept, straight.
class TimageIoReader
{
public:
    // Whether the library was built with OpenImageIO.
    static bool isAvailable();
    // Whether these readers take files with this suffix (any case).
    static bool handlesSuffix(const QString& suffix);
    // The suffixes handled, lower case; empty without OpenImageIO.
    static QStringList suffixes();

    // The first part of the file fitted into box (aspect kept; enlarged to fill it only when
    // enlarge is set). Null when the file cannot be read, is truncated or is unreasonably large.
    static QImage read(const QString& path, const QSize& box, bool enlarge);
    // The header of the file; invalid when it cannot be opened.
    static TpictureHeader header(const QString& path);

    // Safety limits of a read: the level read at most this wide and this many pixels.
    static const int maxWidth = 65536;
    static const qint64 maxPixels = qint64(1) << 30;
};
