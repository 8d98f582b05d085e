#include "ThostImageLoader.h"

#include "ThostFileKinds.h"

#include <QFileInfo>
#include <QImageReader>

using ThostFileKinds::Kind;

QString ThostImageLoader::pictureSource(const QString& filePath)
{
    const QFileInfo info(filePath);
    if (!info.isFile())
        return QString();
    switch (ThostFileKinds::kindOf(filePath)) {
    case Kind::Scene:
    case Kind::Interchange: {
        const QString frame = ThostFileKinds::swatchFramePath(filePath, 1);
        if (QFileInfo(frame).isFile())
            return frame;
        const QString sidecar = ThostFileKinds::sidecarPicturePath(filePath);
        if (QFileInfo(sidecar).isFile())
            return sidecar;
        return QString();
    }
    case Kind::Image:
    case Kind::Stamp:
    case Kind::Script:
    case Kind::Other:
        break;
    }
    return QString();
}

bool ThostImageLoader::loadImage(const QString& filePath, QPixmap& picture)
{
    const QString source = pictureSource(filePath);
    if (source.isEmpty())
        return false;
    // Swatch frames and sidecars carry no telling suffix: let the reader look at the bytes.
    QImageReader reader(source);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    const QImage image = reader.read();
    if (image.isNull())
        return false;
    picture = QPixmap::fromImage(image);
    return true;
}

bool ThostImageLoader::canLoadImage(const QString& filePath) const
{
    return !pictureSource(filePath).isEmpty();
}
