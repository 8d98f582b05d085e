#pragma once

#include "TabDpiScaling.h"

// The reference host's answer to the browser's size and image questions. The scale comes
// from the screen unless ORLO_UI_SCALE says otherwise ("150", "1.5", "200%"), so every scale
// can be tried on any machine.
class ThostDpiScaling : public TabDpiScaling
{
public:
    ThostDpiScaling();

    QSize scaledSize(const QSize& size) const override;
    int scaledLength(int length) const override;
    int metric(int metric) const override;
    qreal scaleFactor() const override;
    QPixmap pixmap(const QString& fileName) const override;
    QIcon icon(const QString& fileName) const override;
    QPixmap pixmapAtSize(const QString& fileName, const QSize& size) const override;
    QFont scaledFont(const QFont& font) const override;

    // Parses an ORLO_UI_SCALE value; 0 when it is not a usable scale.
    static qreal parseScale(const QString& text);

private:
    QString resourcePath(const QString& fileName, int percent) const;
    int percent() const;

    qreal m_scale = 1.0;
};
