#pragma once

#include "TimageIoReader.h"

#include <QDateTime>
#include <QString>
#include <QWidget>

#include <memory>

class QLabel;
class QResizeEvent;
class TthumbnailService;
class TworkTicket;

// The metadata tab: name, type, size, creation and modification time of the file the
// preview panel was last asked about, as captions and values in a two-column grid; for a
// picture, four rows more: its resolution, channels and bit depth, and the count of its
// parts (pages, layers) and mip levels when it has more than one.
//
// Threads: loadMetaData returns at once. The file's facts and the picture's header (never
// its pixels) are read on the thumbnail service's interactive threads; the values are put
// into the labels back on the GUI thread. Cancelling: each new path cancels the read of the
// one before, and a result for an earlier path is dropped. Until the new facts arrive the
// previous values stay, so clicking through files never flashes an empty table.
class MetaDataViewer : public QWidget
{
    Q_OBJECT

public:
    enum Row { NameRow, TypeRow, SizeRow, CreatedRow, ModifiedRow, RowCount };
    // Below the five file rows; hidden when there is nothing to say.
    enum PictureRow { ResolutionRow, ChannelsRow, PartsRow, LevelsRow, PictureRowCount };

    // service: the pool to read on (the process's own when null).
    explicit MetaDataViewer(QWidget* parent = nullptr, TthumbnailService* service = nullptr);
    ~MetaDataViewer() override;

    // The path last loaded; empty at first.
    QString currentPath() const { return m_path; }
    // The full (unelided) value text of row, as last loaded.
    QString valueText(Row row) const;
    QString valueText(PictureRow row) const;
    // The caption of a picture row as last shown ("Parts", "Pages" or "Layers" for PartsRow).
    QString captionText(PictureRow row) const;
    bool isRowShown(PictureRow row) const;
    // Whether the facts of the current path are still being read.
    bool isLoading() const { return m_loading; }

    // bytes with two decimals and the largest unit it strictly exceeds ("1024.00 B",
    // "1.00 KB", "1.50 MB", "2.00 GB"); the decimal point is "." whatever the locale.
    static QString sizeText(qint64 bytes);
    // The first valid of the three times: not every file system records a birth time.
    static QDateTime creationTime(const QDateTime& birth, const QDateTime& metadataChange,
                                  const QDateTime& modified);
    // "RGBA, 16-bit half", "Y, 8-bit", "R G B A Z, 32-bit float".
    static QString channelsText(const TpictureHeader& header);

Q_SIGNALS:
    // The values of path are on screen (also for a folder or a missing path: all empty).
    void metaDataLoaded(const QString& path);

public Q_SLOTS:
    // Shows the facts of path: five empty values for a folder or a missing path. Asking for
    // the path already shown does nothing, even when the file has changed since.
    void loadMetaData(const QString& path);

protected:
    // Keeps the values as they were elided when loaded: the path has not changed, so the
    // reload it asks for does nothing.
    void resizeEvent(QResizeEvent* event) override;

private:
    struct Facts;
    static Facts gather(const QString& path);
    void showFacts(const Facts& facts);
    void setElidedText(QLabel* label, const QString& text);

    QLabel* m_captions[RowCount];
    QLabel* m_values[RowCount];
    QLabel* m_pictureCaptions[PictureRowCount];
    QLabel* m_pictureValues[PictureRowCount];
    QString m_path;
    QString m_texts[RowCount];
    QString m_pictureTexts[PictureRowCount];
    TthumbnailService* m_service;
    std::shared_ptr<TworkTicket> m_ticket;
    quint64 m_serial = 0;
    bool m_loading = false;
};
