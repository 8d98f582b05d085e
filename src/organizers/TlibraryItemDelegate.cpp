#include "TlibraryItemDelegate.h"

#include "TOrganizerItemModel.h"
#include "TbrowserStrings.h"
#include "TlibraryOrganizer.h"

#include "QvelaMessageBox.h"

#include <QDir>
#include <QFileInfo>
#include <QMetaProperty>
#include <QStandardItem>
#include <QStandardItemModel>

TlibraryItemDelegate::TlibraryItemDelegate(const QStringList& reservedNames, QObject* parent)
    : QItemDelegate(parent)
    , m_reservedNames(reservedNames)
{
}

TlibraryItemDelegate::~TlibraryItemDelegate() = default;

QStringList TlibraryItemDelegate::exampleFolderNames()
{
    return {
        QStringLiteral("Examples"),       QStringLiteral("MOTE Examples"),    QStringLiteral("Animation"),
        QStringLiteral("Characters"),     QStringLiteral("Dynamics"),         QStringLiteral("Lighting"),
        QStringLiteral("Materials"),      QStringLiteral("Modeling"),         QStringLiteral("Motion_Capture"),
        QStringLiteral("Rendering"),      QStringLiteral("Rigging"),          QStringLiteral("Scripts"),
        QStringLiteral("Sculpting_Stamps"), QStringLiteral("Stroke_Sketch"),  QStringLiteral("Textures"),
        QStringLiteral("Vehicles"),       QStringLiteral("Particles"),        QStringLiteral("Fluids"),
        QStringLiteral("Cloth"),          QStringLiteral("Crowds"),
    };
}

bool TlibraryItemDelegate::isReserved(const QString& name) const
{
    // The tree shows "_" as " ", so two spellings that look the same are the same name.
    const QString shown = TlibraryOrganizer::displayTextFor(name);
    for (const QString& reserved : m_reservedNames) {
        if (TlibraryOrganizer::displayTextFor(reserved).compare(shown, Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

bool TlibraryItemDelegate::isDuplicateContainer(const QAbstractItemModel* model, const QModelIndex& index,
                                                const QString& name)
{
    const auto* organizerModel = qobject_cast<const TOrganizerItemModel*>(model);
    if (!organizerModel)
        return false;
    // A folder whose files have not been looked at yet counts as a container: refusing is
    // undone by trying again a moment later, a wrong rename is not.
    const QList<QStandardItem*> found = organizerModel->findItemsByText(name);
    for (const QStandardItem* other : found) {
        if (other->index() != index && other->data(TOrganizerItemModel::ContentPathRole).toString().isEmpty())
            return true;
    }
    return false;
}

void TlibraryItemDelegate::refuse(QWidget* editor, const QString& text) const
{
    auto* box = new QvelaMessageBox(QMessageBox::Warning, kContentBrowserEditRefused.asQString(), text,
                                    QMessageBox::Ok, editor->window());
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

void TlibraryItemDelegate::setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const
{
    if (!editor || !model || !index.isValid())
        return;
    const QMetaProperty property = editor->metaObject()->userProperty();
    const QString name = property.isValid() ? property.read(editor).toString().trimmed() : QString();
    const QString currentName = index.data(Qt::DisplayRole).toString();
    if (name.isEmpty() || name == currentName)
        return;

    if (isReserved(name)) {
        refuse(editor, kContentBrowserEditRefusedMessageForbidden.asQString());
        return;
    }
    if (isDuplicateContainer(model, index, name)) {
        refuse(editor, kContentBrowserEditRefusedMessageDuplicate.asQString());
        return;
    }

    auto* standardModel = qobject_cast<QStandardItemModel*>(model);
    QStandardItem* item = standardModel ? standardModel->itemFromIndex(index) : nullptr;
    if (item && renameFolder(editor, item, name))
        Q_EMIT const_cast<TlibraryItemDelegate*>(this)->sendSignal(item->index());
}

bool TlibraryItemDelegate::renameFolder(QWidget* editor, QStandardItem* item, const QString& name) const
{
    const QString oldPath = item->data(TOrganizerItemModel::FolderPathRole).toString();
    const QFileInfo oldInfo(oldPath);
    const QString newPath = oldInfo.dir().filePath(name);
    if (name.contains(QLatin1Char('/')) || name.contains(QDir::separator())) {
        refuse(editor, QDir::toNativeSeparators(newPath));
        return false;
    }
    if (QFileInfo::exists(newPath)) {
        refuse(editor, kContentBrowserEditRefusedMessageDuplicate.asQString());
        return false;
    }
    if (!oldInfo.isDir()) {
        refuse(editor, QDir::toNativeSeparators(oldPath) + kContentBrowserDirectoryNotFoundWarning.asQString());
        return false;
    }
    if (!QDir().rename(oldPath, newPath)) {
        refuse(editor, QDir::toNativeSeparators(newPath));
        return false;
    }

    // The children carry paths under the old name: drop them and list the folder again
    // when it is next expanded.
    item->removeRows(0, item->rowCount());
    item->setText(TlibraryOrganizer::displayTextFor(newPath));
    if (auto* organizerModel = qobject_cast<TOrganizerItemModel*>(item->model()))
        organizerModel->setFolderRoles(item, newPath);
    return true;
}
