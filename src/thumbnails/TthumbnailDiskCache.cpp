#include "TthumbnailDiskCache.h"

#include "TprefOptionVar.h"
#include "Tstring.h"

#include <QBuffer>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QImageReader>
#include <QImageWriter>
#include <QTemporaryFile>

#include <array>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <utility>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

namespace {

const char* const uriKey = "Thumb::URI";
const char* const mtimeKey = "Thumb::MTime";
const char* const sizeKey = "Thumb::Size";
const char* const widthKey = "Thumb::Image::Width";
const char* const heightKey = "Thumb::Image::Height";
const char* const softwareKey = "Software";
// Private key of this program: how the picture was made ("swatch MTIME SIZE", "loader").
const char* const sourceKey = "X-ORLO::Source";

// A cache picture claiming more than this many times its bucket is not a thumbnail: refused
// before decoding, so a crafted file on shared storage cannot make us allocate much.
const int oversizeFactor = 4;

const char* const bucketNames[] = {"normal", "large", "x-large", "xx-large"};

// The bytes that a file URI's path keeps as they are: letters, digits and !$&'()*+,-./:=@_~.
bool keptInUri(uchar c)
{
    if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'))
        return true;
    switch (c) {
    case '!': case '$': case '&': case '\'': case '(': case ')': case '*': case '+': case ',':
    case '-': case '.': case '/': case ':': case '=': case '@': case '_': case '~':
        return true;
    default:
        return false;
    }
}

QString percentEncoded(const QByteArray& bytes)
{
    static const char hex[] = "0123456789ABCDEF";
    QByteArray out;
    out.reserve(bytes.size() * 3 / 2);
    for (const char byte : bytes) {
        const uchar c = uchar(byte);
        if (keptInUri(c)) {
            out.append(char(c));
        } else {
            out.append('%');
            out.append(hex[c >> 4]);
            out.append(hex[c & 15]);
        }
    }
    return QString::fromLatin1(out);
}

quint32 crc32(const QByteArray& data)
{
    static const auto table = [] {
        std::array<quint32, 256> t{};
        for (quint32 n = 0; n < 256; ++n) {
            quint32 c = n;
            for (int k = 0; k < 8; ++k)
                c = (c & 1) ? 0xedb88320u ^ (c >> 1) : c >> 1;
            t[n] = c;
        }
        return t;
    }();
    quint32 crc = 0xffffffffu;
    for (const char byte : data)
        crc = table[(crc ^ uchar(byte)) & 0xff] ^ (crc >> 8);
    return ~crc;
}

void appendBigEndian(QByteArray& out, quint32 value)
{
    out.append(char(value >> 24));
    out.append(char(value >> 16));
    out.append(char(value >> 8));
    out.append(char(value));
}

using TextKeys = std::vector<std::pair<QByteArray, QByteArray>>;

// The picture as PNG with the keys as plain tEXt chunks right after the header, where every
// reader finds them before the pixels. Qt would compress long values into zTXt chunks.
QByteArray encodePng(const QImage& picture, const TextKeys& keys)
{
    // Wrapping the pixels leaves behind any text the source picture carried.
    const QImage bare(picture.constBits(), picture.width(), picture.height(), picture.bytesPerLine(),
                      picture.format());
    QByteArray png;
    {
        QBuffer buffer(&png);
        buffer.open(QIODevice::WriteOnly);
        QImageWriter writer(&buffer, "png");
        // Deflate level 4 of 9 (Qt counts to 100): within a tenth of the smallest file at
        // half the default's time; thumbnails are written in bulk while a folder opens.
        writer.setCompression(50);
        if (!writer.write(bare))
            return QByteArray();
    }
    const int afterHeader = 8 + 4 + 4 + 13 + 4;
    if (png.size() < afterHeader || png.mid(12, 4) != "IHDR")
        return QByteArray();
    QByteArray chunks;
    for (const auto& [key, value] : keys) {
        const QByteArray body = QByteArray("tEXt") + key + '\0' + value;
        appendBigEndian(chunks, quint32(body.size() - 4));
        chunks.append(body);
        appendBigEndian(chunks, crc32(body));
    }
    png.insert(afterHeader, chunks);
    return png;
}

// Makes folder and any missing parent with mode 0700, as the standard asks of every folder
// of the cache. Existing folders are left as they are.
bool makeFolders(const QString& folder)
{
    const QByteArray native = QFile::encodeName(folder);
    struct stat status{};
    if (::stat(native.constData(), &status) == 0)
        return S_ISDIR(status.st_mode);
    const QString parent = QFileInfo(folder).path();
    if (parent != folder && !parent.isEmpty() && !makeFolders(parent))
        return false;
    return ::mkdir(native.constData(), 0700) == 0 || errno == EEXIST;
}

// Writes bytes to target through a temporary file of mode 0600 in the same folder, renamed
// over target in one step: a reader never sees half a picture.
bool writeAtomically(const QString& target, const QByteArray& bytes)
{
    const QString folder = QFileInfo(target).path();
    if (bytes.isEmpty() || !makeFolders(folder))
        return false;
    QTemporaryFile temporary(target + QLatin1String(".XXXXXX"));
    if (!temporary.open())
        return false;
    if (temporary.write(bytes) != bytes.size() || !temporary.flush() || ::fchmod(temporary.handle(), 0600) != 0)
        return false;
    temporary.close();
    if (::rename(QFile::encodeName(temporary.fileName()).constData(), QFile::encodeName(target).constData()) != 0)
        return false;
    temporary.setAutoRemove(false);
    return true;
}

qint64 parseSeconds(const QString& text)
{
    bool ok = false;
    const qint64 whole = text.toLongLong(&ok);
    if (ok)
        return whole;
    // Some writers store fractions of a second.
    const double seconds = text.toDouble(&ok);
    return ok && std::isfinite(seconds) ? qint64(std::floor(seconds)) : -2;
}

TthumbnailDiskCache::Stamp parseStamp(const QString& text)
{
    TthumbnailDiskCache::Stamp stamp;
    const QStringList parts = text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (parts.value(0) == QLatin1String("loader")) {
        stamp.origin = TthumbnailDiskCache::LoaderOrigin;
    } else if (parts.value(0) == QLatin1String("swatch") && parts.size() == 3) {
        stamp.origin = TthumbnailDiskCache::SwatchOrigin;
        stamp.swatchMTime = parseSeconds(parts.at(1));
        stamp.swatchSize = parseSeconds(parts.at(2));
    }
    return stamp;
}

QByteArray stampText(const TthumbnailDiskCache::Stamp& stamp)
{
    switch (stamp.origin) {
    case TthumbnailDiskCache::SwatchOrigin:
        return "swatch " + QByteArray::number(stamp.swatchMTime) + ' ' + QByteArray::number(stamp.swatchSize);
    case TthumbnailDiskCache::LoaderOrigin:
        return "loader";
    case TthumbnailDiskCache::FileOrigin:
        break;
    }
    return QByteArray();
}

quint32 bigEndianAt(const QByteArray& bytes, qsizetype at)
{
    return (quint32(uchar(bytes[at])) << 24) | (quint32(uchar(bytes[at + 1])) << 16)
        | (quint32(uchar(bytes[at + 2])) << 8) | quint32(uchar(bytes[at + 3]));
}

// The header of a PNG: its size and the text keys found before the pixels (tEXt, zTXt and
// iTXt). Qt's reader cannot be asked for them: it splits keys at their first colon.
struct PngHeader
{
    QSize size;
    QHash<QString, QString> texts;
};

bool readPngHeader(const QByteArray& png, PngHeader& header)
{
    if (!png.startsWith("\x89PNG\r\n\x1a\n"))
        return false;
    for (qsizetype at = 8; at + 12 <= png.size();) {
        const quint32 length = bigEndianAt(png, at);
        if (length > quint32(png.size() - at - 12))
            return false;
        const QByteArray type = png.mid(at + 4, 4);
        const QByteArray body = png.mid(at + 8, qsizetype(length));
        at += 12 + qsizetype(length);
        if (type == "IHDR" && body.size() >= 8) {
            header.size = QSize(int(qMin<quint32>(bigEndianAt(body, 0), 1u << 30)),
                                int(qMin<quint32>(bigEndianAt(body, 4), 1u << 30)));
        } else if (type == "IDAT" || type == "IEND") {
            return header.size.isValid();
        } else if (type == "tEXt" || type == "zTXt" || type == "iTXt") {
            const qsizetype end = body.indexOf('\0');
            if (end <= 0)
                continue;
            const QString key = QString::fromLatin1(body.left(end));
            QByteArray value = body.mid(end + 1);
            bool utf8 = false;
            bool compressed = false;
            if (type == "zTXt") {
                compressed = true;
                value = value.mid(1);
            } else if (type == "iTXt") {
                // Compression flag and method, then language and translated keyword.
                utf8 = true;
                compressed = value.size() >= 2 && value[0] != 0;
                qsizetype skip = 2;
                for (int field = 0; field < 2 && skip <= value.size(); ++field) {
                    const qsizetype zero = value.indexOf('\0', skip);
                    skip = zero < 0 ? value.size() + 1 : zero + 1;
                }
                value = value.mid(skip);
            }
            if (compressed) {
                // qUncompress wants the expected length in front; it grows past a low guess.
                QByteArray framed(4, 0);
                framed[2] = char(0x10);
                value = qUncompress(framed + value);
            }
            header.texts.insert(key, utf8 ? QString::fromUtf8(value) : QString::fromLatin1(value));
        }
    }
    return false;
}

// Reads the picture at path when its URI is one of uris and its MTime is mtime. The keys are
// looked for before the pixels first; a writer that puts them after the pixels costs a decode.
TthumbnailDiskCache::Hit readValid(const QString& path, const QStringList& uris, qint64 mtime, int edge)
{
    TthumbnailDiskCache::Hit hit;
    QFile file(path);
    // A thumbnail of xx-large in the worst case is 4 MiB of raw pixels.
    if (!file.open(QIODevice::ReadOnly) || file.size() > qint64(16) * 1024 * 1024)
        return hit;
    const QByteArray png = file.readAll();
    PngHeader header;
    if (!readPngHeader(png, header) || header.size.isEmpty() || header.size.width() > edge * oversizeFactor
        || header.size.height() > edge * oversizeFactor)
        return hit;
    auto valid = [&](const QString& uri, const QString& stamp) {
        return uris.contains(uri) && parseSeconds(stamp) == mtime;
    };
    QString uri = header.texts.value(QLatin1String(uriKey));
    QString stamp = header.texts.value(QLatin1String(mtimeKey));
    const bool early = !uri.isEmpty() && !stamp.isEmpty();
    if (early && !valid(uri, stamp))
        return hit;
    QImage picture;
    if (!picture.loadFromData(png, "png"))
        return hit;
    QString source = header.texts.value(QLatin1String(sourceKey));
    if (!early) {
        uri = picture.text(QLatin1String(uriKey));
        stamp = picture.text(QLatin1String(mtimeKey));
        source = picture.text(QLatin1String(sourceKey));
        if (!valid(uri, stamp))
            return hit;
    }
    hit.picture = TthumbnailDiskCache::reduce(picture, edge);
    hit.stamp = parseStamp(source);
    return hit;
}

} // namespace

