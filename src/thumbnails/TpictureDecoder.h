#pragma once

#include "TimageIoReader.h"

#include <QImage>
#include <QSize>
#include <QString>

class TabImageLoader;

// The pixel work of the picture pipeline: one decode function per kind of source (swatch
// preview, host image loader, image file, swatch frame), and the fitting and badge drawing
// that turn a decoded picture into a thumbnail. Every function is reentrant and works on
// QImage only, so the thumbnail service calls them on its worker threads.
//
// Image files are read by Qt's plug-ins, and the formats of render and texture folders (EXR,
// HDR, TIFF/TX, DPX, Cineon, PSD, TGA, DDS) by TimageIoReader, chosen by suffix; a file of a
// suffix both know that TimageIoReader cannot read is tried with Qt's plug-in too.
//
// Safety limits: only regular files are opened (a FIFO or a device named like a picture
// would block or never end); a picture is decoded at most at maxDecodePixels, through the
// reader's reduced-size decode where the format has one, and refused otherwise; the frames
// of one swatch sequence are capped at maxSwatchFrames.
class TpictureDecoder
{
public:
    enum Indicator { NoIndicator = -1, AnimatedPreviewIndicator = 0, ClipAnimationIndicator = 1, PoseIndicator = 2 };

    // 8192 x 8192: a decode buffer of 256 MiB at most, Qt's own allocation limit.
    static const qint64 maxDecodePixels = qint64(8192) * 8192;
    static const int maxSwatchFrames = 250;

    // FOLDER/.velaSwatches/NAME/NAME.frame.preview for the file at filePath.
    static QString swatchPreviewPath(const QString& filePath, int frame);
    // Clip or pose marker of the file (suffix exactly "fbx"; clip outranks pose). Touches the
    // disk: worker threads only.
    static Indicator indicatorOf(const QString& filePath);
    // A regular file (links followed): never a folder, FIFO, socket or device.
    static bool isRegularFile(const QString& path);
    // Whether Qt or TimageIoReader reads files with this suffix (compared in lower case).
    static bool isSupportedImageSuffix(const QString& suffix);
    // The header of a picture file (size, channels, depth, parts, levels) without decoding
    // its pixels; invalid for what is not a readable picture. Touches the disk.
    static TpictureHeader readHeader(const QString& path);

    // Frame 1 of the file's swatch preview at its own size (reduced to at most box when it
    // is larger), or null when there is none or it cannot be read.
    static QImage decodeSwatchPreview(const QString& filePath, const QSize& box);
    // The host loader's picture for filePath, or null when it has none. The caller decides
    // on which thread this may run.
    static QImage decodeWithLoader(TabImageLoader* loader, const QString& filePath);
    // The image file fitted into box (aspect kept): reduced-size decode where the format
    // allows it, then smooth scaling. Null when unreadable or too large to decode safely.
    static QImage decodeImageFile(const QString& filePath, const QSize& box);
    // Any picture file, the format judged by content, fitted into box (aspect kept, never
    // enlarged); null when unreadable or too large.
    static QImage decodePicture(const QString& path, const QSize& box);

    // Number of swatch frames of the file: 1, 2, ... up to the first that is missing or not a
    // regular file, at most maxSwatchFrames.
    static int countSwatchFrames(const QString& filePath);
    // Frame number (from 1) of count, scaled to fit frameSize, with the progress line along
    // its top (frame * width / count long, penWidth thick). Null when it cannot be read.
    static QImage decodeSwatchFrame(const QString& filePath, int frame, int count, const QSize& frameSize,
                                    int penWidth);

    // picture brought to target: scaled to fit (unless noScaling, smoothly), then, when it
    // still differs, drawn onto a transparent canvas of target, centred horizontally and at
    // the bottom or in the middle vertically.
    static QImage fit(const QImage& picture, const QSize& target, bool noScaling, bool alignBottom);
    // indicator drawn at corner 0 (top left) or 1 (top right), margin pixels in.
    static QImage badge(const QImage& picture, const QImage& indicator, int corner, int margin);

private:
    static QImage readFitted(const QString& path, const QSize& box, bool fromContent, bool enlarge);
};
