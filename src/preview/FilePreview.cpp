#include "FilePreview.h"

#include "TbrowserStrings.h"
#include "TuiScale.h"

#include <QLabel>
#include <QResizeEvent>
#include <QVBoxLayout>

FilePreview::FilePreview(const TassetBrowserOptions* options, QWidget* parent)
    : QWidget(parent)
    , m_label(new QLabel(rContentBrowserFilePreviewNoPreviewAvail.asQString(), this))
{
    setMinimumSize(TuiScale::size(options, QSize(100, 100)));

    m_label->setObjectName(QStringLiteral("filePreviewLabel"));
    m_label->setContentsMargins(0, 0, 0, 0);
    m_label->setAlignment(Qt::AlignCenter);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_label);

    setContentsMargins(0, 0, 0, 0);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void FilePreview::loadNewPreviewImage(const QPixmap& image)
{
    m_label->clear();
    m_label->setAlignment(Qt::AlignCenter);
    m_picture = QPixmap();
    if (!image.isNull()) {
        m_picture = image;
        rescale();
    } else {
        m_label->setText(rContentBrowserFilePreviewNoPreviewAvail.asQString());
    }
}

void FilePreview::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    rescale();
    Q_EMIT pictureSizeChanged(event->size() * devicePixelRatioF());
}

void FilePreview::rescale()
{
    if (m_picture.isNull())
        return;
    m_label->setPixmap(m_picture.scaled(width(), height(), Qt::KeepAspectRatio, Qt::SmoothTransformation));
}