const char* const TthumbnailDiskCache::locationKey = "contentBrowserThumbnailCache";
const char* const TthumbnailDiskCache::programName = "orlo-asset-browser";
const int TthumbnailDiskCache::bucketEdges[4] = {128, 256, 512, 1024};

TthumbnailSource TthumbnailSource::of(const QString& path)
{
    TthumbnailSource source;
    source.path = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    source.uri = TthumbnailDiskCache::fileUri(source.path);
    const QByteArray native = QFile::encodeName(source.path);
    struct stat status{};
    if (::stat(native.constData(), &status) == 0) {
        source.mtime = qint64(status.st_mtime);
        source.size = qint64(status.st_size);
        source.readable = ::access(native.constData(), R_OK) == 0;
    }
    return source;
}

QString TthumbnailDiskCache::software()
{
    return QStringLiteral("ORLO Asset Browser " ORLO_BROWSER_VERSION);
}

QString TthumbnailDiskCache::configuredLocation()
{
    Tstring value;
    QString chosen;
    if (TprefOptionVar::getOptionVarValue(Tstring(locationKey), value))
        chosen = value.toQString().trimmed();
    if (chosen.compare(QLatin1String("off"), Qt::CaseInsensitive) == 0)
        return QString();
    if (!chosen.isEmpty()) {
        if (chosen == QLatin1String("~") || chosen.startsWith(QLatin1String("~/")))
            chosen = QDir::homePath() + chosen.mid(1);
        return QDir::cleanPath(QFileInfo(chosen).absoluteFilePath());
    }
    // A relative XDG_CACHE_HOME is ignored, as the desktop's other programs ignore it, so that
    // the cache never lands wherever the process happens to be started.
    QString cacheHome = qEnvironmentVariable("XDG_CACHE_HOME");
    if (cacheHome.isEmpty() || QDir::isRelativePath(cacheHome))
        cacheHome = QDir::homePath() + QLatin1String("/.cache");
    return QDir::cleanPath(cacheHome + QLatin1String("/thumbnails"));
}

