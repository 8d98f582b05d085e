#include "ThumbnailFileIconProvider.h"

#include "TabDpiScaling.h"
#include "TabImageLoader.h"
#include "TassetBrowserOptions.h"
#include "TuiScale.h"

#include <QColor>
#include <QCoreApplication>
#include <QCursor>
#include <QFileInfo>
#include <QGuiApplication>
#include <QHash>
#include <QImageReader>
#include <QMutex>
#include <QMutexLocker>
#include <QPainter>
#include <QPen>
#include <QPixmap>
#include <QThread>

#include <cmath>

namespace {

const char* const indicatorFiles[] = {"CB_AnimationIndicator.png", "CB_ClipAnimationIndicator.png",
                                      "CB_PoseIndicator.png"};
const int indicatorCount = 3;
const QImage::Format paintFormat = QImage::Format_ARGB32_Premultiplied;

// What every provider of the process shares. One lock guards all of it, so that pictures can
// be made on several threads later; it is held only for look-ups and insertions.
struct SharedState
{
    QMutex mutex;
    int liveProviders = 0;
    quint32 nextInstance = 0;
    QImage indicators[indicatorCount];
    QHash<quint32, QHash<QString, QIcon>> icons;
    QHash<quint64, QImage> canvases;
};

SharedState& shared()
{
    static SharedState state;
    return state;
}

quint64 sizeKey(const QSize& size)
{
    return (quint64(quint32(size.width())) << 32) | quint32(size.height());
}

// A transparent picture of size, made once per size: padding then costs one copy of it.
QImage blankCanvas(const QSize& size)
{
    SharedState& state = shared();
    QMutexLocker lock(&state.mutex);
    auto it = state.canvases.find(sizeKey(size));
    if (it == state.canvases.end()) {
        QImage canvas(size, paintFormat);
        canvas.fill(Qt::transparent);
        it = state.canvases.insert(sizeKey(size), canvas);
    }
    return *it;
}

// Brings picture to target: scaled to fit (unless noScaling), then, when it still differs,
// drawn onto a transparent canvas of target, centred horizontally and at the bottom or in the
// middle vertically.
QImage fit(const QImage& picture, const QSize& target, bool noScaling, bool alignBottom)
{
    if (picture.isNull() || picture.size() == target)
        return picture;
    const QImage scaled = noScaling ? picture : picture.scaled(target, Qt::KeepAspectRatio, Qt::FastTransformation);
    if (scaled.size() == target)
        return scaled;
    QImage canvas = blankCanvas(target);
    QPainter painter(&canvas);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    const int x = (target.width() - scaled.width()) / 2;
    const int y = alignBottom ? target.height() - scaled.height() : (target.height() - scaled.height()) / 2;
    painter.drawImage(x, y, scaled);
    painter.end();
    return canvas;
}

QSize square(const QSize& size)
{
    const int side = qMax(size.width(), size.height());
    return QSize(side, side);
}

// Corner 0 is the top left, corner 1 the top right; margin pixels in from both edges.
QImage badge(const QImage& picture, const QImage& indicator, int corner, int margin)
{
    if (indicator.isNull() || (corner != 0 && corner != 1))
        return picture;
    QImage result = picture.convertToFormat(paintFormat);
    QPainter painter(&result);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    const int x = corner == 0 ? margin : result.width() - margin - indicator.width();
    painter.drawImage(x, margin, indicator);
    painter.end();
    return result;
}

// Swatch previews are written without a known suffix, so the format comes from the content.
QImage readPicture(const QString& path)
{
    QImageReader reader(path);
    reader.setDecideFormatFromContent(true);
    return reader.read();
}

// Reads an image file fitted into box. Large pictures are decoded at the reduced size where
// the format allows it (JPEG decodes at a fraction of its size), which is what keeps big
// photographs affordable; small ones are read whole and enlarged like every other picture.
QImage readFitted(const QString& path, const QSize& box)
{
    QImageReader reader(path);
    reader.setAutoTransform(true);
    const QSize source = reader.size();
    if (source.isValid()) {
        QSize readBox = box;
        if (reader.transformation() & QImageIOHandler::TransformationRotate90)
            readBox.transpose();
        const QSize fitted = source.scaled(readBox, Qt::KeepAspectRatio);
        if (fitted.width() < source.width() && !fitted.isEmpty())
            reader.setScaledSize(fitted);
    }
    const QImage picture = reader.read();
    if (picture.isNull())
        return picture;
    return picture.scaled(box, Qt::KeepAspectRatio, Qt::FastTransformation);
}

const QList<QByteArray>& supportedImageFormats()
{
    static const QList<QByteArray> formats = QImageReader::supportedImageFormats();
    return formats;
}

QPixmap toPixmap(const QImage& picture)
{
    return QPixmap::fromImage(picture);
}

} // namespace

