#include "PreviewLoader.h"

#include "TabImageLoader.h"

#include <QFileInfo>
#include <QImageReader>

PreviewLoader::PreviewLoader(TabImageLoader* imageLoader, QObject* parent)
    : QObject(parent)
    , m_imageLoader(imageLoader)
{
}

void PreviewLoader::loadPreview(const QString& path)
{
    const QFileInfo info(path);
    if (!info.isFile())
        return;

    QPixmap picture;
    if (m_imageLoader && m_imageLoader->loadImage(path, picture)) {
        Q_EMIT newImagePreviewToDisplay(picture);
        return;
    }

    // Qt lists its formats in lower case; the suffix is folded so "PHOTO.PNG" previews too.
    const QByteArray suffix = info.suffix().toLower().toLatin1();
    if (!QImageReader::supportedImageFormats().contains(suffix)) {
        Q_EMIT newImagePreviewToDisplay(QPixmap());
        return;
    }

    // A damaged file gives a null picture, which still replaces the previous one.
    Q_EMIT newImagePreviewToDisplay(QPixmap(path));
}
