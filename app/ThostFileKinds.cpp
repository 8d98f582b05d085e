#include "ThostFileKinds.h"

#include <QFileInfo>
#include <QImageReader>

namespace ThostFileKinds {
namespace {
// Asked for every file of a folder the browser lists; the readers do not change while the
// program runs.
bool readableImageSuffix(const QString& suffix)
{
    static const QList<QByteArray> formats = QImageReader::supportedImageFormats();
    return !suffix.isEmpty() && formats.contains(suffix.toLatin1());
}
} // namespace

Kind kindOf(const QString& path)
{
    const QFileInfo info(path);
    const QString suffix = info.suffix().toLower();
    if (suffix == QLatin1String("vela") || suffix == QLatin1String("velb"))
        return Kind::Scene;
    if (suffix == QLatin1String("fbx") || suffix == QLatin1String("obj"))
        return Kind::Interchange;
    if (suffix == QLatin1String("vsl"))
        return Kind::Script;
    if (readableImageSuffix(suffix)) {
        // The same folder names the browser treats as stamp folders.
        if (path.contains(QLatin1String("Stroke_Sketch")) || path.contains(QLatin1String("Sculpting_Stamps")))
            return Kind::Stamp;
        return Kind::Image;
    }
    return Kind::Other;
}

Kind commonKind(const QStringList& paths)
{
    if (paths.isEmpty())
        return Kind::Other;
    auto group = [](Kind kind) { return kind == Kind::Interchange ? Kind::Scene : kind; };
    const Kind first = kindOf(paths.first());
    for (const QString& path : paths) {
        if (group(kindOf(path)) != group(first))
            return Kind::Other;
    }
    return first;
}

QStringList fileTypes()
{
    return {QStringLiteral("Vela Scene"), QStringLiteral("Vela Binary"), QStringLiteral("FBX"), QStringLiteral("OBJ")};
}

QString fileTypeOf(const QString& path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix == QLatin1String("vela"))
        return fileTypes().at(0);
    if (suffix == QLatin1String("velb"))
        return fileTypes().at(1);
    if (suffix == QLatin1String("fbx"))
        return fileTypes().at(2);
    if (suffix == QLatin1String("obj"))
        return fileTypes().at(3);
    return QString();
}

QString swatchFramePath(const QString& path, int frame)
{
    const QFileInfo info(path);
    return info.absolutePath() + QLatin1String("/.velaSwatches/") + info.fileName() + QLatin1Char('/')
        + info.fileName() + QLatin1Char('.') + QString::number(frame) + QLatin1String(".preview");
}

QString sidecarPicturePath(const QString& path)
{
    return QFileInfo(path).absoluteFilePath() + QLatin1String(".icon");
}

} // namespace ThostFileKinds
