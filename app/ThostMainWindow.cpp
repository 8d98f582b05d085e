#include "ThostMainWindow.h"

#include "ORLOAssetBrowser.h"
#include "TcommandEngine.h"
#include "ThostCommands.h"
#include "ThostConsole.h"
#include "ThostDpiScaling.h"
#include "TUIInventory.h"
#include "TprefOptionVar.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QMenuBar>
#include <QMessageBox>
#include <QStatusBar>

ThostMainWindow::ThostMainWindow(const Settings& settings)
    : m_scaling(std::make_unique<ThostDpiScaling>())
{
    setObjectName(QStringLiteral("OrloMainWindow"));
    setWindowTitle(tr("ORLO Asset Browser"));
    TUIInventory::registerObject(this);

    m_console = new ThostConsole(this);
    addDockWidget(Qt::BottomDockWidgetArea, m_console);
    TcommandEngine* engine = TcommandEngine::instance();
    connect(engine, &TcommandEngine::commandExecuted, m_console, &ThostConsole::appendCommand);
    TcommandEngine::setErrorDisplay([this](const QString& text) { showError(text); });
    ThostCommands::registerAll();
    // Loaded only now, so that a corrupt store is reported through the display just set.
    TprefOptionVar::setPreferenceDirectory(settings.preferenceDir);

    buildMenus();
    // The browser is the window's subject; the console keeps a strip at the bottom.
    resizeDocks({m_console}, {160}, Qt::Vertical);

    TassetBrowserOptions options;
    options.setDpiScaling(m_scaling.get());
    options.setBrowserMenu(menuBar());
    options.setPreferenceDir(QDir::toNativeSeparators(settings.preferenceDir).toStdString());
    options.setAppDir(QDir::toNativeSeparators(settings.appDir).toStdString());
    m_browser = CreateORLOAssetBrowser(options, this);
    if (!m_browser) {
        QMessageBox::critical(this, windowTitle(), tr("The asset browser could not be created: out of memory."));
        return;
    }
    setCentralWidget(m_browser);
    m_browser->setBrowserContext(Tstring("main"), Tstring(), Tstring());

    m_console->appendNote(tr("Preferences: %1").arg(QDir::toNativeSeparators(settings.preferenceDir)));
    if (!settings.startFolder.isEmpty())
        m_console->appendNote(tr("Start folder: %1").arg(QDir::toNativeSeparators(settings.startFolder)));
    statusBar()->showMessage(tr("Ready"));
}

ThostMainWindow::~ThostMainWindow()
{
    TcommandEngine::setErrorDisplay(nullptr);
    // The browser goes before the callback objects it points to.
    delete m_browser;
    m_browser = nullptr;
}

void ThostMainWindow::buildMenus()
{
    QMenu* file = menuBar()->addMenu(tr("&File"));
    file->setObjectName(QStringLiteral("fileMenu"));
    file->addAction(tr("&Quit"), QKeySequence::Quit, this, &QWidget::close);
    QMenu* window = menuBar()->addMenu(tr("&Window"));
    window->setObjectName(QStringLiteral("windowMenu"));
    window->addAction(m_console->toggleViewAction());
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
