// Thumbnails of the render and texture formats at 256 pixels, per file, against OpenImageIO's
// own command-line tool on the same files. For each file it prints the median wall time of a
// fresh process that makes the one thumbnail (ours: TpictureDecoder, as the thumbnail service
// calls it; theirs: `oiiotool FILE --resize 256x256 -o OUT`), the time of our decode alone
// inside the process, and the peak resident memory of each process. Files:
//
//   - 4096 x 4096 half-float EXR, scanline (ZIP);
//   - 4096 x 4096 half-float EXR, tiled 64 x 64 with every mip level;
//   - 4096 x 4096 16-bit TIFF (strips, ZIP);
//   - 2048 x 2048 8-bit TX (tiled TIFF with mip levels).
//
// They are made once and kept in /tmp/orlo-bench-imageio: later runs reuse them.
//
//   bench_imageio [--runs N]
//   bench_imageio --decode FILE     (the child process: one thumbnail, prints its decode ms)

#include "TimageIoReader.h"
#include "TpictureDecoder.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QImage>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#ifdef ORLO_HAVE_OPENIMAGEIO
#include <OpenImageIO/imageio.h>
#endif

namespace {

const QSize thumbnailBox(256, 256);

#ifdef ORLO_HAVE_OPENIMAGEIO
// A picture with detail at every scale and a little grain, so compression works as it would
// on a real render: value of channel c at (x, y) of a level of edge pixels.
float sample(int x, int y, int edge, int c)
{
    const double u = (x + 0.5) / edge, v = (y + 0.5) / edge;
    const unsigned hash = (unsigned(x) * 73856093u) ^ (unsigned(y) * 19349663u) ^ (unsigned(c) * 83492791u);
    const double grain = double(hash % 1024) / 1024.0 * 0.03;
    const double base = 0.45 + 0.3 * std::sin(u * 31.0 + c) * std::cos(v * 23.0 - c) + 0.15 * std::sin((u + v) * 97.0);
    return float(std::clamp(base + grain, 0.0, 1.0) * (c == 0 ? 1.6 : 1.0));
}

// Writes edge x edge RGB of type, band by band: scanlines, or tiles of tile pixels with every
// mip level when tile is positive.
bool writeFile(const QString& path, const char* format, int edge, OIIO::TypeDesc type, int tile)
{
    const std::string name = QFile::encodeName(path).toStdString();
    auto out = OIIO::ImageOutput::create(format);
    if (!out)
        return false;
    bool ok = true;
    for (int level = 0, size = edge; ok && size >= 1; ++level, size /= 2) {
        OIIO::ImageSpec spec(size, size, 3, type);
        spec.attribute("compression", "zip");
        if (tile > 0) {
            spec.tile_width = tile;
            spec.tile_height = tile;
            spec.attribute("textureformat", "Plain Texture");
        }
        // TIFF keeps its mip levels as further pages marked as reduced pictures.
        const bool levelsAsPages = !out->supports("mipmap");
        if (levelsAsPages && level > 0)
            spec.attribute("tiff:subfiletype", 1);
        const auto mode = level == 0   ? OIIO::ImageOutput::Create
                          : levelsAsPages ? OIIO::ImageOutput::AppendSubimage
                                          : OIIO::ImageOutput::AppendMIPLevel;
        ok = out->open(name, spec, mode);
        const int band = tile > 0 ? tile : 64;
        std::vector<float> pixels(size_t(band) * size_t(size) * 3);
        for (int top = 0; ok && top < size; top += band) {
            const int rows = std::min(band, size - top);
            for (int y = 0; y < rows; ++y)
                for (int x = 0; x < size; ++x)
                    for (int c = 0; c < 3; ++c)
                        pixels[(size_t(y) * size + x) * 3 + c] = sample(x, top + y, size, c);
            ok = tile > 0 ? out->write_tiles(0, size, top, top + rows, 0, 1, OIIO::TypeFloat, pixels.data())
                          : out->write_scanlines(top, top + rows, 0, OIIO::TypeFloat, pixels.data());
        }
        if (tile <= 0)
            break;
    }
    ok = out->close() && ok;
    if (!ok)
        std::fprintf(stderr, "bench_imageio: %s\n", out->geterror().c_str());
    return ok;
}

struct Run
{
    double wallMs = 0;
    long peakKiB = 0;
    double decodeMs = -1;
    int threads = 0;
    bool ok = false;
};

// Runs argv as a child process; its wall time, peak resident memory and, when it prints
// one, the number on its last output line.
Run runChild(const std::vector<std::string>& argv)
{
    Run run;
    int pipeFds[2];
    if (pipe(pipeFds) != 0)
        return run;
    QElapsedTimer timer;
    timer.start();
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(pipeFds[1], STDOUT_FILENO);
        close(pipeFds[0]);
        std::vector<char*> args;
        for (const std::string& arg : argv)
            args.push_back(const_cast<char*>(arg.c_str()));
        args.push_back(nullptr);
        execvp(args[0], args.data());
        _exit(127);
    }
    close(pipeFds[1]);
    std::string output;
    char buffer[256];
    ssize_t got;
    while ((got = read(pipeFds[0], buffer, sizeof buffer)) > 0)
        output.append(buffer, size_t(got));
    close(pipeFds[0]);
    int status = 0;
    rusage usage{};
    wait4(pid, &status, 0, &usage);
    run.wallMs = timer.nsecsElapsed() / 1e6;
    run.peakKiB = usage.ru_maxrss;
    run.ok = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    const size_t line = output.find_last_of('\n', output.size() > 1 ? output.size() - 2 : 0);
    const std::string last = output.substr(line == std::string::npos ? 0 : line + 1);
    if (!last.empty())
        run.decodeMs = std::atof(last.c_str());
    const size_t threads = output.find("threads ");
    if (threads != std::string::npos)
        run.threads = std::atoi(output.c_str() + threads + 8);
    return run;
}

