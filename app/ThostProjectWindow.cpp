#include "ThostProjectWindow.h"

#include "ThostDpiScaling.h"
#include "ThostProjects.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

ThostProjectWindow::ThostProjectWindow(QWidget* parent)
    : QDialog(parent)
    , m_name(new QLabel(this))
    , m_root(new QLabel(this))
    , m_rules(new QTreeWidget(this))
{
    setObjectName(QStringLiteral("ProjectWindow"));
    setWindowTitle(tr("Project Window"));
    setAttribute(Qt::WA_DeleteOnClose);
    m_root->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_rules->setHeaderLabels({tr("File rule"), tr("Folder"), tr("Exists")});
    m_rules->setRootIsDecorated(false);

    auto* form = new QFormLayout;
    form->addRow(tr("Project:"), m_name);
    form->addRow(tr("Root:"), m_root);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(m_rules);
    layout->addWidget(buttons);
    resize(ThostDpiScaling().scaledSize(QSize(560, 320)));

    connect(ThostProjects::instance(), &ThostProjects::currentChanged, this, &ThostProjectWindow::refill);
    refill();
}

ThostProjectWindow* ThostProjectWindow::showWindow(QWidget* parent)
{
    static QPointer<ThostProjectWindow> window;
    if (!window)
        window = new ThostProjectWindow(parent);
    window->show();
    window->raise();
    window->activateWindow();
    return window;
}

void ThostProjectWindow::refill()
{
    m_rules->clear();
    const ThostProjects::Project* project = ThostProjects::instance()->current();
    m_name->setText(project ? project->name : tr("(no project)"));
    m_root->setText(project ? QDir::toNativeSeparators(project->root) : QString());
    if (!project)
        return;
    for (const QString& rule : project->fileRules) {
        const QString folder = ThostProjects::resolveRule(project->root, rule);
        auto* item = new QTreeWidgetItem(m_rules);
        item->setText(0, rule);
        item->setText(1, QDir::toNativeSeparators(folder));
        item->setText(2, QFileInfo(folder).isDir() ? tr("yes") : tr("no"));
    }
    m_rules->resizeColumnToContents(0);
}
