#pragma once

// Picture files written by the tests themselves through OpenImageIO: EXR, TIFF, TX, HDR,
// DPX, TGA, with the pixels, tiles, mip levels and parts a test needs.
#ifdef ORLO_HAVE_OPENIMAGEIO

#include <OpenImageIO/imageio.h>

#include <QColor>
#include <QFile>
#include <QString>

#include <memory>
#include <string>
#include <vector>

namespace TtestImageFiles {

inline std::string nameOf(const QString& path)
{
    return QFile::encodeName(path).toStdString();
}

// A writer for path's format; TX is TIFF by another name, which writers do not take.
inline std::unique_ptr<OIIO::ImageOutput> writerFor(const QString& path)
{
    return OIIO::ImageOutput::create(path.endsWith(QLatin1String(".tx")) ? std::string("tiff") : nameOf(path));
}

// width x height pixels of channels floats each (rows from the top), stored as type; tiled
// in tile x tile tiles when tile is positive.
inline bool write(const QString& path, int width, int height, int channels, OIIO::TypeDesc type,
                  const std::vector<float>& pixels, int tile = 0)
{
    auto out = writerFor(path);
    if (!out)
        return false;
    OIIO::ImageSpec spec(width, height, channels, type);
    if (channels == 4)
        spec.alpha_channel = 3;
    if (tile > 0) {
        spec.tile_width = tile;
        spec.tile_height = tile;
    }
    const bool ok = out->open(nameOf(path), spec) && out->write_image(OIIO::TypeFloat, pixels.data()) && out->close();
    out->geterror();
    return ok;
}

inline std::vector<float> filled(int width, int height, const std::vector<float>& pixel)
{
    std::vector<float> pixels;
    pixels.reserve(size_t(width) * size_t(height) * pixel.size());
    for (int i = 0; i < width * height; ++i)
        pixels.insert(pixels.end(), pixel.begin(), pixel.end());
    return pixels;
}

// A tiled RGB file of edge x edge with every mip level down to 1 x 1; level n is filled with
// colours[n] (the last colour for the levels beyond).
inline bool writeMipLevels(const QString& path, int edge, int tile, const std::vector<QColor>& colours,
                           OIIO::TypeDesc type)
{
    auto out = writerFor(path);
    if (!out)
        return false;
    // TIFF keeps its mip levels as further pages marked as reduced pictures.
    const bool levelsAsPages = !out->supports("mipmap");
    bool ok = true;
    for (int level = 0, size = edge; ok && size >= 1; ++level, size /= 2) {
        OIIO::ImageSpec spec(size, size, 3, type);
        spec.tile_width = tile;
        spec.tile_height = tile;
        // Without it an EXR is written with one level only.
        spec.attribute("textureformat", "Plain Texture");
        if (levelsAsPages && level > 0)
            spec.attribute("tiff:subfiletype", 1);
        const QColor colour = colours[std::min(size_t(level), colours.size() - 1)];
        const std::vector<float> pixels =
            filled(size, size, {float(colour.redF()), float(colour.greenF()), float(colour.blueF())});
        const auto mode = level == 0   ? OIIO::ImageOutput::Create
                          : levelsAsPages ? OIIO::ImageOutput::AppendSubimage
                                          : OIIO::ImageOutput::AppendMIPLevel;
        ok = out->open(nameOf(path), spec, mode)
            && out->write_image(OIIO::TypeFloat, pixels.data());
    }
    ok = out->close() && ok;
    const std::string error = out->geterror();
    if (!ok)
        qWarning("%s", error.c_str());
    return ok;
}

// A multi-part file of parts parts, each width x height RGBA half.
inline bool writeParts(const QString& path, int parts, int width, int height)
{
    auto out = writerFor(path);
    if (!out || !out->supports("multiimage"))
        return false;
    std::vector<OIIO::ImageSpec> specs;
    for (int part = 0; part < parts; ++part) {
        specs.emplace_back(width, height, 4, OIIO::TypeHalf);
        specs.back().alpha_channel = 3;
        specs.back().attribute("name", "part" + std::to_string(part));
    }
    const std::vector<float> pixels = filled(width, height, {0.2f, 0.4f, 0.6f, 1.0f});
    bool ok = out->open(nameOf(path), parts, specs.data());
    for (int part = 0; ok && part < parts; ++part) {
        ok = (part == 0 || out->open(nameOf(path), specs[size_t(part)], OIIO::ImageOutput::AppendSubimage))
            && out->write_image(OIIO::TypeFloat, pixels.data());
    }
    ok = out->close() && ok;
    out->geterror();
    return ok;
}

} // namespace TtestImageFiles

#endif
