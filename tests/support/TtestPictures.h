#pragma once

// Pictures for the picture pipeline's tests: solid images, files holding them, pixel checks,
// and a thumbnail asked for and waited on.
#include "TthumbnailService.h"

#include <QColor>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QIcon>
#include <QImage>
#include <QTest>

namespace TtestPictures {

inline QImage solid(const QSize& size, const QColor& colour, QImage::Format format = QImage::Format_ARGB32)
{
    QImage image(size, format);
    image.fill(colour);
    return image;
}

// path as a PNG of picture when there is one, else holding bytes; its folders made as needed.
inline bool put(const QString& path, const QImage& picture = QImage(), const QByteArray& bytes = "data")
{
    if (!QDir().mkpath(QFileInfo(path).absolutePath()))
        return false;
    if (!picture.isNull())
        return picture.save(path, "PNG");
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// Both opaque, and of one colour.
inline bool sameRgb(const QColor& a, const QColor& b)
{
    return a.alpha() == 255 && b.alpha() == 255 && a.rgb() == b.rgb();
}

inline QImage pictureOf(const QIcon& icon, int edge)
{
    return icon.pixmap(QSize(edge, edge), 1.0).toImage();
}

// Asks service for path at edge and waits for it, and for the workers (a disk write follows
// the picture); the cached icon, null when there is no picture of its own or none came.
inline QIcon made(TthumbnailService& service, quint64 owner, const QString& path, int edge)
{
    const TthumbnailKey key{QFileInfo(path).absoluteFilePath(), QSize(edge, edge), owner};
    int client = 0;
    service.request(&client, key, TthumbnailService::Visible);
    if (!QTest::qWaitFor([&] { return service.isCached(key); }, 10000)
        || !QTest::qWaitFor([&] { return service.activeWorkers() == 0; }, 10000))
        return QIcon();
    return service.thumbnail(key);
}

} // namespace TtestPictures
