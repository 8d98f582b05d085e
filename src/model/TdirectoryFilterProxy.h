#pragma once

#include "Tclient.h"

#include <QPersistentModelIndex>
#include <QRegularExpression>
#include <QSortFilterProxyModel>
#include <QString>

#include <memory>

class Tmessage;
class Tstring;

// Stands between a TfileSystemModel and the views: hides what the browser never lists,
// narrows one folder to the typed search text, sorts in the browser's own way, and shows
// the model's override value in place of an item's icon.
//
// Hidden, in files and folders alike:
// - names starting with one or more dots and a word character (".velaSwatches", ".git");
// - names containing a listed extension: the host option variable
//   "contentBrowserFilterExtensions" is a regular-expression alternation ("icon",
//   "icon|bak"), default "icon", matched case-insensitively after any dot of the name, so
//   "a.icons" and "a.icon.bak" are hidden too; an empty value lists everything, an invalid
//   expression hides nothing;
// - names starting with two or more underscores and a word character ("__pycache__");
// - names ending in "_res.py" (case-sensitive).
// The proxy follows the option variable for its whole life: a new value filters again at
// once, except an empty one, which takes effect at the next filtering pass. Removing the
// variable, or giving it a value that is not a string, leaves the last filter in force. The
// subscription to the variable ends when the proxy is destroyed.
class TdirectoryFilterProxy : public QSortFilterProxyModel, public Tclient
{
    Q_OBJECT

public:
    explicit TdirectoryFilterProxy(QObject* parent = nullptr);
    ~TdirectoryFilterProxy() override;

    // Qt::DecorationRole: the source's Qt::UserRole value (a temporary icon) when it holds
    // one, else the source's decoration. Every other role is the source's.
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    void setSourceModel(QAbstractItemModel* sourceModel) override;
    // Drags carry the items' paths in the browser's drag format (TdragSupport), each row
    // once, in the order given.
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    // Nothing is ever dropped into a listing: a drop from elsewhere must not copy or move
    // files into the folder shown.
    bool canDropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                         const QModelIndex& parent) const override;
    bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                      const QModelIndex& parent) override;

Q_SIGNALS:
    // For the views' use; the proxy itself never emits it.
    void rootPathChanged(QString newPath);

public Q_SLOTS:
    // Lists only the direct children of baseFolder (a source index) whose name matches
    // "*text*" as a case-insensitive wildcard ("*", "?" and brackets keep their meaning);
    // every other folder stays unfiltered. An empty text lists the whole folder again.
    // Filters again at once. Any text is accepted: a bracket without its partner ("[bm"),
    // and a set that cannot be one (a reversed range "[z-a]"), stand for themselves.
    void filterFiles(const QModelIndex& baseFolder, const QString& text);

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;
    // Column 1 by size, column 3 by modification time, every other column (type too) by
    // locale-aware name. Folders are not put first; equal items are not less. Without a
    // QFileSystemModel source nothing is less than anything.
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;

private:
    void setExtensions(const Tstring& extensions, bool filterAgain);
    static void onOptionVarChanged(Tclient* client, const Tmessage& message);

    QString m_searchPattern;
    QPersistentModelIndex m_baseFolder;
    std::shared_ptr<QRegularExpression> m_extensionExpression;
    bool m_extensionValid = false;
    // Compiled from m_searchPattern whenever it changes, never per row.
    QRegularExpression m_searchExpression;
};