TwaitCursor::TwaitCursor()
    : m_set(qobject_cast<QGuiApplication*>(QCoreApplication::instance())
            && QThread::currentThread() == QCoreApplication::instance()->thread())
{
    if (m_set)
        QGuiApplication::setOverrideCursor(QCursor(Qt::WaitCursor));
}

TwaitCursor::~TwaitCursor()
{
    if (m_set)
        QGuiApplication::restoreOverrideCursor();
}

ThumbnailFileIconProvider::ThumbnailFileIconProvider(const TassetBrowserOptions* options, const QSize& iconSize,
                                                     bool foldersOnly)
    : m_sizes(8)
    , m_iconSize(iconSize)
    , m_options(options)
    , m_foldersOnly(foldersOnly)
{
    SharedState& state = shared();
    {
        QMutexLocker lock(&state.mutex);
        // Numbers are never reused: a provider made after another one died must not find
        // that one's pictures, which may be of another size.
        m_instanceNumber = state.nextInstance++;
        if (state.liveProviders++ == 0) {
            for (int i = 0; i < indicatorCount; ++i)
                state.indicators[i] = TuiScale::pixmap(options, QLatin1String(indicatorFiles[i]))
                                          .toImage()
                                          .convertToFormat(paintFormat);
        }
    }

    QImage folder;
    if (iconSize.width() <= TuiScale::length(options, 16)) {
        folder = TuiScale::pixmap(options, QStringLiteral("CB_FolderRegularClosed.png")).toImage();
    } else if (TabDpiScaling* scaling = options ? options->dpiScaling() : nullptr) {
        // The scalable picture is drawn at the icon's size rather than enlarged from a
        // bitmap; the host takes sizes at 100 per cent.
        const qreal factor = scaling->scaleFactor() > 0 ? scaling->scaleFactor() : 1.0;
        const QSize request(int(std::lround(iconSize.width() / factor)), int(std::lround(iconSize.height() / factor)));
        folder = scaling->pixmapAtSize(QStringLiteral("CB_Folder.svg"), request).toImage();
    }
    const QImage fitted = fit(folder, iconSize, false, false);
    if (!fitted.isNull())
        m_folderIcon.addPixmap(toPixmap(fitted));
}

ThumbnailFileIconProvider::~ThumbnailFileIconProvider()
{
    SharedState& state = shared();
    QMutexLocker lock(&state.mutex);
    if (--state.liveProviders == 0) {
        for (QImage& indicator : state.indicators)
            indicator = QImage();
    }
    state.icons.remove(m_instanceNumber);
}

void ThumbnailFileIconProvider::setSizes(const Tint32Array& sizes)
{
    m_sizes.clear();
    if (!sizes.isEmpty())
        m_sizes = sizes;
}

int ThumbnailFileIconProvider::liveProviderCount()
{
    SharedState& state = shared();
    QMutexLocker lock(&state.mutex);
    return state.liveProviders;
}

bool ThumbnailFileIconProvider::isCached(quint32 instanceNumber, const QString& absolutePath)
{
    SharedState& state = shared();
    QMutexLocker lock(&state.mutex);
    const auto it = state.icons.constFind(instanceNumber);
    return it != state.icons.constEnd() && it->contains(absolutePath);
}

QImage ThumbnailFileIconProvider::indicatorImage(Indicator indicator)
{
    if (indicator < 0 || indicator >= indicatorCount)
        return QImage();
    SharedState& state = shared();
    QMutexLocker lock(&state.mutex);
    return state.indicators[indicator];
}

QString ThumbnailFileIconProvider::swatchPreviewPath(const QFileInfo& info, int frame)
{
    const QString name = info.fileName();
    return info.absolutePath() + QLatin1String("/.velaSwatches/") + name + QLatin1Char('/') + name
        + QLatin1Char('.') + QString::number(frame) + QLatin1String(".preview");
}

ThumbnailFileIconProvider::Indicator ThumbnailFileIconProvider::indicatorOf(const QFileInfo& info)
{
    if (info.suffix() != QLatin1String("fbx"))
        return NoIndicator;
    const QString markers = info.absolutePath() + QLatin1String("/.velaSwatches/") + info.fileName();
    // A clip outranks a pose when the host wrote both.
    if (QFileInfo::exists(markers + QLatin1String(".anim")))
        return ClipAnimationIndicator;
    if (QFileInfo::exists(markers + QLatin1String(".pose")))
        return PoseIndicator;
    return NoIndicator;
}

