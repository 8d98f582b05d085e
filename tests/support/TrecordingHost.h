#pragma once

#include "TabDpiScaling.h"
#include "TabImageLoader.h"
#include "TabPopupMenuCreator.h"
#include "TabProjectSidebarManager.h"
#include "TassetBrowserOptions.h"

#include <QHash>
#include <QPixmap>
#include <QStringList>
#include <QTemporaryDir>

#include <functional>

// The four host callbacks with answers a test can set, recording every call the browser
// makes ("loadImage /tmp/x.png", "metric 3"...). A scale of 1 by default; set scale to try
// 150 or 200 per cent.
class TrecordingHost : public TabDpiScaling,
                       public TabImageLoader,
                       public TabPopupMenuCreator,
                       public TabProjectSidebarManager
{
public:
    TrecordingHost();

    // An options record pointing at all four callbacks.
    TassetBrowserOptions options() const;

    // TabDpiScaling
    QSize scaledSize(const QSize& size) const override;
    int scaledLength(int length) const override;
    int metric(int metric) const override;
    qreal scaleFactor() const override;
    QPixmap pixmap(const QString& fileName) const override;
    QIcon icon(const QString& fileName) const override;
    QPixmap pixmapAtSize(const QString& fileName, const QSize& size) const override;
    QFont scaledFont(const QFont& font) const override;

    // TabImageLoader
    bool loadImage(const QString& filePath, QPixmap& picture) override;
    bool canLoadImage(const QString& filePath) const override;

    // TabPopupMenuCreator
    QList<QAction*> fileActions(const QStringList& paths, QObject* owner) override;

    // TabProjectSidebarManager
    void projects(QStringList& projects) override;
    bool hasActiveProject() override;
    void currentProject(QString& project) override;
    void recentProjectPath(QString& path) override;
    void folderToReselect(QString& folder) override;
    bool setCurrentProject(const QString& project) override;

    // Answers.
    qreal scale = 1.0;
    QHash<int, int> metrics;                 // metric number -> pixels at 100 per cent (default 10 + n)
    QHash<QString, QPixmap> images;          // file path -> picture the image loader gives
    QStringList actionTexts;                 // texts of the actions fileActions makes ("-" = separator)
    QStringList projectList;
    bool activeProject = false;
    QString current;
    QString recentPath;
    QString reselectFolder;
    bool acceptProject = true;

    // Every call, in order.
    mutable QStringList calls;
};

// A fresh host state for one test: an empty option-variable store in a scratch preference
// folder, an empty command record and no command handlers left from another test.
class TfreshHostState
{
public:
    TfreshHostState();
    ~TfreshHostState();
    QString preferenceDir() const { return m_dir.path(); }

private:
    QTemporaryDir m_dir;
};
