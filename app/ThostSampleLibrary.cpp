#include "ThostSampleLibrary.h"

#include "VelaEnv.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {
Tstring toT(const QString& text)
{
    Tstring out;
    Tstring_fromQString(text, out);
    return out;
}
} // namespace

QString ThostSampleLibrary::find(const QString& appDir)
{
    const QDir dir(appDir);
    for (const QString& candidate : {QStringLiteral("samples"), QStringLiteral("../samples"),
                                     QStringLiteral("../share/orlo-browser/samples")}) {
        const QString root = QDir::cleanPath(dir.filePath(candidate));
        if (QFileInfo(QDir(root).filePath(QLatin1String(kManifest))).isFile())
            return root;
    }
    return QString();
}

bool ThostSampleLibrary::read(const QString& root)
{
    const QString manifestPath = QDir(root).filePath(QLatin1String(kManifest));
    QFile file(manifestPath);
    if (!QFileInfo(manifestPath).isFile() || !file.open(QIODevice::ReadOnly))
        return false;
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return false;
    const QJsonObject manifest = document.object();
    const QDir dir(QFileInfo(root).absoluteFilePath());
    auto path = [&dir, &manifest](const char* key) {
        const QString relative = manifest.value(QLatin1String(key)).toString();
        return relative.isEmpty() ? QString() : QDir::cleanPath(dir.filePath(relative));
    };
    m_root = dir.absolutePath();
    m_velaLocation = path("velaLocation");
    m_moteLocation = path("moteLocation");
    m_projectsFolder = path("projects");
    m_startFolder = path("startFolder");
    m_contentPath.clear();
    for (const QJsonValue& entry : manifest.value(QLatin1String("contentPath")).toArray())
        m_contentPath << QDir::cleanPath(dir.filePath(entry.toString()));
    return true;
}

QStringList ThostSampleLibrary::applyEnvironment() const
{
    QStringList set;
    auto setIfUnset = [&set](const char* name, const QString& value) {
        if (value.isEmpty() || !Tstring_toQString(VelaGetEnv(Tstring(name))).isEmpty())
            return;
        if (VelaPutEnv(Tstring(name), toT(value)))
            set << QLatin1String(name);
    };
    setIfUnset("VELA_LOCATION", m_velaLocation);
    setIfUnset("MOTE_LOCATION", m_moteLocation);
    setIfUnset("VELA_CONTENT_PATH", m_contentPath.join(QLatin1Char(';')));
    return set;
}
