#pragma once

#include "TpictureDecoder.h"

#include <QColor>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QList>

// The hover animation's test material: a scene file with white preview frames beside it, and
// the colour of the progress line drawn over each frame.
namespace TswatchFrames {

inline const QColor progressColour(72, 170, 181);

inline bool writeScene(const QString& path, const QList<int>& frames, const QSize& frameSize = QSize(64, 64))
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write("data") != 4)
        return false;
    for (int frame : frames) {
        const QString preview = TpictureDecoder::swatchPreviewPath(QFileInfo(file).absoluteFilePath(), frame);
        QImage picture(frameSize, QImage::Format_ARGB32);
        picture.fill(Qt::white);
        if (!QDir().mkpath(QFileInfo(preview).absolutePath()) || !picture.save(preview, "PNG"))
            return false;
    }
    return true;
}

} // namespace TswatchFrames