Run median(std::vector<Run> runs)
{
    std::sort(runs.begin(), runs.end(), [](const Run& a, const Run& b) { return a.wallMs < b.wallMs; });
    Run result = runs[runs.size() / 2];
    for (const Run& run : runs) {
        result.ok = result.ok && run.ok;
        result.peakKiB = std::max(result.peakKiB, run.peakKiB);
    }
    return result;
}
#endif

} // namespace

int main(int argc, char** argv)
{
    if (argc == 3 && std::strcmp(argv[1], "--decode") == 0) {
        QElapsedTimer timer;
        timer.start();
        const QImage picture = TpictureDecoder::decodeImageFile(QString::fromLocal8Bit(argv[2]), thumbnailBox);
        const double ms = timer.nsecsElapsed() / 1e6;
        if (picture.isNull())
            return 1;
        // Threads of the process after the decode: Qt's, and whatever the readers started.
        QFile status(QStringLiteral("/proc/self/status"));
        if (status.open(QIODevice::ReadOnly)) {
            for (const QByteArray& line : status.readAll().split('\n')) {
                if (line.startsWith("Threads:"))
                    std::printf("threads %s\n", line.mid(8).trimmed().constData());
            }
        }
        std::printf("%.2f\n", ms);
        return 0;
    }
#ifndef ORLO_HAVE_OPENIMAGEIO
    std::printf("bench_imageio: built without OpenImageIO, nothing to measure\n");
    return 0;
#else
    int runs = 5;
    for (int i = 1; i + 1 < argc; ++i) {
        if (std::strcmp(argv[i], "--runs") == 0)
            runs = std::max(1, std::atoi(argv[i + 1]));
    }
    const QString dir = QStringLiteral("/tmp/orlo-bench-imageio");
    QDir().mkpath(dir);
    struct File
    {
        const char* name;
        const char* format;
        int edge;
        OIIO::TypeDesc type;
        int tile;
    };
    const File files[] = {
        {"scanline_4096_half.exr", "openexr", 4096, OIIO::TypeHalf, 0},
        {"tiled_mips_4096_half.exr", "openexr", 4096, OIIO::TypeHalf, 64},
        {"strips_4096_16bit.tif", "tiff", 4096, OIIO::TypeUInt16, 0},
        {"tiled_mips_2048.tx", "tiff", 2048, OIIO::TypeUInt8, 64},
    };
    const std::string self = QFileInfo(QString::fromLocal8Bit(argv[0])).absoluteFilePath().toStdString();
    const std::string oiiotoolOut = (dir + QStringLiteral("/oiiotool_out.tif")).toStdString();
    const bool haveOiiotool = runChild({"oiiotool", "--version"}).ok;
    const Run baseline = runChild({self, "--decode", "/nonexistent"});

    std::printf("thumbnail at %dx%d, median of %d runs per file (wall time of a fresh process)\n",
                thumbnailBox.width(), thumbnailBox.height(), runs);
    std::printf("process baseline (ours, nothing decoded): %.0f ms, %ld MiB\n\n", baseline.wallMs,
                baseline.peakKiB / 1024);
    std::printf("%-26s %10s %10s %9s %8s | %11s %9s | %6s\n", "file", "ours ms", "decode ms", "ours MiB", "threads",
                "oiiotool ms", "oiio MiB", "ratio");
    double scanlineMs = 0, tiledMs = 0;
    for (const File& file : files) {
        const QString path = dir + QLatin1Char('/') + QLatin1String(file.name);
        if (!QFileInfo::exists(path) && !writeFile(path, file.format, file.edge, file.type, file.tile)) {
            std::printf("%-26s cannot be written\n", file.name);
            continue;
        }
        const std::string name = QFile::encodeName(path).toStdString();
        std::vector<Run> ours, theirs;
        for (int i = 0; i < runs; ++i) {
            ours.push_back(runChild({self, "--decode", name}));
            if (haveOiiotool)
                theirs.push_back(runChild({"oiiotool", name, "--resize", "256x256", "-o", oiiotoolOut}));
        }
        const Run a = median(ours);
        const Run b = haveOiiotool ? median(theirs) : Run();
        if (QLatin1String(file.name) == QLatin1String("scanline_4096_half.exr"))
            scanlineMs = a.decodeMs;
        if (QLatin1String(file.name) == QLatin1String("tiled_mips_4096_half.exr"))
            tiledMs = a.decodeMs;
        std::printf("%-26s %10.1f %10.1f %9ld %8d | %11.1f %9ld | %6.2f%s\n", file.name, a.wallMs, a.decodeMs,
                    a.peakKiB / 1024, a.threads, b.wallMs, b.peakKiB / 1024, b.wallMs > 0 ? a.wallMs / b.wallMs : 0.0,
                    a.ok && (b.ok || !haveOiiotool) ? "" : "  (a run failed)");
    }
    if (tiledMs > 0)
        std::printf("\ntiled file read at its mip level: %.1fx faster than the scanline file of the same size\n",
                    scanlineMs / tiledMs);
    if (!haveOiiotool)
        std::printf("oiiotool not found (Debian: openimageio-tools): no comparison\n");
    return 0;
#endif
}
