#include "TfileKindIconProvider.h"

#include <QFileInfo>
#include <QIcon>
#include <QMimeDatabase>

TfileKindIconProvider::TfileKindIconProvider() = default;

TfileKindIconProvider::~TfileKindIconProvider() = default;

QString TfileKindIconProvider::type(const QFileInfo& info) const
{
    if (!info.isFile())
        return QFileIconProvider::type(info);
    // QMimeDatabase may be used from any thread; the file model asks from its gatherer too.
    const QMimeDatabase database;
    return database.mimeTypeForFile(info, QMimeDatabase::MatchExtension).comment();
}

QIcon TfileKindIconProvider::systemIcon(const QFileInfo& info) const
{
    if (!info.isFile())
        return QFileIconProvider::icon(info);
    const QMimeType mime = QMimeDatabase().mimeTypeForFile(info, QMimeDatabase::MatchExtension);
    QIcon icon = QIcon::fromTheme(mime.iconName());
    if (icon.isNull())
        icon = QIcon::fromTheme(mime.genericIconName());
    if (icon.isNull())
        icon = QFileIconProvider::icon(QAbstractFileIconProvider::File);
    return icon;
}

TfileKindIconProvider* TfileKindIconProvider::fallback()
{
    static TfileKindIconProvider provider;
    return &provider;
}
