// orlo-iconrender: turns the SVG icon sources into the bitmaps the reference host ships.
//
//   orlo-iconrender --out DIR [--scalable NAME.svg]... [--sheet FILE [--zoom N] [--only NAME]...] SOURCE.svg...
//
// Each source NAME.svg of W x H becomes NAME.png (W x H), NAME_150.png and NAME_200.png,
// the sizes a host asks for at 100, 150 and 200 per cent. A source named with --scalable is
// copied as it is, for pictures drawn at any size. DIR/orlo_icons.qrc lists every file under
// the prefix the host reads its images from. --sheet also draws every bitmap at its three
// scales on a dark and a light background into one picture, to judge them side by side.
#include <QCommandLineParser>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSaveFile>
#include <QSvgRenderer>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>

namespace {
const int kPercents[] = {100, 150, 200};

int fail(const QString& message)
{
    std::fprintf(stderr, "orlo-iconrender: %s\n", qPrintable(message));
    return 1;
}

QString bitmapName(const QString& baseName, int percent)
{
    return percent == 100 ? baseName + QStringLiteral(".png")
                          : QStringLiteral("%1_%2.png").arg(baseName).arg(percent);
}

// Draws the source at size, moved by shift, on a canvas one pixel wider on every side, so
// that whatever the shift pushes past the border can be seen.
QImage renderPadded(QSvgRenderer& renderer, const QSize& size, const QPointF& shift)
{
    QImage image(size + QSize(2, 2), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    renderer.render(&painter, QRectF(QPointF(1, 1) + shift, QSizeF(size)));
    painter.end();
    return image.convertToFormat(QImage::Format_ARGB32);
}

// Pixels that are neither fully covered nor empty inside the border: the blur along edges
// that fall between pixels. Returns -1 when something was drawn outside the border.
int fuzz(const QImage& padded)
{
    int count = 0;
    for (int y = 0; y < padded.height(); ++y) {
        const QRgb* line = reinterpret_cast<const QRgb*>(padded.constScanLine(y));
        const bool borderRow = y == 0 || y == padded.height() - 1;
        for (int x = 0; x < padded.width(); ++x) {
            const int alpha = qAlpha(line[x]);
            if (borderRow || x == 0 || x == padded.width() - 1) {
                if (alpha > 0)
                    return -1;
            } else {
                count += alpha > 0 && alpha < 255;
            }
        }
    }
    return count;
}

// Sources are drawn on a whole-pixel grid, which stays whole at 200 per cent but falls on
// half pixels at 150. Moving the drawing by half a pixel puts those edges back on pixel
// boundaries. Of the shifts that cut nothing off, the one with clearly the least blur wins.
QImage renderSharpest(QSvgRenderer& renderer, const QSize& size)
{
    QImage best = renderPadded(renderer, size, QPointF());
    int bestFuzz = fuzz(best);
    for (qreal dy : {0.0, -0.5, 0.5}) {
        for (qreal dx : {0.0, -0.5, 0.5}) {
            if (dx == 0 && dy == 0)
                continue;
            QImage image = renderPadded(renderer, size, QPointF(dx, dy));
            const int f = fuzz(image);
            if (f >= 0 && (bestFuzz < 0 || f * 10 < bestFuzz * 9)) {
                best = image;
                bestFuzz = f;
            }
        }
    }
    return best.copy(QRect(QPoint(1, 1), size));
}

bool writeFile(const QString& path, const QByteArray& bytes)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(bytes);
    return file.commit();
}

// Every bitmap at its three scales, magnified zoom times without smoothing, on the host's
// dark panel colour and on a light one: blur, misalignment and poor contrast show at a glance.
bool drawSheet(const QString& dir, const QStringList& baseNames, int zoom, const QString& target)
{
    const int labelWidth = 170;
    const int gap = 8;
    const QColor backgrounds[] = {QColor(0x3a, 0x3a, 0x3d), QColor(0xef, 0xef, 0xef)};
    QList<QList<QImage>> images;
    int columnWidth = gap;
    int rowHeight = 0;
    for (const QString& baseName : baseNames) {
        QList<QImage> row;
        int width = gap;
        for (int percent : kPercents) {
            const QImage image(QDir(dir).filePath(bitmapName(baseName, percent)));
            row << image.scaled(image.size() * zoom, Qt::KeepAspectRatio, Qt::FastTransformation);
            width += row.last().width() + gap;
            rowHeight = std::max(rowHeight, row.last().height() + 2 * gap);
        }
        columnWidth = std::max(columnWidth, width);
        images << row;
    }
    QImage sheet(labelWidth + 2 * columnWidth, rowHeight * baseNames.size(), QImage::Format_ARGB32);
    sheet.fill(Qt::white);
    QPainter painter(&sheet);
    for (int r = 0; r < baseNames.size(); ++r) {
        const int y = r * rowHeight;
        painter.setPen(Qt::black);
        painter.drawText(QRect(4, y, labelWidth - 8, rowHeight), Qt::AlignVCenter | Qt::AlignLeft, baseNames.at(r));
        for (int b = 0; b < 2; ++b) {
            int x = labelWidth + b * columnWidth;
            painter.fillRect(QRect(x, y, columnWidth, rowHeight), backgrounds[b]);
            x += gap;
            for (const QImage& image : images.at(r)) {
                painter.drawImage(x, y + gap, image);
                x += image.width() + gap;
            }
        }
    }
    painter.end();
    return sheet.save(target, "PNG");
}
} // namespace

