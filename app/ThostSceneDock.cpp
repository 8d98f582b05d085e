#include "ThostSceneDock.h"

#include "ThostScene.h"

#include <QDir>
#include <QFileInfo>
#include <QHeaderView>
#include <QTreeWidget>

ThostSceneDock::ThostSceneDock(QWidget* parent)
    : QDockWidget(tr("Scene"), parent)
    , m_list(new QTreeWidget(this))
{
    setObjectName(QStringLiteral("sceneList"));
    m_list->setObjectName(QStringLiteral("sceneListView"));
    m_list->setHeaderLabels({tr("Node"), tr("How"), tr("File")});
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->header()->setStretchLastSection(true);
    setWidget(m_list);
    connect(ThostScene::instance(), &ThostScene::changed, this, &ThostSceneDock::refill);
    refill();
}

void ThostSceneDock::refill()
{
    m_list->clear();
    for (const ThostScene::Entry& entry : ThostScene::instance()->entries()) {
        auto* item = new QTreeWidgetItem(m_list);
        item->setText(0, entry.detail);
        item->setText(1, ThostScene::howText(entry.how));
        item->setText(2, QDir::toNativeSeparators(entry.path));
        item->setToolTip(2, item->text(2));
    }
    if (m_list->topLevelItemCount() > 0)
        m_list->scrollToItem(m_list->topLevelItem(m_list->topLevelItemCount() - 1));
    for (int column = 0; column < 2; ++column)
        m_list->resizeColumnToContents(column);
}
