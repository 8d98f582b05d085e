#include "ThumbnailFileIconProvider.h"

#include "TabDpiScaling.h"
#include "TassetBrowserOptions.h"
#include "TpictureDecoder.h"
#include "TuiScale.h"

#include <QFileInfo>
#include <QMutexLocker>
#include <QPixmap>

#include <cmath>

ThumbnailFileIconProvider::ThumbnailFileIconProvider(const TassetBrowserOptions* options, const QSize& iconSize,
                                                     bool foldersOnly)
    : m_iconSize(iconSize)
    , m_foldersOnly(foldersOnly)
{
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
    const QImage fitted = TpictureDecoder::fit(folder, iconSize, false, false);
    if (!fitted.isNull())
        m_folderIcon.addPixmap(QPixmap::fromImage(fitted));
}

ThumbnailFileIconProvider::~ThumbnailFileIconProvider() = default;

QIcon ThumbnailFileIconProvider::icon(const QFileInfo& info) const
{
    // A name with nothing before its first dot (the same test as an empty baseName(), without
    // building it: this runs for every listed entry).
    const QString name = info.fileName();
    if (name.isEmpty() || name.startsWith(QLatin1Char('.')))
        return QIcon();
    // The listing's file information is already filled in: isDir() reads no disk here.
    if (info.isDir())
        return m_folderIcon;
    if (!info.isFile())
        return systemIcon(info);
    // Keyed by suffix: the kind follows from it, and a hash look-up is far cheaper than the
    // mime database's glob matching for every listed file.
    // Entries of one kind usually follow one another: the last answer is checked first,
    // without building a key.
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    const QStringView rawSuffix = dot < 0 ? QStringView() : QStringView(name).mid(dot + 1);
    QMutexLocker lock(&m_kindMutex);
    if (!rawSuffix.isEmpty() && rawSuffix == m_lastSuffix)
        return m_lastIcon;
    const QString suffix = info.suffix();
    const QString kind = suffix.isEmpty() ? QLatin1Char('/') + name : suffix.toLower();
    auto it = m_kindIcons.find(kind);
    if (it == m_kindIcons.end())
        it = m_kindIcons.insert(kind, systemIcon(info));
    if (!rawSuffix.isEmpty()) {
        m_lastSuffix = rawSuffix.toString();
        m_lastIcon = *it;
    }
    return *it;
}