int main(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    QCommandLineParser parser;
    const QCommandLineOption outOption(QStringLiteral("out"), QStringLiteral("Output folder."), QStringLiteral("DIR"));
    const QCommandLineOption scalableOption(QStringLiteral("scalable"),
        QStringLiteral("Copy this source as it is instead of rendering it."), QStringLiteral("NAME"));
    const QCommandLineOption sheetOption(QStringLiteral("sheet"),
        QStringLiteral("Also draw an inspection sheet of all bitmaps to FILE."), QStringLiteral("FILE"));
    parser.addOption(outOption);
    parser.addOption(scalableOption);
    const QCommandLineOption zoomOption(QStringLiteral("zoom"),
        QStringLiteral("Magnify the sheet's pictures N times (default 1)."), QStringLiteral("N"), QStringLiteral("1"));
    const QCommandLineOption onlyOption(QStringLiteral("only"),
        QStringLiteral("Put only this icon (base name) on the sheet; may be repeated."), QStringLiteral("NAME"));
    parser.addOption(sheetOption);
    parser.addOption(zoomOption);
    parser.addOption(onlyOption);
    parser.addPositionalArgument(QStringLiteral("SOURCES"), QStringLiteral("SVG sources."));
    if (!parser.parse(arguments))
        return fail(parser.errorText());

    // Vector paths need no windowing system; only the sheet's captions need fonts, and
    // then the offscreen platform serves, as a build machine has no display.
    std::unique_ptr<QCoreApplication> app;
    if (parser.isSet(sheetOption)) {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        app = std::make_unique<QGuiApplication>(argc, argv);
    } else {
        app = std::make_unique<QCoreApplication>(argc, argv);
    }

    const QString outDir = parser.value(outOption);
    if (outDir.isEmpty())
        return fail(QStringLiteral("--out is required"));
    if (!QDir().mkpath(outDir))
        return fail(QStringLiteral("cannot create %1").arg(outDir));
    const QStringList scalable = parser.values(scalableOption);
    QStringList sources = parser.positionalArguments();
    // Sorted by file name so that the resource list, and with it the build, never depends
    // on the order the sources were given in.
    std::sort(sources.begin(), sources.end(),
              [](const QString& a, const QString& b) { return QFileInfo(a).fileName() < QFileInfo(b).fileName(); });

    QStringList files;
    QStringList bitmaps;
    for (const QString& source : sources) {
        const QFileInfo info(source);
        if (scalable.contains(info.fileName())) {
            QFile in(source);
            if (!in.open(QIODevice::ReadOnly) || !writeFile(QDir(outDir).filePath(info.fileName()), in.readAll()))
                return fail(QStringLiteral("cannot copy %1").arg(source));
            files << info.fileName();
            continue;
        }
        QSvgRenderer renderer(source);
        if (!renderer.isValid())
            return fail(QStringLiteral("%1 is not a readable SVG").arg(source));
        const QSize base = renderer.defaultSize();
        for (int percent : kPercents) {
            const QSize size(int(std::lround(base.width() * percent / 100.0)),
                             int(std::lround(base.height() * percent / 100.0)));
            const QString name = bitmapName(info.completeBaseName(), percent);
            if (!renderSharpest(renderer, size).save(QDir(outDir).filePath(name), "PNG"))
                return fail(QStringLiteral("cannot write %1").arg(name));
            files << name;
        }
        bitmaps << info.completeBaseName();
    }

    QByteArray qrc("<!DOCTYPE RCC>\n<RCC version=\"1.0\">\n<qresource prefix=\"/orlo/icons\">\n");
    for (const QString& file : files)
        qrc += "  <file>" + file.toUtf8() + "</file>\n";
    qrc += "</qresource>\n</RCC>\n";
    if (!writeFile(QDir(outDir).filePath(QStringLiteral("orlo_icons.qrc")), qrc))
        return fail(QStringLiteral("cannot write the resource list"));

    const QStringList only = parser.values(onlyOption);
    if (!only.isEmpty())
        bitmaps.erase(std::remove_if(bitmaps.begin(), bitmaps.end(), [&only](const QString& name) { return !only.contains(name); }),
                      bitmaps.end());
    const int zoom = std::clamp(parser.value(zoomOption).toInt(), 1, 16);
    if (parser.isSet(sheetOption) && !drawSheet(outDir, bitmaps, zoom, parser.value(sheetOption)))
        return fail(QStringLiteral("cannot write the sheet %1").arg(parser.value(sheetOption)));
    return 0;
}
