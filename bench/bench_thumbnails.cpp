// Makes large JPEG photographs and times the thumbnail provider's icon() for each of them at
// the content pane's largest thumbnail size, with a cold cache, in milliseconds per image
// (median and worst). When vipsthumbnail is on the PATH it makes thumbnails of the same files
// at the same size in the same run, all in one process, and the ratio of the means is printed.
//
// With --loader the provider gets a host image loader that decodes each photograph whole, as
// a host that pictures image files itself does; the provider then only fits its picture.
//
//   bench_thumbnails [--images N] [--width W] [--height H] [--size S] [--keep DIR] [--loader]

#include "TabImageLoader.h"
#include "TassetBrowserOptions.h"
#include "ThumbnailFileIconProvider.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QImage>
#include <QImageReader>
#include <QLinearGradient>
#include <QPainter>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

// A photograph-like picture: a sky gradient, shapes and fine noise, so that JPEG has real
// detail to code and decode (a flat picture would decode unrealistically fast).
QImage photograph(const QSize& size, int seed)
{
    QImage image(size, QImage::Format_RGB32);
    QPainter painter(&image);
    QLinearGradient sky(0, 0, 0, size.height());
    sky.setColorAt(0, QColor::fromHsv((seed * 37) % 360, 120, 230));
    sky.setColorAt(1, QColor::fromHsv((seed * 37 + 90) % 360, 160, 90));
    painter.fillRect(image.rect(), sky);
    quint32 state = 2166136261u ^ quint32(seed);
    auto next = [&state] {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        return state;
    };
    for (int i = 0; i < 60; ++i) {
        painter.setBrush(QColor::fromRgb(next() & 0xffffff));
        painter.setPen(Qt::NoPen);
        const int w = int(next() % quint32(size.width() / 3)) + 20;
        const int h = int(next() % quint32(size.height() / 3)) + 20;
        painter.drawEllipse(int(next() % quint32(size.width())), int(next() % quint32(size.height())), w, h);
    }
    painter.end();
    for (int y = 0; y < size.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < size.width(); ++x) {
            const int noise = int(next() % 25) - 12;
            const QRgb p = line[x];
            line[x] = qRgb(qBound(0, qRed(p) + noise, 255), qBound(0, qGreen(p) + noise, 255),
                           qBound(0, qBlue(p) + noise, 255));
        }
    }
    return image;
}

// A host loader that reads the whole file, upright, as a host picturing images does.
class TwholeImageLoader : public TabImageLoader
{
public:
    bool loadImage(const QString& filePath, QPixmap& picture) override
    {
        QImageReader reader(filePath);
        reader.setAutoTransform(true);
        const QImage image = reader.read();
        if (image.isNull())
            return false;
        picture = QPixmap::fromImage(image);
        return true;
    }
    bool canLoadImage(const QString&) const override { return true; }
};

double median(std::vector<double> values)
{
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    const size_t middle = values.size() / 2;
    return values.size() % 2 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

} // namespace

