#include "ThostMainWindow.h"

#include "ORLOAssetBrowser.h"
#include "TcommandEngine.h"
#include "ThostCommands.h"
#include "ThostConsole.h"
#include "ThostDpiScaling.h"
#include "ThostDropTarget.h"
#include "ThostImageLoader.h"
#include "ThostPopupMenuCreator.h"
#include "ThostProjectSidebarManager.h"
#include "ThostProjects.h"
#include "ThostSceneDock.h"
#include "ThostViewport.h"
#include "TUIInventory.h"
#include "TprefOptionVar.h"
#include "TstringId.h"
#include "VelaEnv.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QFileDialog>
#include <QInputDialog>
#include <QMenuBar>
#include <QMessageBox>
#include <QSettings>
#include <QStatusBar>
#include <QThread>
#include <QToolBar>
#include <QTreeWidget>

namespace {
Tstring toT(const QString& text)
{
    Tstring out;
    Tstring_fromQString(text, out);
    return out;
}

QStringList libraryFolders()
{
    QStringList folders = Tstring_toQString(VelaGetEnv(Tstring("VELA_CONTENT_PATH"))).split(QLatin1Char(';'));
    folders.removeAll(QString());
    return folders;
}
} // namespace

void ThostMainWindow::keepQtSettingsIn(const QString& folder)
{
    // On this platform the native format is the INI format; both are set so that neither
    // can reach the user's own settings folder.
    for (const QSettings::Format format : {QSettings::NativeFormat, QSettings::IniFormat})
        QSettings::setPath(format, QSettings::UserScope, folder);
}

ThostMainWindow::ThostMainWindow(const Settings& settings)
    : m_scaling(std::make_unique<ThostDpiScaling>())
    , m_imageLoader(std::make_unique<ThostImageLoader>())
    , m_popupMenuCreator(std::make_unique<ThostPopupMenuCreator>())
    , m_projectSidebarManager(std::make_unique<ThostProjectSidebarManager>())
{
    setObjectName(QStringLiteral("OrloMainWindow"));
    setWindowTitle(tr("ORLO Asset Browser"));
    TUIInventory::registerObject(this);

    m_console = new ThostConsole(this);
    addDockWidget(Qt::BottomDockWidgetArea, m_console);
    m_sceneDock = new ThostSceneDock(this);
    addDockWidget(Qt::BottomDockWidgetArea, m_sceneDock);
    m_viewport = new ThostViewport(this);
    addDockWidget(Qt::BottomDockWidgetArea, m_viewport);
    splitDockWidget(m_console, m_viewport, Qt::Horizontal);
    splitDockWidget(m_viewport, m_sceneDock, Qt::Horizontal);
    // Files dragged out of the browser onto the viewport or the scene are brought into it.
    m_dropTarget = new ThostDropTarget(this);
    m_dropTarget->watch(m_viewport->area());
    m_dropTarget->watch(m_sceneDock);
    m_dropTarget->watch(m_sceneDock->list());
    TcommandEngine* engine = TcommandEngine::instance();
    connect(engine, &TcommandEngine::commandExecuted, m_console, &ThostConsole::appendCommand);
    TcommandEngine::setErrorDisplay([this](const QString& text) { showError(text); });
    ThostCommands::registerAll();
    // Loaded only now, so that a corrupt store is reported through the display just set.
    TprefOptionVar::setPreferenceDirectory(settings.preferenceDir);
    // The host's image loader is thread-safe: the browser may call it from as many workers
    // as there are cores.
    TprefOptionVar::setOptionVarValue(Tstring("contentBrowserImageLoaderThreads"), QThread::idealThreadCount(),
                                      Tstring("Content Browser"));
    ThostProjects::instance()->load(settings.projectsFolder);

    buildMenus();
    // The browser is the window's subject; the docks keep a strip at the bottom.
    resizeDocks({m_console, m_sceneDock}, {170, 170}, Qt::Vertical);
    resizeDocks({m_console, m_viewport, m_sceneDock}, {3, 2, 2}, Qt::Horizontal);

    TassetBrowserOptions options;
    options.setDpiScaling(m_scaling.get());
    options.setImageLoader(m_imageLoader.get());
    options.setPopupMenuCreator(m_popupMenuCreator.get());
    options.setProjectSidebarManager(m_projectSidebarManager.get());
    options.setBrowserMenu(menuBar());
    options.setPreferenceDir(QDir::toNativeSeparators(settings.preferenceDir).toStdString());
    options.setAppDir(QDir::toNativeSeparators(settings.appDir).toStdString());
    m_browser = CreateORLOAssetBrowser(options, this);
    if (!m_browser) {
        QMessageBox::critical(this, windowTitle(), tr("The asset browser could not be created: out of memory."));
        return;
    }
    setCentralWidget(m_browser);

    const Tstring context = toT(settings.context);
    if (settings.forceStartFolder) {
        // The folder the user named wins over where the context was left last time.
        QString key = settings.context;
        if (!key.endsWith(QLatin1String("ContentBrowserContext")))
            key += QLatin1String("ContentBrowserContext");
        TprefOptionVar::removeOptionVar(toT(key));
    }
    m_browser->setBrowserContext(context, toT(settings.startTab), toT(settings.startFolder));

    m_console->appendNote(tr("Preferences: %1").arg(QDir::toNativeSeparators(settings.preferenceDir)));
    if (!settings.startFolder.isEmpty())
        m_console->appendNote(tr("Start folder: %1").arg(QDir::toNativeSeparators(settings.startFolder)));
    const QStringList library = libraryFolders();
    if (!library.isEmpty())
        m_console->appendNote(tr("Library: %1").arg(QDir::toNativeSeparators(library.join(QLatin1String("; ")))));
    if (const ThostProjects::Project* project = ThostProjects::instance()->current())
        m_console->appendNote(tr("Project: %1 (%2)").arg(project->name, QDir::toNativeSeparators(project->root)));
    statusBar()->showMessage(tr("Ready"));
}

