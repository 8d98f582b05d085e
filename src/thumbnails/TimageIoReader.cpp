#include "TimageIoReader.h"

#ifdef ORLO_HAVE_OPENIMAGEIO

#include <QFile>
#include <QHash>

#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

// The formats these readers take, by OpenImageIO's plug-in name, and the suffixes of each.
// TIFF is taken whole: Qt's plug-in decodes every TIFF at full size (no reduced decode, no
// mip levels) into 64-bit pixels when the file holds 16 bits, and shows float data unmapped.
struct FormatSuffixes
{
    const char* plugin;
    const char* suffixes[4];
};
const FormatSuffixes wantedFormats[] = {
    {"openexr", {"exr", "sxr", "mxr", nullptr}},
    {"hdr", {"hdr", "rgbe", nullptr, nullptr}},
    {"tiff", {"tif", "tiff", "tx", nullptr}},
    {"dpx", {"dpx", nullptr, nullptr, nullptr}},
    {"cineon", {"cin", nullptr, nullptr, nullptr}},
    {"psd", {"psd", "psb", "pdd", nullptr}},
    {"targa", {"tga", "tpic", nullptr, nullptr}},
    {"dds", {"dds", nullptr, nullptr, nullptr}},
};

// Only the formats whose plug-in this OpenImageIO was built with.
const QStringList& handledSuffixes()
{
    static const QStringList suffixes = [] {
        QStringList result;
        std::string list;
        OIIO::getattribute("input_format_list", list);
        const QStringList plugins = QString::fromStdString(list).split(QLatin1Char(','), Qt::SkipEmptyParts);
        for (const FormatSuffixes& format : wantedFormats) {
            if (!plugins.contains(QLatin1String(format.plugin)))
                continue;
            for (const char* suffix : format.suffixes) {
                if (suffix)
                    result.append(QLatin1String(suffix));
            }
        }
        return result;
    }();
    return suffixes;
}

// Errors are answered here with a null picture; taking them keeps OpenImageIO's per-thread
// error text from growing and from being printed when the reader goes away.
void dropErrors(const OIIO::ImageInput* input)
{
    if (input)
        input->geterror();
    OIIO::geterror();
}

std::unique_ptr<OIIO::ImageInput> openInput(const QString& path)
{
    auto input = OIIO::ImageInput::open(QFile::encodeName(path).toStdString());
    if (!input) {
        dropErrors(nullptr);
        return nullptr;
    }
    input->threads(1);
    return input;
}

bool isFloating(OIIO::TypeDesc type)
{
    return type.basetype == OIIO::TypeDesc::HALF || type.basetype == OIIO::TypeDesc::FLOAT
        || type.basetype == OIIO::TypeDesc::DOUBLE;
}

// Linear [0, 1] to 8-bit sRGB through a table fine enough that the steep start of the
// curve stays within one output step.
class SrgbTable
{
public:
    static const int size = 16384;

    SrgbTable()
    {
        for (int i = 0; i < size; ++i) {
            const double v = double(i) / (size - 1);
            const double s = v <= 0.0031308 ? 12.92 * v : 1.055 * std::pow(v, 1.0 / 2.4) - 0.055;
            m_table[i] = quint8(std::lround(std::clamp(s, 0.0, 1.0) * 255.0));
        }
    }
    quint8 operator()(float v) const
    {
        // NaN and negative values are black; above 1 is white.
        if (!(v > 0.0f))
            return 0;
        if (v >= 1.0f)
            return 255;
        return m_table[int(v * (size - 1) + 0.5f)];
    }

private:
    quint8 m_table[size];
};

quint8 toByte(float v)
{
    if (!(v > 0.0f))
        return 0;
    if (v >= 1.0f)
        return 255;
    return quint8(v * 255.0f + 0.5f);
}

