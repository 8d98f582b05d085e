#pragma once

#include <QMainWindow>

#include <memory>

class ORLOAssetBrowser;
class ThostConsole;
class ThostDpiScaling;
class ThostDropTarget;
class ThostImageLoader;
class ThostPopupMenuCreator;
class ThostProjectSidebarManager;
class ThostSceneDock;
class ThostViewport;

// The reference host's main window: the browser in the middle, the script console and the
// scene list docked below, host messages in the status bar.
class ThostMainWindow : public QMainWindow
{
    Q_OBJECT

public:
    struct Settings
    {
        QString preferenceDir;
        QString appDir;
        // The folder the browser opens on: the tab word ("system", "examples"...) and folder
        // handed to the browser as its context's defaults.
        QString startTab;
        QString startFolder;
        // The host context the browser keeps its tab, folder, panels and sizes under.
        QString context = QStringLiteral("main");
        // Open startFolder even when the context remembers another place (the user named it).
        bool forceStartFolder = false;
        // Where the host's projects are found (the sample projects); may be empty.
        QString projectsFolder;
    };

    explicit ThostMainWindow(const Settings& settings);
    ~ThostMainWindow() override;

    // Makes Qt's own per-user settings of this process (the file dialogs' recent folders and
    // view state, among others) live in folder, beside the host's preferences, instead of
    // the user's settings folder. Call it before anything reads settings.
    static void keepQtSettingsIn(const QString& folder);

    ORLOAssetBrowser* browser() const { return m_browser; }
    ThostConsole* console() const { return m_console; }
    ThostSceneDock* sceneDock() const { return m_sceneDock; }
    ThostViewport* viewport() const { return m_viewport; }
    // Takes file drops on the scene dock.
    ThostDropTarget* dropTarget() const { return m_dropTarget; }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildMenus();
    void showError(const QString& text);
    void runCommand(const QString& command);
    void addLibraryFolder();
    void removeLibraryFolder();

    // The callback objects must outlive the browser: they are declared first and so are
    // destroyed after the widget tree has gone in ~ThostMainWindow.
    std::unique_ptr<ThostDpiScaling> m_scaling;
    std::unique_ptr<ThostImageLoader> m_imageLoader;
    std::unique_ptr<ThostPopupMenuCreator> m_popupMenuCreator;
    std::unique_ptr<ThostProjectSidebarManager> m_projectSidebarManager;
    ORLOAssetBrowser* m_browser = nullptr;
    ThostConsole* m_console = nullptr;
    ThostSceneDock* m_sceneDock = nullptr;
    ThostViewport* m_viewport = nullptr;
    ThostDropTarget* m_dropTarget = nullptr;
};
