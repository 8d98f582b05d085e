#include "ThostDpiScaling.h"

#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QPainter>
#include <QScreen>
#include <QSvgRenderer>

#include <cmath>

namespace {
// Host layout metrics at 100 per cent, by number: the spacings and margins of the host's
// own panels, which the browser borrows so that it sits flush inside the host.
int baseMetric(int n)
{
    switch (n) {
    case 2: return 4;   // gap between side-by-side panels
    case 3: return 2;   // small bottom/top inset
    case 4: return 4;   // window side inset
    case 5: return 4;   // spacing inside a panel
    case 6: return 4;   // window top inset
    case 7: return 2;   // spacing between stacked rows
    default: return 4;
    }
}
const char* const kIconRoot = ":/orlo/icons/";
}

ThostDpiScaling::ThostDpiScaling()
{
    const qreal forced = parseScale(qEnvironmentVariable("ORLO_UI_SCALE"));
    if (forced > 0) {
        m_scale = forced;
    } else if (QScreen* screen = QGuiApplication::primaryScreen()) {
        // Logical DPI over the 96 of a 100 per cent desktop, in the steps the icons exist at.
        const qreal raw = screen->logicalDotsPerInch() / 96.0;
        m_scale = raw >= 1.75 ? 2.0 : raw >= 1.25 ? 1.5 : 1.0;
    }
}

qreal ThostDpiScaling::parseScale(const QString& text)
{
    QString t = text.trimmed();
    if (t.endsWith(QLatin1Char('%')))
        t.chop(1);
    bool ok = false;
    qreal value = t.toDouble(&ok);
    if (!ok || value <= 0)
        return 0;
    if (value >= 10)
        value /= 100.0;
    return (value >= 0.5 && value <= 4.0) ? value : 0;
}

QSize ThostDpiScaling::scaledSize(const QSize& size) const
{
    return QSize(scaledLength(size.width()), scaledLength(size.height()));
}

int ThostDpiScaling::scaledLength(int length) const
{
    return int(std::lround(length * m_scale));
}

int ThostDpiScaling::metric(int n) const
{
    return scaledLength(baseMetric(n));
}

qreal ThostDpiScaling::scaleFactor() const
{
    return m_scale;
}

int ThostDpiScaling::percent() const
{
    return m_scale >= 1.75 ? 200 : m_scale >= 1.25 ? 150 : 100;
}

QString ThostDpiScaling::resourcePath(const QString& fileName, int percent) const
{
    if (percent == 100)
        return QLatin1String(kIconRoot) + fileName;
    const QFileInfo info(fileName);
    return QLatin1String(kIconRoot) + info.completeBaseName() + QLatin1Char('_') + QString::number(percent)
        + QLatin1Char('.') + info.suffix();
}

QPixmap ThostDpiScaling::pixmap(const QString& fileName) const
{
    if (fileName.isEmpty())
        return QPixmap();
    const int p = percent();
    if (fileName.endsWith(QLatin1String(".svg"), Qt::CaseInsensitive)) {
        // Checked first: the renderer complains aloud about a file it cannot open.
        if (!QFile::exists(QLatin1String(kIconRoot) + fileName))
            return QPixmap();
        QSvgRenderer renderer(QLatin1String(kIconRoot) + fileName);
        if (!renderer.isValid())
            return QPixmap();
        return pixmapAtSize(fileName, renderer.defaultSize());
    }
    QPixmap picture(resourcePath(fileName, p));
    if (picture.isNull() && p != 100) {
        const QPixmap base(resourcePath(fileName, 100));
        if (!base.isNull())
            picture = base.scaled(scaledSize(base.size()), Qt::KeepAspectRatio, Qt::SmoothTransformation);
    }
    return picture;
}

QIcon ThostDpiScaling::icon(const QString& fileName) const
{
    QIcon result;
    if (fileName.isEmpty())
        return result;
    if (fileName.endsWith(QLatin1String(".svg"), Qt::CaseInsensitive)) {
        if (QFile::exists(QLatin1String(kIconRoot) + fileName))
            result = QIcon(QLatin1String(kIconRoot) + fileName);
        return result;
    }
    // Every scale the host has: Qt then picks the sharpest one for each device pixel ratio.
    for (int p : {100, 150, 200}) {
        const QString path = resourcePath(fileName, p);
        if (QFile::exists(path))
            result.addFile(path);
    }
    return result;
}

QPixmap ThostDpiScaling::pixmapAtSize(const QString& fileName, const QSize& size) const
{
    const QSize pixels = scaledSize(size);
    if (fileName.isEmpty())
        return QPixmap();
    if (fileName.endsWith(QLatin1String(".svg"), Qt::CaseInsensitive)) {
        if (!QFile::exists(QLatin1String(kIconRoot) + fileName) || pixels.isEmpty())
            return QPixmap();
        QSvgRenderer renderer(QLatin1String(kIconRoot) + fileName);
        if (!renderer.isValid())
            return QPixmap();
        QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        renderer.render(&painter);
        painter.end();
        return QPixmap::fromImage(image);
    }
    // The smallest of the host's scales that is at least as large as asked, so a picture is
    // only ever scaled down; failing that, the largest there is.
    QPixmap best;
    for (int p : {100, 150, 200}) {
        const QPixmap candidate(resourcePath(fileName, p));
        if (candidate.isNull())
            continue;
        best = candidate;
        if (candidate.width() >= pixels.width() && candidate.height() >= pixels.height())
            break;
    }
    if (best.isNull() || best.size() == pixels)
        return best;
    return best.scaled(pixels, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

QFont ThostDpiScaling::scaledFont(const QFont& font) const
{
    // Point sizes already follow the screen's DPI; only a forced scale needs adjusting.
    QFont scaled = font;
    if (font.pointSizeF() > 0 && !qEnvironmentVariableIsEmpty("ORLO_UI_SCALE")) {
        const QScreen* screen = QGuiApplication::primaryScreen();
        const qreal screenScale = screen ? screen->logicalDotsPerInch() / 96.0 : 1.0;
        scaled.setPointSizeF(font.pointSizeF() * m_scale / (screenScale > 0 ? screenScale : 1.0));
    }
    return scaled;
}