QIcon ThumbnailFileIconProvider::icon(const QFileInfo& info) const
{
    if (info.baseName().isEmpty())
        return QIcon();
    const QString path = info.absoluteFilePath();
    SharedState& state = shared();
    {
        QMutexLocker lock(&state.mutex);
        const auto cache = state.icons.constFind(m_instanceNumber);
        if (cache != state.icons.constEnd()) {
            const auto hit = cache->constFind(path);
            if (hit != cache->constEnd())
                return *hit;
        }
    }

    QIcon result;
    {
        TwaitCursor waitCursor;
        result = makeIcon(info);
    }
    QMutexLocker lock(&state.mutex);
    state.icons[m_instanceNumber].insert(path, result);
    return result;
}

QIcon ThumbnailFileIconProvider::makeIcon(const QFileInfo& info) const
{
    const bool isFolder = info.isDir();
    const bool fileLookups = !m_foldersOnly && !isFolder;
    const QString path = info.absoluteFilePath();

    Indicator indicator = NoIndicator;
    bool previewBadge = false;
    QImage raw;
    if (fileLookups) {
        indicator = indicatorOf(info);
        const QString preview = swatchPreviewPath(info, 1);
        if (QFileInfo::exists(preview)) {
            raw = readPicture(preview);
            previewBadge = !raw.isNull();
        }
    }
    TabImageLoader* loader = m_options ? m_options->imageLoader() : nullptr;
    if (raw.isNull() && fileLookups && m_useImageLoader && loader) {
        QPixmap picture;
        if (loader->loadImage(path, picture))
            raw = picture.toImage();
    }

    QImage main;
    if (!raw.isNull()) {
        main = fit(raw, m_iconSize, false, true);
        // Kept at its own pixels, so that views smaller than the icon size show it unscaled.
        raw = fit(raw, square(raw.size()), true, true);
    } else {
        const bool isImage = fileLookups && supportedImageFormats().contains(info.suffix().toUtf8().toLower());
        if (isFolder)
            return m_folderIcon;
        if (isImage)
            main = readFitted(path, m_iconSize);
        // A file named as an image that Qt cannot read still gets the system's file icon.
        if (main.isNull())
            main = systemIconPicture(info);
    }

    QIcon first;
    if (!raw.isNull() && raw.width() < m_iconSize.width() && raw.height() < m_iconSize.height())
        first.addPixmap(toPixmap(raw));
    if (!main.isNull())
        first.addPixmap(toPixmap(main));
    if (!previewBadge && indicator == NoIndicator)
        return first;

    const int margin = TuiScale::length(m_options, 3);
    const QImage previewIndicator = indicatorImage(AnimatedPreviewIndicator);
    const QImage fileIndicator = indicatorImage(indicator);
    QIcon badged;
    for (int i = 0; i < m_sizes.length(); ++i) {
        const QSize edge(m_sizes[i], m_sizes[i]);
        QImage picture = first.pixmap(edge, 1.0).toImage().scaled(edge, Qt::KeepAspectRatio);
        if (previewBadge)
            picture = badge(picture, previewIndicator, 0, margin);
        if (indicator != NoIndicator)
            picture = badge(picture, fileIndicator, 1, margin);
        badged.addPixmap(toPixmap(picture));
    }
    return badged;
}

QImage ThumbnailFileIconProvider::systemIconPicture(const QFileInfo& info) const
{
    const QIcon system = systemIcon(info);
    return system.pixmap(m_iconSize, 1.0).toImage().scaled(m_iconSize, Qt::KeepAspectRatio, Qt::FastTransformation);
}

QList<QIcon> ThumbnailFileIconProvider::animationFrames(const QString& filePath, const QSize& frameSize) const
{
    const QFileInfo info(filePath);
    TwaitCursor waitCursor;
    QList<QImage> pictures;
    // Frames are numbered from 1 without gaps: the first missing number ends the sequence.
    for (int frame = 1;; ++frame) {
        const QString path = swatchPreviewPath(info, frame);
        if (!QFileInfo::exists(path))
            break;
        const QImage picture = readPicture(path);
        if (picture.isNull())
            break;
        pictures.append(picture.scaled(frameSize, Qt::KeepAspectRatio, Qt::FastTransformation).convertToFormat(paintFormat));
    }

    const qint64 count = pictures.size();
    QPen progressPen(QColor(72, 170, 181), TuiScale::length(m_options, 2), Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin);
    QList<QIcon> frames;
    frames.reserve(pictures.size());
    for (qint64 i = 1; i <= count; ++i) {
        QImage& picture = pictures[i - 1];
        QPainter painter(&picture);
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
        painter.setPen(progressPen);
        painter.drawLine(0, 1, int(picture.width() * i / count), 1);
        painter.end();
        frames.append(QIcon(toPixmap(picture)));
    }
    return frames;
}
