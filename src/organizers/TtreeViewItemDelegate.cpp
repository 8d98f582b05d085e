#include "TtreeViewItemDelegate.h"

#include "TdirectoryFilterProxy.h"
#include "TfileSystemModel.h"
#include "TuiScale.h"
#include "TundecodableNamesProxy.h"

#include <QPainter>
#include <QStyle>

QPersistentModelIndex TtreeViewItemDelegate::s_paintedIndex;

TtreeViewItemDelegate::TtreeViewItemDelegate(const TassetBrowserOptions* options, TfileSystemModel* model,
                                             TdirectoryFilterProxy* proxy, TundecodableNamesProxy* view,
                                             QObject* parent)
    : QItemDelegate(parent)
    , m_options(options)
    , m_model(model)
    , m_proxy(proxy)
    , m_view(view)
{
}

void TtreeViewItemDelegate::setIconOverride(const QString& path, const QString& imageName)
{
    if (imageName.isEmpty())
        m_overrides.remove(path);
    else
        m_overrides.insert(path, imageName);
}

void TtreeViewItemDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                  const QModelIndex& index) const
{
    s_paintedIndex = index;
    QItemDelegate::paint(painter, option, index);
}

void TtreeViewItemDelegate::drawDecoration(QPainter* painter, const QStyleOptionViewItem& option, const QRect& rect,
                                           const QPixmap& pixmap) const
{
    QString path;
    // A row of an undecodable name maps to nothing and keeps its own (greyed) icon.
    QModelIndex filtered;
    if (s_paintedIndex.isValid() && s_paintedIndex.model() == m_view)
        filtered = m_view->mapToSource(s_paintedIndex);
    else if (s_paintedIndex.isValid() && s_paintedIndex.model() == m_proxy)
        filtered = s_paintedIndex;
    if (filtered.isValid())
        path = m_model->filePath(m_proxy->mapToSource(filtered));
    const auto it = m_overrides.constFind(path);
    if (path.isEmpty() || it == m_overrides.constEnd() || pixmap.isNull()) {
        QItemDelegate::drawDecoration(painter, option, rect, pixmap);
        return;
    }
    QPixmap image = TuiScale::pixmap(m_options, *it);
    if (image.isNull()) {
        QItemDelegate::drawDecoration(painter, option, rect, pixmap);
        return;
    }
    image = image.scaled(pixmap.size(), Qt::IgnoreAspectRatio, Qt::FastTransformation);
    const QRect target = QStyle::alignedRect(option.direction, option.decorationAlignment, image.size(), rect);
    if (option.state & QStyle::State_Selected)
        image = selectedPixmap(image, option.palette, option.state & QStyle::State_Enabled);
    painter->drawPixmap(target.topLeft(), image);
}
