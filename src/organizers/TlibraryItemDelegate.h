#pragma once

#include <QItemDelegate>
#include <QStringList>

class QStandardItem;

// Edits the names of library folders. A new name is refused, with a warning box and no
// change, when it is one of the reserved example names (any letter case) or when another
// item of the tree that is a mere container (no files of its own) already carries it.
// A name that passes is given to the folder on disk and to its item.
//
// The warning box is window-modal but does not block (QDialog::open): setModelData runs
// while the view commits and closes the editor, and a nested event loop there would let the
// editor lose its focus and commit again, or be deleted, before the view is done with it.
class TlibraryItemDelegate : public QItemDelegate
{
    Q_OBJECT

public:
    explicit TlibraryItemDelegate(const QStringList& reservedNames, QObject* parent = nullptr);
    ~TlibraryItemDelegate() override;

    // The folder names of the host's example content: one per kind of example and the two
    // examples folders themselves. Users may not give these names to their own folders.
    static QStringList exampleFolderNames();

    const QStringList& reservedNames() const { return m_reservedNames; }

    // Runs the refusals, then renames the folder on disk and updates the item (text, path
    // roles, children listed again on the next expansion) and emits sendSignal. An empty or
    // unchanged name changes nothing. A rename the file system refuses shows a warning box.
    void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override;

Q_SIGNALS:
    // A folder was renamed; index is its item, which now carries the new path.
    void sendSignal(const QModelIndex& index);

private:
    bool isReserved(const QString& name) const;
    static bool isDuplicateContainer(const QAbstractItemModel* model, const QModelIndex& index, const QString& name);
    bool renameFolder(QWidget* editor, QStandardItem* item, const QString& name) const;
    void refuse(QWidget* editor, const QString& text) const;

    QStringList m_reservedNames;
};
