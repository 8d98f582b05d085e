#include "AssetBrowser.h"

#include "TiceGlobalState.h"
#include "TuiScale.h"

#include <QMenuBar>
#include <QShowEvent>
#include <QSplitter>
#include <QVBoxLayout>

AssetBrowser::AssetBrowser(const TassetBrowserOptions& options, QWidget* parent)
    : ORLOAssetBrowser(parent)
{
    m_options.copy(options);
    setObjectName(QStringLiteral("ORLOAssetBrowser"));
    initializeBrowser();
}

AssetBrowser::~AssetBrowser() = default;

void AssetBrowser::initializeBrowser()
{
    buildPanes();
    connectPanes();
    applyVisibilityFlags();
}

void AssetBrowser::buildPanes()
{
    const TassetBrowserOptions* opts = &m_options;

    m_mainSplitter = new QSplitter(this);
    m_mainSplitter->setObjectName(QStringLiteral("mainSplitter"));
    m_mainSplitter->setContentsMargins(0, TuiScale::metric(opts, 3), 0, 0);
    m_mainSplitter->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);

    auto* layout = new QVBoxLayout;
    layout->setContentsMargins(TuiScale::metric(opts, 4), TuiScale::metric(opts, 6), TuiScale::metric(opts, 4),
                               TuiScale::metric(opts, 3));
    layout->setSpacing(TuiScale::metric(opts, 7));
    layout->addWidget(m_mainSplitter);
    setLayout(layout);
}

void AssetBrowser::connectPanes()
{
}

void AssetBrowser::applyVisibilityFlags()
{
}

void AssetBrowser::setBrowserContext(const Tstring& context, const Tstring& a, const Tstring& b)
{
    Q_UNUSED(a);
    Q_UNUSED(b);
    if (!m_contextName.isEmpty() && !m_stateSaved)
        saveBrowserState();
    m_contextName = Tstring_toQString(context);
    m_stateSaved = false;
}

void AssetBrowser::saveBrowserState()
{
    m_stateSaved = true;
}

void AssetBrowser::showLibraryPath(const Tstring& path)
{
    Q_UNUSED(path);
}

void AssetBrowser::addLibraryPath(const Tstring& path)
{
    Q_UNUSED(path);
}

void AssetBrowser::removeLibraryPath(const Tstring& path)
{
    Q_UNUSED(path);
}

void AssetBrowser::refreshLibrary()
{
}

void AssetBrowser::showEvent(QShowEvent* event)
{
    ORLOAssetBrowser::showEvent(event);
    // The host's window menu bar must never appear inside the browser's own frame.
    QMenuBar* menuBar = TiceGlobalState::currentQMenuBar();
    if (menuBar && menuBar->parentWidget() && menuBar->parentWidget()->isAncestorOf(this))
        menuBar->hide();
}