TthumbnailDiskCache::TthumbnailDiskCache(const QString& location)
    : m_location(location.isEmpty() ? QString() : QDir::cleanPath(location))
{
}

QString TthumbnailDiskCache::fileUri(const QString& absolutePath)
{
    return QLatin1String("file://") + percentEncoded(QFile::encodeName(absolutePath));
}

QString TthumbnailDiskCache::thumbnailName(const QString& uri)
{
    return QString::fromLatin1(QCryptographicHash::hash(uri.toUtf8(), QCryptographicHash::Md5).toHex())
        + QLatin1String(".png");
}

int TthumbnailDiskCache::bucketEdge(const QSize& shown)
{
    const int side = qMax(shown.width(), shown.height());
    if (side <= 0)
        return 0;
    for (const int edge : bucketEdges) {
        if (edge >= side)
            return edge;
    }
    return 0;
}

QString TthumbnailDiskCache::bucketName(int edge)
{
    for (int i = 0; i < 4; ++i) {
        if (bucketEdges[i] == edge)
            return QLatin1String(bucketNames[i]);
    }
    return QString();
}

QString TthumbnailDiskCache::thumbnailPath(const QString& uri, int edge) const
{
    const QString bucket = bucketName(edge);
    if (!isEnabled() || bucket.isEmpty())
        return QString();
    return m_location + QLatin1Char('/') + bucket + QLatin1Char('/') + thumbnailName(uri);
}

