#include "TrecordingHost.h"

#include "TcommandEngine.h"
#include "TprefOptionVar.h"

#include <QAction>
#include <cmath>

TrecordingHost::TrecordingHost() = default;

TassetBrowserOptions TrecordingHost::options() const
{
    auto* self = const_cast<TrecordingHost*>(this);
    TassetBrowserOptions options;
    options.setDpiScaling(self);
    options.setImageLoader(self);
    options.setPopupMenuCreator(self);
    options.setProjectSidebarManager(self);
    return options;
}

QSize TrecordingHost::scaledSize(const QSize& size) const
{
    calls << QStringLiteral("scaledSize %1x%2").arg(size.width()).arg(size.height());
    return QSize(int(std::lround(size.width() * scale)), int(std::lround(size.height() * scale)));
}

int TrecordingHost::scaledLength(int length) const
{
    return int(std::lround(length * scale));
}

int TrecordingHost::metric(int n) const
{
    calls << QStringLiteral("metric %1").arg(n);
    return int(std::lround(metrics.value(n, 10 + n) * scale));
}

qreal TrecordingHost::scaleFactor() const
{
    return scale;
}

QPixmap TrecordingHost::pixmap(const QString& fileName) const
{
    calls << QStringLiteral("pixmap ") + fileName;
    QPixmap picture(scaledSize(QSize(16, 16)));
    picture.fill(Qt::darkGray);
    return picture;
}

QIcon TrecordingHost::icon(const QString& fileName) const
{
    return QIcon(pixmap(fileName));
}

QPixmap TrecordingHost::pixmapAtSize(const QString& fileName, const QSize& size) const
{
    calls << QStringLiteral("pixmapAtSize ") + fileName;
    QPixmap picture(scaledSize(size));
    picture.fill(Qt::darkGray);
    return picture;
}

QFont TrecordingHost::scaledFont(const QFont& font) const
{
    QFont scaled = font;
    if (font.pointSizeF() > 0)
        scaled.setPointSizeF(font.pointSizeF() * scale);
    return scaled;
}

bool TrecordingHost::loadImage(const QString& filePath, QPixmap& picture)
{
    calls << QStringLiteral("loadImage ") + filePath;
    const auto it = images.constFind(filePath);
    if (it == images.constEnd())
        return false;
    picture = *it;
    return true;
}

bool TrecordingHost::canLoadImage(const QString& filePath) const
{
    return images.contains(filePath);
}

QList<QAction*> TrecordingHost::fileActions(const QStringList& paths, QObject* owner)
{
    calls << QStringLiteral("fileActions ") + paths.join(QLatin1Char(';'));
    QList<QAction*> actions;
    for (const QString& text : actionTexts) {
        auto* action = new QAction(text == QLatin1String("-") ? QString() : text, owner);
        action->setSeparator(text == QLatin1String("-"));
        actions << action;
    }
    return actions;
}

void TrecordingHost::projects(QStringList& list)
{
    calls << QStringLiteral("projects");
    list = projectList;
}

bool TrecordingHost::hasActiveProject()
{
    calls << QStringLiteral("hasActiveProject");
    return activeProject;
}

void TrecordingHost::currentProject(QString& project)
{
    calls << QStringLiteral("currentProject");
    project = current;
}

void TrecordingHost::recentProjectPath(QString& path)
{
    calls << QStringLiteral("recentProjectPath");
    path = recentPath;
}

void TrecordingHost::folderToReselect(QString& folder)
{
    calls << QStringLiteral("folderToReselect");
    folder = reselectFolder;
}

bool TrecordingHost::setCurrentProject(const QString& project)
{
    calls << QStringLiteral("setCurrentProject ") + project;
    if (acceptProject)
        current = project;
    return acceptProject;
}

TfreshHostState::TfreshHostState()
{
    TprefOptionVar::resetForTesting();
    TprefOptionVar::setPreferenceDirectory(m_dir.path());
    TcommandEngine::resetForTesting();
}

TfreshHostState::~TfreshHostState()
{
    TprefOptionVar::resetForTesting();
    TcommandEngine::resetForTesting();
}
