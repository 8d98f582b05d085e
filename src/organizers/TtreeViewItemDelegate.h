#pragma once

#include <QHash>
#include <QItemDelegate>
#include <QPersistentModelIndex>
#include <QString>

class TassetBrowserOptions;
class TdirectoryFilterProxy;
class TfileSystemModel;
class TundecodableNamesProxy;

// Draws the System tree's folders, replacing a folder's icon with a named host image where
// the side panel set one (open while expanded, closed again when it is collapsed).
class TtreeViewItemDelegate : public QItemDelegate
{
    Q_OBJECT

public:
    // Draws the items of view, the tree's model over proxy over model.
    TtreeViewItemDelegate(const TassetBrowserOptions* options, TfileSystemModel* model, TdirectoryFilterProxy* proxy,
                          TundecodableNamesProxy* view, QObject* parent);

    // imageName replaces the icon of the folder at the absolute path; an empty name restores
    // the model's own icon.
    void setIconOverride(const QString& path, const QString& imageName);
    QString iconOverride(const QString& path) const { return m_overrides.value(path); }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;

protected:
    void drawDecoration(QPainter* painter, const QStyleOptionViewItem& option, const QRect& rect,
                        const QPixmap& pixmap) const override;

private:
    const TassetBrowserOptions* m_options;
    TfileSystemModel* m_model;
    TdirectoryFilterProxy* m_proxy;
    TundecodableNamesProxy* m_view;
    QHash<QString, QString> m_overrides;

    // drawDecoration is not told which item it draws; paint notes it here first. Shared by
    // every delegate: painting never interleaves on the one GUI thread.
    static QPersistentModelIndex s_paintedIndex;
};