QString TthumbnailDiskCache::failurePath(const QString& uri) const
{
    if (!isEnabled())
        return QString();
    return m_location + QLatin1String("/fail/") + QLatin1String(programName) + QLatin1Char('-')
        + QLatin1String(ORLO_BROWSER_VERSION) + QLatin1Char('/') + thumbnailName(uri);
}

bool TthumbnailDiskCache::holds(const QString& path) const
{
    return isEnabled() && (path == m_location || path.startsWith(m_location + QLatin1Char('/')));
}

TthumbnailDiskCache::Hit TthumbnailDiskCache::read(const TthumbnailSource& source, int edge) const
{
    const QString path = thumbnailPath(source.uri, edge);
    if (path.isEmpty() || !source.exists())
        return Hit();
    return readValid(path, {source.uri}, source.mtime, edge);
}

bool TthumbnailDiskCache::write(const TthumbnailSource& source, int edge, const QImage& picture, const Stamp& stamp,
                                const QSize& imageSize) const
{
    const QString path = thumbnailPath(source.uri, edge);
    if (path.isEmpty() || !source.exists() || picture.isNull())
        return false;
    TextKeys keys{{uriKey, source.uri.toLatin1()},
                  {mtimeKey, QByteArray::number(source.mtime)},
                  {sizeKey, QByteArray::number(source.size)}};
    if (imageSize.isValid()) {
        keys.emplace_back(widthKey, QByteArray::number(imageSize.width()));
        keys.emplace_back(heightKey, QByteArray::number(imageSize.height()));
    }
    keys.emplace_back(softwareKey, software().toLatin1());
    const QByteArray origin = stampText(stamp);
    if (!origin.isEmpty())
        keys.emplace_back(sourceKey, origin);
    return writeAtomically(path, encodePng(reduce(picture, edge), keys));
}