// Reads one level of the first part in bands and averages blocks of factor x factor pixels
// into an 8-bit RGBA picture: the only full-size data ever in memory is one band.
class BandReader
{
public:
    BandReader(OIIO::ImageInput* input, int level, const OIIO::ImageSpec& spec, int factor)
        : m_input(input)
        , m_level(level)
        , m_spec(spec)
        , m_factor(factor)
    {
        m_channels = std::min(spec.nchannels, 4);
        m_alpha = spec.alpha_channel >= 0 && spec.alpha_channel < m_channels ? spec.alpha_channel : -1;
        // Grey and grey-with-alpha files have fewer than three colour channels.
        if (m_channels == 2 && m_alpha < 0)
            m_alpha = 1;
        const QString space = QString::fromStdString(std::string(spec.get_string_attribute("oiio:ColorSpace")));
        m_linear = isFloating(spec.format) && space.compare(QLatin1String("sRGB"), Qt::CaseInsensitive) != 0;
    }

    QImage read()
    {
        const int width = m_spec.width;
        const int height = m_spec.height;
        const int outWidth = (width + m_factor - 1) / m_factor;
        const int outHeight = (height + m_factor - 1) / m_factor;
        QImage out(outWidth, outHeight, m_alpha >= 0 ? QImage::Format_RGBA8888 : QImage::Format_RGBX8888);
        if (out.isNull())
            return QImage();

        // About 4 MiB of float pixels per band, whole chunks of the file: tiles for a tiled
        // file, a multiple of 64 rows (every scanline compression's chunk) otherwise.
        const qint64 rowBytes = qint64(width) * m_channels * qint64(sizeof(float));
        const int unit = m_spec.tile_width > 0 ? std::max(1, m_spec.tile_height) : 64;
        int band = int(std::max<qint64>(1, (qint64(4) << 20) / (rowBytes * unit))) * unit;
        band = std::min(band, height + unit);
        std::vector<float> pixels(size_t(band) * size_t(width) * size_t(m_channels));
        std::vector<float> sums(size_t(outWidth) * 4, 0.0f);
        int rowsInSum = 0;
        int outRow = 0;

        for (int top = 0; top < height; top += band) {
            const int rows = std::min(band, height - top);
            if (!readBand(top, rows, pixels.data()))
                return QImage();
            for (int r = 0; r < rows; ++r) {
                accumulate(pixels.data() + size_t(r) * size_t(width) * size_t(m_channels), width, sums);
                ++rowsInSum;
                if (rowsInSum == m_factor || top + r + 1 == height) {
                    finishRow(sums, rowsInSum, width, out.scanLine(outRow++));
                    std::fill(sums.begin(), sums.end(), 0.0f);
                    rowsInSum = 0;
                }
            }
        }
        return out;
    }

private:
    bool readBand(int top, int rows, float* data)
    {
        const int y = m_spec.y + top;
        bool ok;
        if (m_spec.tile_width > 0) {
            ok = m_input->read_tiles(0, m_level, m_spec.x, m_spec.x + m_spec.width, y, y + rows, m_spec.z,
                                     m_spec.z + std::max(1, m_spec.tile_depth), 0, m_channels, OIIO::TypeFloat,
                                     data);
        } else {
            ok = m_input->read_scanlines(0, m_level, y, y + rows, m_spec.z, 0, m_channels, OIIO::TypeFloat, data);
        }
        if (!ok)
            dropErrors(m_input);
        return ok;
    }

    void accumulate(const float* row, int width, std::vector<float>& sums) const
    {
        const int n = m_channels;
        for (int x = 0; x < width; ++x) {
            const float* p = row + size_t(x) * size_t(n);
            float* s = sums.data() + size_t(x / m_factor) * 4;
            if (n >= 3) {
                s[0] += p[0];
                s[1] += p[1];
                s[2] += p[2];
            } else {
                s[0] += p[0];
                s[1] += p[0];
                s[2] += p[0];
            }
            s[3] += m_alpha >= 0 ? p[m_alpha] : 1.0f;
        }
    }

    void finishRow(const std::vector<float>& sums, int rows, int width, uchar* line) const
    {
        static const SrgbTable srgb;
        const int outWidth = int(sums.size() / 4);
        for (int x = 0; x < outWidth; ++x) {
            const int columns = std::min(m_factor, width - x * m_factor);
            const float scale = 1.0f / float(columns * rows);
            const float* s = sums.data() + size_t(x) * 4;
            const float alpha = s[3] * scale;
            // The file's colours are premultiplied by its alpha; the picture's are not.
            const float unpremultiply = m_alpha >= 0 && alpha > 0.0f ? scale / alpha : scale;
            uchar* out = line + size_t(x) * 4;
            for (int c = 0; c < 3; ++c)
                out[c] = m_linear ? srgb(s[c] * unpremultiply) : toByte(s[c] * unpremultiply);
            out[3] = m_alpha >= 0 ? toByte(alpha) : 255;
        }
    }

