#include "PreviewPane.h"

#include <QPixmap>

#include "FilePreview.h"
#include "MetaDataViewer.h"
#include "PreviewLoader.h"
#include "TassetBrowserOptions.h"
#include "TbasicWidgetWithToolbar.h"
#include "TbrowserStrings.h"
#include "Tint32Array.h"
#include "TuiScale.h"

#include <QSplitter>
#include <QTabWidget>
#include <QVBoxLayout>

namespace {

// Positions of the two panel states in the browser's "PanelsStatus" array.
constexpr int previewStatusIndex = 5;
constexpr int metadataStatusIndex = 6;

// The tabs share the look of the other panes' frames, without a strip of tools.
TbasicWidgetWithToolbar* framed(const TassetBrowserOptions* options, QWidget* content, QWidget* parent)
{
    auto* frame = new TbasicWidgetWithToolbar(options, content, parent);
    frame->setToolbarVisible(false);
    return frame;
}

} // namespace

PreviewPane::PreviewPane(const TassetBrowserOptions* options, QWidget* parent)
    : QWidget(parent)
    , m_metaDataViewer(new MetaDataViewer(this))
    , m_filePreview(nullptr)
    , m_metadataTabs(new QTabWidget(this))
    , m_previewTabs(new QTabWidget(this))
    , m_options(options)
{
    setObjectName(QStringLiteral("previewPane"));
    m_metaDataViewer->setObjectName(QStringLiteral("metaDataViewer"));
    m_metadataTabs->setObjectName(QStringLiteral("metadataTabWidget"));
    m_metadataTabs->addTab(framed(m_options, m_metaDataViewer, m_metadataTabs),
                           rContentBrowserTabMetadata.asQString());

    m_filePreview = new FilePreview(m_options, this);
    m_filePreview->setObjectName(QStringLiteral("filePreview"));
    m_previewTabs->setObjectName(QStringLiteral("previewTabWidget"));
    m_previewTabs->addTab(framed(m_options, m_filePreview, m_previewTabs), rContentBrowserTabPreview.asQString());

    auto* splitter = new QSplitter(Qt::Vertical, this);
    splitter->setObjectName(QStringLiteral("previewSplitter"));
    splitter->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
    splitter->addWidget(m_metadataTabs);
    splitter->addWidget(m_previewTabs);
    // Half the width for each, not half the height: the panel has always opened this way.
    splitter->setSizes({width() / 2, width() / 2});

    auto* layout = new QVBoxLayout(this);
    layout->setSpacing(TuiScale::metric(m_options, 5));
    layout->setContentsMargins(TuiScale::metric(m_options, 2), 0, 0, 0);
    layout->addWidget(splitter);

    auto* loader = new PreviewLoader(m_options ? m_options->imageLoader() : nullptr, this);
    m_loader = loader;
    connect(this, &PreviewPane::newPreviewRequested, loader, &PreviewLoader::loadPreview, Qt::DirectConnection);
    connect(this, &PreviewPane::newPreviewRequested, m_metaDataViewer, &MetaDataViewer::loadMetaData,
            Qt::DirectConnection);
    connect(loader, &PreviewLoader::newImagePreviewToDisplay, m_filePreview, &FilePreview::loadNewPreviewImage,
            Qt::DirectConnection);
    connect(m_filePreview, &FilePreview::pictureSizeChanged, loader, &PreviewLoader::setTargetSize);
}

void PreviewPane::clearPreview()
{
    m_filePreview->loadNewPreviewImage(QPixmap());
}

QSize PreviewPane::sizeHint() const
{
    return TuiScale::size(m_options, QSize(300, 500));
}

void PreviewPane::appendPanelsStatus(Tint32Array& status) const
{
    status.addLast(m_previewShown ? 1 : 0);
    status.addLast(m_metadataShown ? 1 : 0);
}

void PreviewPane::applyPanelsStatus(const Tint32Array& status)
{
    if (status.length() <= metadataStatusIndex)
        return;
    m_previewShown = status[previewStatusIndex] != 0;
    m_metadataShown = status[metadataStatusIndex] != 0;
    m_previewTabs->setVisible(m_previewShown);
    m_metadataTabs->setVisible(m_metadataShown);
    updatePanelVisibility();
}

void PreviewPane::onTogglePreviewTab(bool visible)
{
    m_previewShown = visible;
    m_previewTabs->setVisible(visible);
    updatePanelVisibility();
}

void PreviewPane::onToggleMetadataTab(bool visible)
{
    m_metadataShown = visible;
    m_metadataTabs->setVisible(visible);
    updatePanelVisibility();
}

void PreviewPane::updatePanelVisibility()
{
    setVisible(m_previewShown || m_metadataShown);
}