bool TthumbnailDiskCache::hasFailed(const TthumbnailSource& source) const
{
    const QString path = failurePath(source.uri);
    if (path.isEmpty() || !source.exists())
        return false;
    // A record is a picture of one pixel: its keys are all there is to read.
    return !readValid(path, {source.uri}, source.mtime, 1).isNull();
}

bool TthumbnailDiskCache::recordFailure(const TthumbnailSource& source) const
{
    const QString path = failurePath(source.uri);
    if (path.isEmpty() || !source.exists())
        return false;
    QImage empty(1, 1, QImage::Format_ARGB32);
    empty.fill(Qt::transparent);
    const TextKeys keys{{uriKey, source.uri.toLatin1()},
                        {mtimeKey, QByteArray::number(source.mtime)},
                        {sizeKey, QByteArray::number(source.size)},
                        {softwareKey, software().toLatin1()}};
    return writeAtomically(path, encodePng(empty, keys));
}

TthumbnailDiskCache::Hit TthumbnailDiskCache::readShared(const TthumbnailSource& source, int edge)
{
    const QString bucket = bucketName(edge);
    if (bucket.isEmpty() || !source.exists())
        return Hit();
    const QFileInfo file(source.path);
    const QString repository = file.path() + QLatin1String("/.sh_thumbnails/") + bucket + QLatin1Char('/');
    if (!QFileInfo(repository).isDir())
        return Hit();
    // Shared pictures name their file relative to the folder: by its name, as the standard
    // first said, or as "./NAME", as its later text says. Both are accepted.
    const QString name = file.fileName();
    const QString encoded = percentEncoded(QFile::encodeName(name));
    const QStringList uris{encoded, QLatin1String("./") + encoded, name};
    QStringList tried;
    for (const QString& uri : uris) {
        const QString path = repository + thumbnailName(uri);
        if (tried.contains(path))
            continue;
        tried << path;
        if (!QFileInfo(path).isFile())
            continue;
        Hit hit = readValid(path, uris, source.mtime, edge);
        if (!hit.isNull()) {
            // Only what the file itself looks like can be shared.
            hit.stamp = Stamp();
            return hit;
        }
    }
    return Hit();
}

QImage TthumbnailDiskCache::reduce(const QImage& picture, int edge)
{
    if (picture.isNull() || edge <= 0 || (picture.width() <= edge && picture.height() <= edge))
        return picture;
    return picture.scaled(QSize(edge, edge), Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

QSize TthumbnailDiskCache::pictureSize(const QString& path)
{
    QImageReader reader(path);
    reader.setAutoTransform(true);
    QSize size = reader.size();
    if (size.isValid() && (reader.transformation() & QImageIOHandler::TransformationRotate90))
        size.transpose();
    return size;
}
