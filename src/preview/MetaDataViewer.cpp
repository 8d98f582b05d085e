#include "MetaDataViewer.h"

#include "TbrowserStrings.h"
#include "TpictureStrings.h"
#include "TpictureDecoder.h"
#include "TstringFormat.h"
#include "TthumbnailService.h"

#include <QFileInfo>
#include <QFontMetrics>
#include <QGridLayout>
#include <QLabel>
#include <QPointer>
#include <QResizeEvent>
#include <QSpacerItem>

struct MetaDataViewer::Facts
{
    QString path;
    bool isFile = false;
    QString name;
    QString suffix;
    qint64 size = 0;
    QDateTime created;
    QDateTime modified;
    TpictureHeader picture;
};

MetaDataViewer::MetaDataViewer(QWidget* parent, TthumbnailService* service)
    : QWidget(parent)
    , m_service(service ? service : TthumbnailService::instance())
{
    const TstringId* captionKeys[RowCount] = {
        &rContentBrowserMetadataFileName,
        &rContentBrowserMetadataFileType,
        &rContentBrowserMetadataFileSize,
        &rContentBrowserMetadataFileCreationDate,
        &rContentBrowserMetadataFileLastModifiedDate,
    };
    const TstringId* pictureKeys[PictureRowCount] = {
        &rContentBrowserMetadataResolution,
        &rContentBrowserMetadataChannels,
        &rContentBrowserMetadataParts,
        &rContentBrowserMetadataMipLevels,
    };

    auto* grid = new QGridLayout(this);
    auto addRow = [this, grid](int row, const QString& caption, QLabel*& captionLabel, QLabel*& valueLabel) {
        captionLabel = new QLabel(caption, this);
        valueLabel = new QLabel(this);
        // The value column takes the room the captions leave; a value never widens the
        // panel, it is elided to the width its label has when it is loaded.
        valueLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        grid->addWidget(captionLabel, row, 0);
        grid->addWidget(valueLabel, row, 1);
    };
    for (int row = 0; row < RowCount; ++row)
        addRow(row, captionKeys[row]->asQString(), m_captions[row], m_values[row]);
    for (int row = 0; row < PictureRowCount; ++row) {
        addRow(RowCount + row, pictureKeys[row]->asQString(), m_pictureCaptions[row], m_pictureValues[row]);
        m_pictureCaptions[row]->hide();
        m_pictureValues[row]->hide();
    }
    grid->setColumnStretch(1, 1);
    grid->addItem(new QSpacerItem(0, 0, QSizePolicy::Minimum, QSizePolicy::Expanding), RowCount + PictureRowCount,
                  0);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

MetaDataViewer::~MetaDataViewer()
{
    if (m_ticket)
        m_ticket->cancel();
}

QString MetaDataViewer::valueText(Row row) const
{
    return row >= 0 && row < RowCount ? m_texts[row] : QString();
}

QString MetaDataViewer::valueText(PictureRow row) const
{
    return row >= 0 && row < PictureRowCount ? m_pictureTexts[row] : QString();
}

QString MetaDataViewer::captionText(PictureRow row) const
{
    return row >= 0 && row < PictureRowCount ? m_pictureCaptions[row]->text() : QString();
}

bool MetaDataViewer::isRowShown(PictureRow row) const
{
    return row >= 0 && row < PictureRowCount && !m_pictureValues[row]->isHidden();
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

QString MetaDataViewer::channelsText(const TpictureHeader& header)
{
    QString depth;
    if (header.bits > 0) {
        const TstringId& key = !header.floating          ? rContentBrowserMetadataBitDepth
                               : header.bits == 16 ? rContentBrowserMetadataBitDepthHalf
                                                         : rContentBrowserMetadataBitDepthFloat;
        depth = TstringFormat(key.asQString(), {header.bits});
    }
    // "RGBA" when every channel has a one-letter name, else the names apart ("R G B A Z").
    bool letters = header.channels.size() <= 4;
    for (const QString& name : header.channels)
        letters = letters && name.size() == 1;
    const QString channels = header.channels.join(letters ? QString() : QStringLiteral(" "));
    if (channels.isEmpty() || depth.isEmpty())
        return channels.isEmpty() ? depth : channels;
    return TstringFormat(rContentBrowserMetadataChannelsValue.asQString(), {channels, depth});
}

MetaDataViewer::Facts MetaDataViewer::gather(const QString& path)
{
    Facts facts;
    facts.path = path;
    const QFileInfo info(path);
    if (!info.isFile())
        return facts;
    facts.isFile = true;
    facts.name = info.fileName();
    facts.suffix = info.suffix();
    facts.size = info.size();
    facts.created = creationTime(info.birthTime(), info.metadataChangeTime(), info.lastModified());
    facts.modified = info.lastModified();
    if (TpictureDecoder::isSupportedImageSuffix(facts.suffix))
        facts.picture = TpictureDecoder::readHeader(path);
    return facts;
}

void MetaDataViewer::loadMetaData(const QString& path)
{
    if (path == m_path)
        return;

    m_path = path;
    if (m_ticket)
        m_ticket->cancel();
    m_ticket = std::make_shared<TworkTicket>();
    const quint64 serial = ++m_serial;
    m_loading = true;
    const QPointer<MetaDataViewer> self(this);
    TthumbnailService* relay = m_service;
    m_service->submit(TthumbnailService::Interactive, m_ticket, [self, serial, path, relay] {
        const Facts facts = gather(path);
        QMetaObject::invokeMethod(
            relay, [self, serial, facts] {
                if (self && self->m_serial == serial)
                    self->showFacts(facts);
            },
            Qt::QueuedConnection);
    });
}

void MetaDataViewer::showFacts(const Facts& facts)
{
    m_loading = false;
    for (QString& text : m_texts)
        text.clear();
    for (QString& text : m_pictureTexts)
        text.clear();

    if (facts.isFile) {
        m_texts[NameRow] = facts.name;
        m_texts[TypeRow] = facts.suffix + QLatin1Char(' ') + rContentBrowserMetadataFileTypeTag.asQString();
        m_texts[SizeRow] = sizeText(facts.size);
        m_texts[CreatedRow] = facts.created.toString(Qt::TextDate);
        m_texts[ModifiedRow] = facts.modified.toString(Qt::TextDate);
    }

    const TpictureHeader& picture = facts.picture;
    const TstringId* partsCaption = &rContentBrowserMetadataParts;
    int parts = picture.parts;
    if (picture.format == QLatin1String("psd")) {
        // The first part of a PSD is its merged picture; the others are its layers.
        partsCaption = &rContentBrowserMetadataLayers;
        parts = picture.parts - 1;
    } else if (picture.format == QLatin1String("tiff")) {
        partsCaption = &rContentBrowserMetadataPages;
    }
    if (picture.valid) {
        m_pictureTexts[ResolutionRow] = TstringFormat(rContentBrowserMetadataResolutionValue.asQString(),
                                                      {picture.size.width(), picture.size.height()});
        m_pictureTexts[ChannelsRow] = channelsText(picture);
        if (parts > 1 || (parts == 1 && picture.format == QLatin1String("psd")))
            m_pictureTexts[PartsRow] = QString::number(parts);
        if (picture.levels > 1)
            m_pictureTexts[LevelsRow] = QString::number(picture.levels);
    }
    m_pictureCaptions[PartsRow]->setText(partsCaption->asQString());

    for (int row = 0; row < RowCount; ++row)
        setElidedText(m_values[row], m_texts[row]);
    for (int row = 0; row < PictureRowCount; ++row) {
        const bool shown = !m_pictureTexts[row].isEmpty();
        m_pictureCaptions[row]->setVisible(shown);
        m_pictureValues[row]->setVisible(shown);
        setElidedText(m_pictureValues[row], m_pictureTexts[row]);
    }
    Q_EMIT metaDataLoaded(facts.path);
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
