#include "TfileKindIconProvider.h"

#include <QFileInfo>
#include <QHash>
#include <QIcon>
#include <QMimeDatabase>
#include <QMutex>

namespace {

struct Kind
{
    QString comment;
    QString iconName;
    QString genericIconName;
};

// Past this many kinds the cache starts again: a folder of oddly named files cannot grow it
// without bound.
constexpr int kMaxCachedKinds = 4096;

Kind kindOf(const QString& suffix, const QString& name, QMutex& mutex, QHash<QString, Kind>& cache);

// A file's kind from its name alone, looked up once per suffix: the database's own lookup
// asks the file system about the name first, which on a slow share costs a call per entry.
Kind kindOf(const QFileInfo& info)
{
    static QMutex mutex;
    static QHash<QString, Kind> cache;
    const QString name = info.fileName();
    // A listing asks for one entry after another, mostly of one kind: the last answer of
    // this thread is checked first, without building a key or taking the lock.
    thread_local QString lastSuffix;
    thread_local Kind lastKind;
    const qsizetype dot = name.indexOf(QLatin1Char('.'));
    const QStringView rawSuffix = dot < 0 ? QStringView() : QStringView(name).mid(dot + 1);
    if (!rawSuffix.isEmpty() && rawSuffix == lastSuffix)
        return lastKind;
    const Kind kind = kindOf(info.completeSuffix().toLower(), name, mutex, cache);
    if (!rawSuffix.isEmpty()) {
        lastSuffix = rawSuffix.toString();
        lastKind = kind;
    }
    return kind;
}

Kind kindOf(const QString& suffix, const QString& name, QMutex& mutex, QHash<QString, Kind>& cache)
{
    // Names without a suffix ("Makefile") are matched whole.
    const QString key = suffix.isEmpty() ? QLatin1Char('/') + name : suffix;
    const QMutexLocker locker(&mutex);
    const auto cached = cache.constFind(key);
    if (cached != cache.constEnd())
        return cached.value();
    const QMimeDatabase database;
    const QList<QMimeType> types = database.mimeTypesForFileName(name);
    const QMimeType mime = types.isEmpty() ? database.mimeTypeForName(QStringLiteral("application/octet-stream"))
                                           : types.first();
    if (cache.size() >= kMaxCachedKinds)
        cache.clear();
    return cache.insert(key, Kind{mime.comment(), mime.iconName(), mime.genericIconName()}).value();
}

} // namespace

TfileKindIconProvider::TfileKindIconProvider() = default;

TfileKindIconProvider::~TfileKindIconProvider() = default;

QString TfileKindIconProvider::type(const QFileInfo& info) const
{
    if (!info.isFile())
        return QFileIconProvider::type(info);
    // Any thread: the file model asks from its gatherer too.
    return kindOf(info).comment;
}

QIcon TfileKindIconProvider::systemIcon(const QFileInfo& info) const
{
    if (!info.isFile())
        return QFileIconProvider::icon(info);
    const Kind kind = kindOf(info);
    QIcon icon = QIcon::fromTheme(kind.iconName);
    if (icon.isNull())
        icon = QIcon::fromTheme(kind.genericIconName);
    if (icon.isNull())
        icon = QFileIconProvider::icon(QAbstractFileIconProvider::File);
    return icon;
}

TfileKindIconProvider* TfileKindIconProvider::fallback()
{
    static TfileKindIconProvider provider;
    return &provider;
}