ThostMainWindow::~ThostMainWindow()
{
    TcommandEngine::setErrorDisplay(nullptr);
    // The browser goes before the callback objects it points to.
    delete m_browser;
    m_browser = nullptr;
}

void ThostMainWindow::runCommand(const QString& command)
{
    TcommandEngine::executeCommand(toT(command), true, false);
}

void ThostMainWindow::buildMenus()
{
    auto* addLibrary = new QAction(m_scaling->icon(QStringLiteral("CB_AddLibrary.png")), tr("&Add Library Folder..."), this);
    connect(addLibrary, &QAction::triggered, this, &ThostMainWindow::addLibraryFolder);
    auto* setProject = new QAction(m_scaling->icon(QStringLiteral("CB_FolderRegularOpen.png")),
                                   TstringId("rSetProject").asQString(), this);
    connect(setProject, &QAction::triggered, this, [this]() { runCommand(QStringLiteral("setProjectFromFileDialog")); });
    auto* projectWindow = new QAction(m_scaling->icon(QStringLiteral("CB_Settings.png")),
                                      TstringId("rProjectWindow").asQString(), this);
    connect(projectWindow, &QAction::triggered, this, [this]() { runCommand(QStringLiteral("ProjectWindow")); });

    QMenu* file = menuBar()->addMenu(tr("&File"));
    file->setObjectName(QStringLiteral("fileMenu"));
    file->addAction(tr("&New Scene"), this, [this]() { runCommand(QStringLiteral("newScene")); });
    file->addSeparator();
    file->addAction(tr("&Quit"), QKeySequence::Quit, this, &QWidget::close);

    QMenu* library = menuBar()->addMenu(tr("&Library"));
    library->setObjectName(QStringLiteral("libraryMenu"));
    library->addAction(addLibrary);
    library->addAction(tr("&Remove Library Folder..."), this, &ThostMainWindow::removeLibraryFolder);
    library->addAction(tr("Re&fresh Library"), this, [this]() {
        if (m_browser)
            m_browser->refreshLibrary();
        m_console->appendNote(tr("refreshLibrary()"));
    });

    QMenu* project = menuBar()->addMenu(tr("&Project"));
    project->setObjectName(QStringLiteral("projectMenu"));
    project->addAction(setProject);
    project->addAction(projectWindow);

    // The host's own tool bar, drawn with the same pictures and scale the browser gets.
    QToolBar* tools = addToolBar(tr("Host"));
    tools->setObjectName(QStringLiteral("hostToolBar"));
    tools->setIconSize(m_scaling->scaledSize(QSize(20, 20)));
    tools->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    tools->setMovable(false);
    tools->addAction(addLibrary);
    tools->addAction(setProject);
    tools->addAction(projectWindow);

    QMenu* window = menuBar()->addMenu(tr("&Window"));
    window->setObjectName(QStringLiteral("windowMenu"));
    window->addAction(m_console->toggleViewAction());
    window->addAction(m_sceneDock->toggleViewAction());
    window->addAction(tools->toggleViewAction());
}

void ThostMainWindow::addLibraryFolder()
{
    const QString folder = QFileDialog::getExistingDirectory(this, tr("Add Library Folder"), QDir::homePath());
    if (folder.isEmpty() || !m_browser)
        return;
    m_browser->addLibraryPath(toT(folder));
    m_console->appendNote(tr("addLibraryPath(%1)").arg(QDir::toNativeSeparators(folder)));
    m_browser->showLibraryPath(toT(folder));
}

void ThostMainWindow::removeLibraryFolder()
{
    const QStringList folders = libraryFolders();
    if (folders.isEmpty() || !m_browser)
        return;
    bool ok = false;
    const QString folder = QInputDialog::getItem(this, tr("Remove Library Folder"), tr("Library folder:"), folders, 0,
                                                 false, &ok);
    if (!ok || folder.isEmpty())
        return;
    m_browser->removeLibraryPath(toT(folder));
    m_console->appendNote(tr("removeLibraryPath(%1)").arg(QDir::toNativeSeparators(folder)));
}

void ThostMainWindow::showError(const QString& text)
{
    // The console shows it from the engine's record; the status bar is where the eye is.
    statusBar()->showMessage(tr("Error: %1").arg(text), 10000);
}

void ThostMainWindow::closeEvent(QCloseEvent* event)
{
    if (m_browser)
        m_browser->saveBrowserState();
    QMainWindow::closeEvent(event);
}
