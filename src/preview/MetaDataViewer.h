#pragma once

#include <QDateTime>
#include <QString>
#include <QWidget>

class QLabel;
class QResizeEvent;

// The metadata tab: name, type, size, creation and modification time of the file the
// preview panel was last asked about, as captions and values in a two-column grid.
class MetaDataViewer : public QWidget
{
    Q_OBJECT

public:
    enum Row { NameRow, TypeRow, SizeRow, CreatedRow, ModifiedRow, RowCount };

    explicit MetaDataViewer(QWidget* parent = nullptr);

    // The path last loaded; empty at first.
    QString currentPath() const { return m_path; }
    // The full (unelided) value text of row, as last loaded.
    QString valueText(Row row) const;

    // bytes with two decimals and the largest unit it strictly exceeds ("1024.00 B",
    // "1.00 KB", "1.50 MB", "2.00 GB"); the decimal point is "." whatever the locale.
    static QString sizeText(qint64 bytes);
    // The first valid of the three times: not every file system records a birth time.
    static QDateTime creationTime(const QDateTime& birth, const QDateTime& metadataChange,
                                  const QDateTime& modified);

public Q_SLOTS:
    // Shows the facts of path: five empty values for a folder or a missing path. Asking for
    // the path already shown does nothing, even when the file has changed since.
    void loadMetaData(const QString& path);

protected:
    // Keeps the values as they were elided when loaded: the path has not changed, so the
    // reload it asks for does nothing.
    void resizeEvent(QResizeEvent* event) override;

private:
    void setElidedText(QLabel* label, const QString& text);

    QLabel* m_captions[RowCount];
    QLabel* m_values[RowCount];
    QString m_path;
    QString m_texts[RowCount];
};
