#pragma once

#include <QImage>
#include <QSize>
#include <QString>

// What the disk cache knows of a source file: its canonical URI and the stamp (modification
// time in seconds, size in bytes) a cached picture must carry to be valid. Taken with one
// stat, on a worker thread.
struct TthumbnailSource
{
    QString path;
    QString uri;
    qint64 mtime = -1;
    qint64 size = -1;
    bool readable = false;

    // path made absolute and clean; mtime stays -1 when the file cannot be stat'ed.
    static TthumbnailSource of(const QString& path);
    bool exists() const { return mtime >= 0; }
};

// Thumbnails kept on disk between sessions in the desktop's shared thumbnail cache, laid out
// as the freedesktop.org Thumbnail Managing Standard says, so that pictures made by file
// managers and image tools are used here and ours are used there:
//
//   LOCATION/normal|large|x-large|xx-large/MD5(URI).png   (128, 256, 512, 1024 pixels)
//   LOCATION/fail/orlo-asset-browser-VERSION/MD5(URI).png  (files that could not be read)
//   FOLDER/.sh_thumbnails/BUCKET/MD5(NAME).png             (shared repositories, read only)
//
// LOCATION is $XDG_CACHE_HOME/thumbnails (~/.cache/thumbnails) unless the host option
// variable "contentBrowserThumbnailCache" names another folder or says "off".
//
// A picture is valid while its Thumb::URI and Thumb::MTime match the source. Pictures the
// browser makes from a swatch preview or from the host's image loader are stored under the
// file's own URI too, with a private key (X-ORLO::Source) naming where they came from; a
// swatch picture also carries the swatch preview's stamp, so that it goes stale when either
// file changes.
//
// Threads: configuredLocation() reads an option variable and runs on the GUI thread only;
// everything else is reentrant and meant for worker threads (it reads and writes files).
// Writing is atomic (a temporary file in the same folder, renamed over the old picture);
// folders are made with mode 0700 and files with 0600; a failed write costs only the caching.
class TthumbnailDiskCache
{
public:
    enum Origin { FileOrigin, SwatchOrigin, LoaderOrigin };

    // How a cached picture was made; a swatch picture carries its swatch preview's stamp.
    struct Stamp
    {
        Origin origin = FileOrigin;
        qint64 swatchMTime = -1;
        qint64 swatchSize = -1;
    };

    struct Hit
    {
        QImage picture;
        Stamp stamp;
        bool isNull() const { return picture.isNull(); }
    };

    static const char* const locationKey;
    static const char* const programName;
    static const int bucketEdges[4];

    // Value of "Software" in the pictures written: the program and its version.
    static QString software();
    // The folder the host option variable and the environment name; empty when "off".
    // GUI thread.
    static QString configuredLocation();

    // A cache that reads and writes nothing.
    TthumbnailDiskCache() = default;
    explicit TthumbnailDiskCache(const QString& location);
    bool isEnabled() const { return !m_location.isEmpty(); }
    const QString& location() const { return m_location; }

    // file:// URI of an absolute path, every byte outside the path characters of a URI
    // percent-encoded in upper-case hex (the escaping the desktop's file managers use).
    static QString fileUri(const QString& absolutePath);
    // The URI's MD5 as 32 lower-case hex digits, then ".png".
    static QString thumbnailName(const QString& uri);
    // Edge of the smallest bucket at least as large as shown's larger side; 0 when shown is
    // larger than every bucket.
    static int bucketEdge(const QSize& shown);
    static QString bucketName(int edge);

    QString thumbnailPath(const QString& uri, int edge) const;
    QString failurePath(const QString& uri) const;
    // Whether path lies inside the cache itself, whose files are never cached again.
    bool holds(const QString& path) const;

    // The valid picture of source in the bucket of edge, or a null hit. Reads the text keys
    // before any pixel, so a stale picture costs no decoding.
    Hit read(const TthumbnailSource& source, int edge) const;
    // Stores picture (reduced to the bucket, never enlarged) for source. imageSize, when
    // valid, is the source picture's own size. False when it could not be written.
    bool write(const TthumbnailSource& source, int edge, const QImage& picture, const Stamp& stamp,
               const QSize& imageSize = QSize()) const;
    // Whether this program failed on source in its present state, and recording that it did.
    bool hasFailed(const TthumbnailSource& source) const;
    bool recordFailure(const TthumbnailSource& source) const;

    // The valid picture of source in its folder's shared repository, or a null hit.
    static Hit readShared(const TthumbnailSource& source, int edge);

    // picture fitted inside edge x edge, aspect kept, smoothly; never enlarged.
    static QImage reduce(const QImage& picture, int edge);
    // The size of the picture in the file at path as it is shown (orientation applied), read
    // from its header; invalid when unknown.
    static QSize pictureSize(const QString& path);

private:
    QString m_location;
};
