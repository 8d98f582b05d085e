#include "TpictureDecoder.h"

#include "TabImageLoader.h"

#include <QColor>
#include <QFileInfo>
#include <QImageReader>
#include <QPainter>
#include <QPen>
#include <QPixmap>

#include <algorithm>

namespace {

const QImage::Format paintFormat = QImage::Format_ARGB32_Premultiplied;

const QList<QByteArray>& supportedFormats()
{
    static const QList<QByteArray> formats = QImageReader::supportedImageFormats();
    return formats;
}

// The largest 1/1, 1/2, 1/4 or 1/8 of source that still covers fitted: a JPEG decoder
// produces those sizes directly, and the smooth scaling after it does the rest.
QSize reducedDecodeSize(const QSize& source, const QSize& fitted)
{
    QSize decode = source;
    for (int divisor = 8; divisor > 1; divisor /= 2) {
        const QSize candidate((source.width() + divisor - 1) / divisor, (source.height() + divisor - 1) / divisor);
        if (candidate.width() >= fitted.width() && candidate.height() >= fitted.height()) {
            decode = candidate;
            break;
        }
    }
    return decode;
}

} // namespace

QString TpictureDecoder::swatchPreviewPath(const QString& filePath, int frame)
{
    const QFileInfo info(filePath);
    const QString name = info.fileName();
    return info.absolutePath() + QLatin1String("/.velaSwatches/") + name + QLatin1Char('/') + name + QLatin1Char('.')
        + QString::number(frame) + QLatin1String(".preview");
}

TpictureDecoder::Indicator TpictureDecoder::indicatorOf(const QString& filePath)
{
    const QFileInfo info(filePath);
    if (info.suffix() != QLatin1String("fbx"))
        return NoIndicator;
    const QString markers = info.absolutePath() + QLatin1String("/.velaSwatches/") + info.fileName();
    if (QFileInfo::exists(markers + QLatin1String(".anim")))
        return ClipAnimationIndicator;
    if (QFileInfo::exists(markers + QLatin1String(".pose")))
        return PoseIndicator;
    return NoIndicator;
}

bool TpictureDecoder::isRegularFile(const QString& path)
{
    // QFileInfo::isFile is false for FIFOs, sockets and devices.
    return !path.isEmpty() && QFileInfo(path).isFile();
}

bool TpictureDecoder::isSupportedImageSuffix(const QString& suffix)
{
    return !suffix.isEmpty()
        && (TimageIoReader::handlesSuffix(suffix) || supportedFormats().contains(suffix.toUtf8().toLower()));
}

TpictureHeader TpictureDecoder::readHeader(const QString& path)
{
    if (!isRegularFile(path))
        return TpictureHeader();
    const QString suffix = QFileInfo(path).suffix();
    if (TimageIoReader::handlesSuffix(suffix)) {
        const TpictureHeader header = TimageIoReader::header(path);
        if (header.valid || !supportedFormats().contains(suffix.toUtf8().toLower()))
            return header;
    }
    TpictureHeader header;
    if (!isSupportedImageSuffix(suffix))
        return header;
    QImageReader reader(path);
    reader.setAutoTransform(true);
    QSize size = reader.size();
    if (!size.isValid() || size.isEmpty())
        return header;
    if (reader.transformation() & QImageIOHandler::TransformationRotate90)
        size.transpose();
    header.valid = true;
    header.size = size;
    header.parts = std::max(1, reader.imageCount());
    // What Qt tells of the stored pixels is the format it decodes them into.
    const QImage::Format format = reader.imageFormat();
    const QPixelFormat pixel = QImage::toPixelFormat(format);
    if (format == QImage::Format_Invalid)
        return header;
    if (format == QImage::Format_Mono || format == QImage::Format_MonoLSB || format == QImage::Format_Indexed8) {
        // A palette of colours, or black and white.
        const bool mono = format != QImage::Format_Indexed8;
        header.channels = mono ? QStringList{QStringLiteral("Y")}
                               : QStringList{QStringLiteral("R"), QStringLiteral("G"), QStringLiteral("B")};
        header.bits = mono ? 1 : 8;
        return header;
    }
    const bool grey = pixel.colorModel() == QPixelFormat::Grayscale || pixel.colorModel() == QPixelFormat::Alpha;
    header.channels = grey ? QStringList{QStringLiteral("Y")}
                           : QStringList{QStringLiteral("R"), QStringLiteral("G"), QStringLiteral("B")};
    if (pixel.alphaUsage() == QPixelFormat::UsesAlpha && !grey)
        header.channels.append(QStringLiteral("A"));
    const int channelsStored = grey ? 1 : (pixel.alphaUsage() == QPixelFormat::UsesAlpha ? 4 : 3);
    header.floating = pixel.typeInterpretation() == QPixelFormat::FloatingPoint;
    const int padded = pixel.channelCount() > 0 ? pixel.channelCount() : channelsStored;
    header.bits = std::max(1, int(pixel.bitsPerPixel()) / padded);
    return header;
}

