#pragma once

#include <QMainWindow>

#include <memory>

class ORLOAssetBrowser;
class ThostConsole;
class ThostDpiScaling;

// The reference host's main window: the browser in the middle, the script console docked
// below, host messages in the status bar.
class ThostMainWindow : public QMainWindow
{
    Q_OBJECT

public:
    struct Settings
    {
        QString preferenceDir;
        QString appDir;
        QString startFolder;
    };

    explicit ThostMainWindow(const Settings& settings);
    ~ThostMainWindow() override;

    ORLOAssetBrowser* browser() const { return m_browser; }
    ThostConsole* console() const { return m_console; }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildMenus();
    void showError(const QString& text);

    // The callback objects must outlive the browser: they are declared first and so are
    // destroyed after the widget tree has gone in ~ThostMainWindow.
    std::unique_ptr<ThostDpiScaling> m_scaling;
    ORLOAssetBrowser* m_browser = nullptr;
    ThostConsole* m_console = nullptr;
};
