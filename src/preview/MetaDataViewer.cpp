#include "MetaDataViewer.h"

#include "TbrowserStrings.h"

#include <QFileInfo>
#include <QFontMetrics>
#include <QGridLayout>
#include <QLabel>
#include <QResizeEvent>
#include <QSpacerItem>

MetaDataViewer::MetaDataViewer(QWidget* parent)
    : QWidget(parent)
{
    const TstringId* captionKeys[RowCount] = {
        &rContentBrowserMetadataFileName,
        &rContentBrowserMetadataFileType,
        &rContentBrowserMetadataFileSize,
        &rContentBrowserMetadataFileCreationDate,
        &rContentBrowserMetadataFileLastModifiedDate,
    };

    auto* grid = new QGridLayout(this);
    for (int row = 0; row < RowCount; ++row) {
        m_captions[row] = new QLabel(captionKeys[row]->asQString(), this);
        m_values[row] = new QLabel(this);
        // The value column takes the room the captions leave; a value never widens the
        // panel, it is elided to the width its label has when it is loaded.
        m_values[row]->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        grid->addWidget(m_captions[row], row, 0);
        grid->addWidget(m_values[row], row, 1);
    }
    grid->setColumnStretch(1, 1);
    grid->addItem(new QSpacerItem(0, 0, QSizePolicy::Minimum, QSizePolicy::Expanding), RowCount, 0);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

QString MetaDataViewer::valueText(Row row) const
{
    return row >= 0 && row < RowCount ? m_texts[row] : QString();
}

QString MetaDataViewer::sizeText(qint64 bytes)
{
    const double size = double(bytes);
    const double kilo = 1024.0;
    const double mega = 1048576.0;
    const double giga = 1073741824.0;
    // QString::number always writes "." whatever QLocale::setDefault says.
    if (size > giga)
        return QString::number(size / giga, 'f', 2) + QLatin1String(" GB");
    if (size > mega)
        return QString::number(size / mega, 'f', 2) + QLatin1String(" MB");
    if (size > kilo)
        return QString::number(size / kilo, 'f', 2) + QLatin1String(" KB");
    return QString::number(size, 'f', 2) + QLatin1String(" B");
}

QDateTime MetaDataViewer::creationTime(const QDateTime& birth, const QDateTime& metadataChange,
                                       const QDateTime& modified)
{
    if (birth.isValid())
        return birth;
    if (metadataChange.isValid())
        return metadataChange;
    return modified;
}

void MetaDataViewer::loadMetaData(const QString& path)
{
    if (path == m_path)
        return;

    m_path = path;
    for (QString& text : m_texts)
        text.clear();

    const QFileInfo info(path);
    if (info.isFile()) {
        m_texts[NameRow] = info.fileName();
        m_texts[TypeRow] = info.suffix() + QLatin1Char(' ') + rContentBrowserMetadataFileTypeTag.asQString();
        m_texts[SizeRow] = sizeText(info.size());
        m_texts[CreatedRow] =
            creationTime(info.birthTime(), info.metadataChangeTime(), info.lastModified()).toString(Qt::TextDate);
        m_texts[ModifiedRow] = info.lastModified().toString(Qt::TextDate);
    }

    for (int row = 0; row < RowCount; ++row)
        setElidedText(m_values[row], m_texts[row]);
}

void MetaDataViewer::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    loadMetaData(m_path);
}

void MetaDataViewer::setElidedText(QLabel* label, const QString& text)
{
    const QFontMetrics metrics = label->fontMetrics();
    if (metrics.horizontalAdvance(text) > label->width()) {
        // The tooltip is only ever set, never cleared: a shorter value loaded later leaves
        // the last long one as the tooltip.
        label->setToolTip(text);
        label->setText(metrics.elidedText(text, Qt::ElideRight, label->width()));
    } else {
        label->setText(text);
    }
}