QImage TpictureDecoder::readFitted(const QString& path, const QSize& box, bool fromContent, bool enlarge)
{
    if (!isRegularFile(path) || box.isEmpty())
        return QImage();
    const QString suffix = QFileInfo(path).suffix();
    if (TimageIoReader::handlesSuffix(suffix)) {
        QImage picture = TimageIoReader::read(path, box, enlarge);
        if (!picture.isNull() || !supportedFormats().contains(suffix.toUtf8().toLower()))
            return picture;
    }
    QImageReader reader(path);
    reader.setDecideFormatFromContent(fromContent);
    reader.setAutoTransform(true);
    const QSize source = reader.size();
    QSize decodeSize = source;
    if (source.isValid() && !source.isEmpty()) {
        QSize readBox = box;
        if (reader.transformation() & QImageIOHandler::TransformationRotate90)
            readBox.transpose();
        const QSize fitted = source.scaled(readBox, Qt::KeepAspectRatio);
        if (fitted.width() < source.width() && reader.supportsOption(QImageIOHandler::ScaledSize)) {
            decodeSize = reducedDecodeSize(source, fitted);
            if (decodeSize != source) {
                reader.setScaledSize(decodeSize);
                // The fast transform and plain upsampling of a reduced JPEG decode cost no
                // visible detail once the picture is scaled down further.
                reader.setQuality(49);
            }
        }
    }
    // A crafted header can promise tens of thousands of pixels a side; a format without a
    // reduced decode would allocate all of them.
    if (!decodeSize.isValid() || qint64(decodeSize.width()) * decodeSize.height() > maxDecodePixels)
        return QImage();
    QImage picture = reader.read();
    if (picture.isNull())
        return picture;
    const QSize target = picture.size().scaled(box, Qt::KeepAspectRatio);
    if (target.isEmpty() || (!enlarge && target.width() >= picture.width()))
        return picture;
    return picture.scaled(target, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

QImage TpictureDecoder::decodeSwatchPreview(const QString& filePath, const QSize& box)
{
    // Swatch previews carry no telling suffix: the format comes from the content. They stay
    // at their own size when small, so that the small-picture rule of the icon still holds.
    return readFitted(swatchPreviewPath(filePath, 1), box, true, false);
}

QImage TpictureDecoder::decodeWithLoader(TabImageLoader* loader, const QString& filePath)
{
    if (!loader || !loader->canLoadImage(filePath))
        return QImage();
    QPixmap picture;
    if (!loader->loadImage(filePath, picture) || picture.isNull())
        return QImage();
    return picture.toImage();
}

QImage TpictureDecoder::decodeImageFile(const QString& filePath, const QSize& box)
{
    return readFitted(filePath, box, false, true);
}

QImage TpictureDecoder::decodePicture(const QString& path, const QSize& box)
{
    return readFitted(path, box, true, false);
}

int TpictureDecoder::countSwatchFrames(const QString& filePath)
{
    int count = 0;
    while (count < maxSwatchFrames && isRegularFile(swatchPreviewPath(filePath, count + 1)))
        ++count;
    return count;
}

QImage TpictureDecoder::decodeSwatchFrame(const QString& filePath, int frame, int count, const QSize& frameSize,
                                          int penWidth)
{
    QImage picture = readFitted(swatchPreviewPath(filePath, frame), frameSize, true, true);
    if (picture.isNull() || count <= 0)
        return QImage();
    picture = picture.convertToFormat(paintFormat);
    QPainter painter(&picture);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.setPen(QPen(QColor(72, 170, 181), penWidth, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    painter.drawLine(0, 1, int(qint64(picture.width()) * frame / count), 1);
    painter.end();
    return picture;
}

QImage TpictureDecoder::fit(const QImage& picture, const QSize& target, bool noScaling, bool alignBottom)
{
    if (picture.isNull() || picture.size() == target)
        return picture;
    const QImage scaled =
        noScaling ? picture : picture.scaled(target, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    if (scaled.size() == target)
        return scaled;
    QImage canvas(target, paintFormat);
    canvas.fill(Qt::transparent);
    QPainter painter(&canvas);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    const int x = (target.width() - scaled.width()) / 2;
    const int y = alignBottom ? target.height() - scaled.height() : (target.height() - scaled.height()) / 2;
    painter.drawImage(x, y, scaled);
    painter.end();
    return canvas;
}

QImage TpictureDecoder::badge(const QImage& picture, const QImage& indicator, int corner, int margin)
{
    if (picture.isNull() || indicator.isNull() || (corner != 0 && corner != 1))
        return picture;
    QImage result = picture.convertToFormat(paintFormat);
    QPainter painter(&result);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    const int x = corner == 0 ? margin : result.width() - margin - indicator.width();
    painter.drawImage(x, margin, indicator);
    painter.end();
    return result;
}
