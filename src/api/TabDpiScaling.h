#pragma once

#include "ORLOAssetBrowserExport.h"

#include <QFont>
#include <QIcon>
#include <QPixmap>
#include <QSize>
#include <QString>

// Implemented by the host: every pixel size the browser uses, and every image it shows,
// comes through here, so the browser matches the host's screen scale and look.
//
// All operations are called on the GUI thread, often (during layout and painting);
// answer from memory. The browser never deletes the object.
// The order and number of the operations are part of the binary interface.
class ORLO_BROWSER_EXPORT TabDpiScaling
{
public:
    TabDpiScaling();
    TabDpiScaling(const TabDpiScaling&);
    TabDpiScaling& operator=(const TabDpiScaling&);
    virtual ~TabDpiScaling();

    // Returns size, given in pixels at 100 per cent, scaled to the current screen.
    // Called for fixed sizes: icon and button sizes, panel size hints and minimum sizes.
    virtual QSize scaledSize(const QSize& size) const = 0;

    // Returns a length in pixels at 100 per cent scaled to the current screen.
    // Called for margins, spacings, borders and thumbnail edge lengths.
    virtual int scaledLength(int length) const = 0;

    // Returns the host's pixel size for its layout metric number metric (the browser uses
    // 2, 3, 4, 5, 6 and 7 for the margins and spacings between its panels); the meaning of
    // each number is the host's. Called while panels are laid out.
    virtual int metric(int metric) const = 0;

    // Returns the current scale factor (1.0 at 100 per cent, 1.5 at 150, 2.0 at 200).
    virtual qreal scaleFactor() const = 0;

    // Returns the resource image fileName (such as "CB_Back.png") at the current scale:
    // the host picks the "_150" or "_200" variant where the screen asks for it.
    // A null pixmap when the host has no such image.
    virtual QPixmap pixmap(const QString& fileName) const = 0;

    // Returns the resource image fileName as an icon holding every scale the host has,
    // for buttons and menus. A null icon when the host has no such image.
    virtual QIcon icon(const QString& fileName) const = 0;

    // Returns the resource image fileName rendered at exactly size device-independent
    // pixels (scalable images such as "CB_Folder.svg" are drawn at that size rather than
    // scaled from a bitmap). A null pixmap when the host has no such image.
    virtual QPixmap pixmapAtSize(const QString& fileName, const QSize& size) const = 0;

    // Returns the font the browser should use for item texts at the current scale.
    virtual QFont scaledFont(const QFont& font) const = 0;
};
