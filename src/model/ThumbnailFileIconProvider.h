#pragma once

#include "Tint32Array.h"

#include "TfileKindIconProvider.h"
#include <QIcon>
#include <QImage>
#include <QList>
#include <QSize>
#include <QString>

class QFileInfo;
class TassetBrowserOptions;

// The thumbnail of each entry of the content pane, made the first time it is asked for and
// then kept for the provider's lifetime under the entry's absolute path.
//
// A file's picture is, by preference: frame 1 of the swatch preview the host wrote into
// FOLDER/.velaSwatches/NAME/NAME.1.preview; the host image loader's picture; the file itself
// when Qt reads its format; the system icon. Folders show the browser's folder picture.
// Swatch and loader pictures are padded onto a transparent square of the icon size, at the
// bottom and centred; a source picture smaller than the icon is kept in the icon as well, at
// its own pixels (padded to its own square), so small views stay sharp.
//
// Badges: a swatch preview gets the animated-preview badge at the top left; a file whose
// suffix is exactly "fbx" gets, at the top right, the clip badge when
// FOLDER/.velaSwatches/NAME.anim exists, else the pose badge when NAME.pose exists. A badged
// icon holds one pixmap per edge length given to setSizes() and nothing else, so set the
// sizes before asking for icons.
//
// Nothing is invalidated: a preview written after a path was asked for shows only in a new
// provider. The wait cursor is shown while a picture is made on the GUI thread. The picture
// work is done on QImage and the process-wide caches are locked, so that the making can move
// to a worker thread; the system icon and the host image loader stay GUI-thread calls.
class ThumbnailFileIconProvider : public TfileKindIconProvider
{
public:
    enum Indicator {
        NoIndicator = -1,
        AnimatedPreviewIndicator = 0,
        ClipAnimationIndicator = 1,
        PoseIndicator = 2
    };

    // options: scaling, resource images and the image loader; not owned, may be null.
    // iconSize: the size the pictures are made for (already scaled). foldersOnly: files get
    // only their system icon, without swatch, loader or badge.
    ThumbnailFileIconProvider(const TassetBrowserOptions* options, const QSize& iconSize, bool foldersOnly);
    ~ThumbnailFileIconProvider() override;

    ThumbnailFileIconProvider(const ThumbnailFileIconProvider&) = delete;
    ThumbnailFileIconProvider& operator=(const ThumbnailFileIconProvider&) = delete;

    // Edge lengths, in pixels, of the badged icons' pixmaps. An empty array clears them.
    void setSizes(const Tint32Array& sizes);
    const Tint32Array& sizes() const { return m_sizes; }

    QSize iconSize() const { return m_iconSize; }
    bool foldersOnly() const { return m_foldersOnly; }
    // Whether the host image loader is asked for files without a swatch preview. On by default.
    bool usesImageLoader() const { return m_useImageLoader; }
    void setUseImageLoader(bool use) { m_useImageLoader = use; }
    QIcon folderIcon() const { return m_folderIcon; }

    using QFileIconProvider::icon;
    // A null icon, never cached, for an entry whose base name is empty (".hidden").
    QIcon icon(const QFileInfo& info) const override;

    // The swatch preview frames of the file at filePath (frames 1, 2, ... up to the first
    // missing or unreadable one), each scaled to fit frameSize and carrying a progress line
    // along its top that grows to the full width on the last frame. Empty without frame 1.
    QList<QIcon> animationFrames(const QString& filePath, const QSize& frameSize) const;

    // FOLDER/.velaSwatches/NAME/NAME.frame.preview for the file info names.
    static QString swatchPreviewPath(const QFileInfo& info, int frame);
    // Clip or pose indicator of info (only for the suffix "fbx", case-sensitive), or NoIndicator.
    static Indicator indicatorOf(const QFileInfo& info);

    // Number of providers alive in the process.
    static int liveProviderCount();
    // The key of this provider's cache, unique among the providers made in the process.
    quint32 instanceNumber() const { return m_instanceNumber; }
    // Whether the cache of the provider with that number holds an icon for absolutePath.
    static bool isCached(quint32 instanceNumber, const QString& absolutePath);
    // The indicator pictures shared by all providers; null ones while no provider lives.
    static QImage indicatorImage(Indicator indicator);

private:
    QIcon makeIcon(const QFileInfo& info) const;
    QImage systemIconPicture(const QFileInfo& info) const;

    Tint32Array m_sizes;
    QSize m_iconSize;
    const TassetBrowserOptions* m_options;
    bool m_useImageLoader = true;
    bool m_foldersOnly;
    quint32 m_instanceNumber;
    QIcon m_folderIcon;
};

// The wait cursor for the time of one picture's making. Only the GUI thread may touch the
// application's cursor, so on any other thread it does nothing.
class TwaitCursor
{
public:
    TwaitCursor();
    ~TwaitCursor();
    TwaitCursor(const TwaitCursor&) = delete;
    TwaitCursor& operator=(const TwaitCursor&) = delete;

private:
    bool m_set;
};