    OIIO::ImageInput* m_input;
    int m_level;
    OIIO::ImageSpec m_spec;
    int m_factor;
    int m_channels = 0;
    int m_alpha = -1;
    bool m_linear = false;
};

} // namespace

bool TimageIoReader::isAvailable()
{
    return true;
}

QStringList TimageIoReader::suffixes()
{
    return handledSuffixes();
}

bool TimageIoReader::handlesSuffix(const QString& suffix)
{
    return !suffix.isEmpty() && handledSuffixes().contains(suffix.toLower());
}

QImage TimageIoReader::read(const QString& path, const QSize& box, bool enlarge)
{
    if (box.isEmpty())
        return QImage();
    const auto input = openInput(path);
    if (!input)
        return QImage();
    const OIIO::ImageSpec top = input->spec();
    if (top.width <= 0 || top.height <= 0 || top.nchannels <= 0)
        return QImage();
    const QSize full(top.width, top.height);
    QSize fitted = full.scaled(box, Qt::KeepAspectRatio);
    if (fitted.isEmpty())
        fitted = QSize(1, 1);
    if (!enlarge && fitted.width() > full.width())
        fitted = full;

    // The smallest mip level that still covers the fitted picture: a few tiles instead of
    // the whole full-size level.
    int level = 0;
    OIIO::ImageSpec spec = top;
    for (int m = 1; m < 32 && input->seek_subimage(0, m); ++m) {
        const OIIO::ImageSpec& next = input->spec();
        if (next.width < fitted.width() || next.height < fitted.height())
            break;
        level = m;
        spec = next;
    }
    dropErrors(input.get());
    if (spec.width <= 0 || spec.height <= 0 || spec.width > maxWidth
        || qint64(spec.width) * spec.height > maxPixels)
        return QImage();

    const int factor = std::max(1, std::min(spec.width / std::max(1, fitted.width()),
                                             spec.height / std::max(1, fitted.height())));
    QImage picture = BandReader(input.get(), level, spec, factor).read();
    // The fitted size comes from the full level: a reduced level or block average may be a
    // pixel off its aspect by rounding.
    if (picture.isNull() || picture.size() == fitted)
        return picture;
    return picture.scaled(fitted, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

TpictureHeader TimageIoReader::header(const QString& path)
{
    TpictureHeader header;
    const auto input = openInput(path);
    if (!input)
        return header;
    const OIIO::ImageSpec top = input->spec();
    header.valid = top.width > 0 && top.height > 0;
    header.size = QSize(top.width, top.height);
    for (const std::string& name : top.channelnames)
        header.channels.append(QString::fromStdString(name));
    header.floating = isFloating(top.format);
    header.bits = int(top.format.size()) * 8;
    if (!header.floating)
        header.bits = top.get_int_attribute("oiio:BitsPerSample", header.bits);
    header.format = QString::fromLatin1(input->format_name());
    // Only headers are read here: a PSD's layers and a TIFF's pages are counted, not decoded.
    int levels = 1;
    while (levels < 32 && input->seek_subimage(0, levels))
        ++levels;
    int parts = 1;
    while (parts < 4096 && input->seek_subimage(parts, 0))
        ++parts;
    header.levels = levels;
    header.parts = parts;
    dropErrors(input.get());
    return header;
}

#else

bool TimageIoReader::isAvailable()
{
    return false;
}

QStringList TimageIoReader::suffixes()
{
    return QStringList();
}

bool TimageIoReader::handlesSuffix(const QString&)
{
    return false;
}

QImage TimageIoReader::read(const QString&, const QSize&, bool)
{
    return QImage();
}

TpictureHeader TimageIoReader::header(const QString&)
{
    return TpictureHeader();
}

#endif