int main(int argc, char** argv)
{
    // Nothing is shown: without a display the run goes on offscreen.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && qEnvironmentVariableIsEmpty("DISPLAY")
        && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption imagesOption(QStringLiteral("images"), QStringLiteral("Number of photographs."),
                                          QStringLiteral("N"), QStringLiteral("200"));
    const QCommandLineOption widthOption(QStringLiteral("width"), QStringLiteral("Photograph width."),
                                         QStringLiteral("W"), QStringLiteral("3000"));
    const QCommandLineOption heightOption(QStringLiteral("height"), QStringLiteral("Photograph height."),
                                          QStringLiteral("H"), QStringLiteral("2000"));
    const QCommandLineOption sizeOption(QStringLiteral("size"), QStringLiteral("Thumbnail edge length."),
                                        QStringLiteral("S"), QStringLiteral("512"));
    const QCommandLineOption keepOption(QStringLiteral("keep"),
                                        QStringLiteral("Use (and fill, if empty) DIR instead of a scratch folder."),
                                        QStringLiteral("DIR"));
    const QCommandLineOption loaderOption(QStringLiteral("loader"),
                                          QStringLiteral("Give the provider a host loader that decodes whole images."));
    parser.addOptions({imagesOption, widthOption, heightOption, sizeOption, keepOption, loaderOption});
    parser.process(app);
    const int count = qMax(1, parser.value(imagesOption).toInt());
    const QSize photoSize(parser.value(widthOption).toInt(), parser.value(heightOption).toInt());
    const int edge = parser.value(sizeOption).toInt();

    QTemporaryDir scratch;
    const QString folder = parser.isSet(keepOption) ? parser.value(keepOption) : scratch.path();
    QDir().mkpath(folder);
    QStringList files;
    QElapsedTimer making;
    making.start();
    for (int i = 0; i < count; ++i) {
        const QString path = QDir(folder).filePath(QStringLiteral("photo_%1.jpg").arg(i, 4, 10, QLatin1Char('0')));
        files << path;
        if (!QFileInfo::exists(path) && !photograph(photoSize, i).save(path, "JPEG", 90)) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
            return 1;
        }
    }
    std::printf("%d JPEG photographs of %dx%d in %s (ready in %.1f s)\n", count, photoSize.width(),
                photoSize.height(), qPrintable(folder), making.elapsed() / 1000.0);

    // No scaling callback: 100 per cent. Without --loader every photograph is decoded by the
    // provider itself.
    TassetBrowserOptions options;
    TwholeImageLoader loader;
    if (parser.isSet(loaderOption))
        options.setImageLoader(&loader);
    ThumbnailFileIconProvider provider(&options, QSize(edge, edge), false);
    Tint32Array sizes;
    sizes.addLast(edge);
    provider.setSizes(sizes);

    std::vector<double> times;
    times.reserve(size_t(count));
    QElapsedTimer timer;
    for (const QString& path : files) {
        const QFileInfo info(path);
        timer.start();
        const QIcon icon = provider.icon(info);
        times.push_back(timer.nsecsElapsed() / 1e6);
        if (icon.isNull()) {
            std::fprintf(stderr, "no thumbnail for %s\n", qPrintable(path));
            return 1;
        }
    }
    const double providerMedian = median(times);
    const double providerWorst = *std::max_element(times.begin(), times.end());
    double providerTotal = 0;
    for (double t : times)
        providerTotal += t;
    std::printf("provider icon() at %dx%d%s: median %.2f ms, worst %.2f ms, mean %.2f ms per image\n", edge, edge,
                parser.isSet(loaderOption) ? " with a whole-image host loader" : "", providerMedian, providerWorst,
                providerTotal / count);

    const QString vips = QStandardPaths::findExecutable(QStringLiteral("vipsthumbnail"));
    if (vips.isEmpty()) {
        std::printf("vipsthumbnail: not installed, no comparison\n");
        return 0;
    }
    // One process for all files, as the provider works in one process: the per-image figure
    // then carries no process start-up.
    QTemporaryDir output;
    QStringList arguments{QStringLiteral("-s"), QString::number(edge), QStringLiteral("-o"),
                          QDir(output.path()).filePath(QStringLiteral("%s.jpg"))};
    arguments << files;
    timer.start();
    const int status = QProcess::execute(vips, arguments);
    const double vipsTotal = timer.nsecsElapsed() / 1e6;
    if (status != 0) {
        std::fprintf(stderr, "vipsthumbnail failed (%d)\n", status);
        return 1;
    }
    const double vipsMean = vipsTotal / count;
    std::printf("vipsthumbnail -s %d, all files in one run: %.2f ms per image (mean)\n", edge, vipsMean);
    std::printf("ratio provider / vipsthumbnail (means): %.2f\n", vipsMean > 0 ? providerTotal / count / vipsMean : 0.0);
    return 0;
}
