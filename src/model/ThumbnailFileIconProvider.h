#pragma once

#include "TfileKindIconProvider.h"

#include <QHash>
#include <QIcon>
#include <QMutex>
#include <QSize>
#include <QString>

class QFileInfo;
class TassetBrowserOptions;

// The icon every entry of a content listing shows at once: the browser's folder picture for
// folders, the file kind's icon for files. The file model asks for it on the GUI thread as
// each entry arrives, so it is judged from the name alone and never opens a file. The real
// thumbnails (swatch preview, host picture, image) come from the thumbnail service in the
// background and replace these placeholders row by row (TfileSystemModel).
class ThumbnailFileIconProvider : public TfileKindIconProvider
{
public:
    // options: scaling and resource images; not owned, may be null. iconSize: the size of
    // the folder picture (already scaled); up to the scaled 16 it is the small bitmap folder,
    // above it the scalable one drawn at that size. foldersOnly: kept for the small lists,
    // whose files show nothing but their kind icon anyway.
    ThumbnailFileIconProvider(const TassetBrowserOptions* options, const QSize& iconSize, bool foldersOnly);
    ~ThumbnailFileIconProvider() override;

    ThumbnailFileIconProvider(const ThumbnailFileIconProvider&) = delete;
    ThumbnailFileIconProvider& operator=(const ThumbnailFileIconProvider&) = delete;

    QSize iconSize() const { return m_iconSize; }
    bool foldersOnly() const { return m_foldersOnly; }
    QIcon folderIcon() const { return m_folderIcon; }

    using QFileIconProvider::icon;
    // A null icon for an entry whose base name is empty (".hidden").
    QIcon icon(const QFileInfo& info) const override;

private:
    QSize m_iconSize;
    bool m_foldersOnly;
    QIcon m_folderIcon;
    // One icon per kind: a theme look-up per listed file would cost more than the listing.
    mutable QMutex m_kindMutex;
    mutable QHash<QString, QIcon> m_kindIcons;
    mutable QString m_lastSuffix;
    mutable QIcon m_lastIcon;
};
