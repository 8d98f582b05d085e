#pragma once

#include <QString>

class QStandardItem;

// Makes the folder items of a TOrganizerItemModel. The model only lists folders; what an
// item shows (text, icon, extra roles) and where it goes is decided by the organizer that
// owns the model, which is the model's parent QObject and implements this mixin.
class TOrganizerItemModelBuilder
{
public:
    virtual ~TOrganizerItemModelBuilder();

    // Creates the item for the folder at path (absolute), inserts it under parent and returns
    // it; returns null when it made none (a builder refuses paths it does not show).
    // displayName is empty when the model calls this while fetching; the builder then
    // derives the text from the path. The item carries the three organizer roles
    // (TOrganizerItemModel::ContentPathRole, FolderPathRole, FetchedRole = false).
    virtual QStandardItem* createFolderItem(const QString& path, QStandardItem* parent, const QString& displayName) = 0;
};
