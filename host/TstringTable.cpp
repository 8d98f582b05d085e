#include "TstringTable.h"

#include <QHash>

namespace {

struct Entry
{
    const char* key;
    const char* text;
};

// kContentBrowserDirectoryNotFoundWarning is appended directly to the path the user
// typed, hence its leading blank. kContentBrowserRBMNewDir doubles as the base name
// of a new folder, which gets a number appended without a separator when taken.
const Entry englishTexts[] = {
    {"kContentBrowserChooseLocation", "Choose Location"},
    {"kContentBrowserConfirmDeleteFavorite", "Remove this favorite?"},
    {"kContentBrowserConfirmDeleteFavoriteFolder", "Remove this favorites folder and all the favorites in it?"},
    {"kContentBrowserConfirmDeleteIgnoreMsg", "Don't ask again"},
    {"kContentBrowserConfirmDeleteInfo", "Only the favorites are removed. The files and folders on disk are not affected."},
    {"kContentBrowserDirectoryNotFoundWarning", " does not exist."},
    {"kContentBrowserDirectoryNotGivenError", "The path you entered is a file. Showing the folder that contains it."},
    {"kContentBrowserEditRefused", "Cannot Rename"},
    {"kContentBrowserPathTooLongError",
     "^1s cannot be opened: the system allows at most ^2d bytes in a path and 255 in one name."},
    {"kContentBrowserEditRefusedMessageDuplicate", "An item with this name already exists. Choose a different name."},
    {"kContentBrowserEditRefusedMessageForbidden", "This name is reserved for the example content. Choose a different name."},
    {"kContentBrowserOpenFiles", "Open"},
    {"kContentBrowserRBMNewDir", "New Folder"},
    {"kContentBrowserRBMRenameItem", "Rename"},
    {"kContentBrowserSearchBarPlaceholderText", "Search"},
    {"rCancelAction", "Cancel"},
    {"rNimboImportOptionsTitle", "Import Options"},
    {"rNimboReferenceOptionsTitle", "Reference Options"},
    {"rContentBrowserContextMenuAddFavorites", "Add to Favorites"},
    {"rContentBrowserContextMenuImportVelaFile", "Import"},
    {"rContentBrowserContextMenuOpenNormalTexture", "Open as Texture"},
    {"rContentBrowserContextMenuOpenProjectedTexture", "Open as Projected Texture"},
    {"rContentBrowserContextMenuOpenStenciledTexture", "Open as Stencil"},
    {"rContentBrowserContextMenuReferenceVelaFile", "Create Reference"},
    {"rContentBrowserContextMenuRemoveFavorite", "Remove from Favorites"},
    {"rContentBrowserContextMenuSourceVsl", "Source Script"},
    {"rContentBrowserContextMenuUseStamp", "Use as Stamp"},
    {"rContentBrowserFilePathBar", "Path Bar"},
    {"rContentBrowserFilePreviewNoPreviewAvail", "No preview available"},
    {"rContentBrowserLibraryUserLibraryName", "User Library"},
    {"rContentBrowserMenuItemListView", "List View"},
    {"rContentBrowserMenuItemThumbnailView", "Thumbnail View"},
    {"rContentBrowserMenuTabFavorites", "Favorites"},
    {"rContentBrowserMenuTabLibrary", "Library"},
    {"rContentBrowserMenuTabMetadata", "Metadata"},
    {"rContentBrowserMenuTabPreview", "Preview"},
    {"rContentBrowserMenuTabProjects", "Projects"},
    {"rContentBrowserMenuTabSystem", "System"},
    {"rContentBrowserMenuViewItemSortAscending", "Ascending"},
    {"rContentBrowserMenuViewItemSortDateModified", "Date Modified"},
    {"rContentBrowserMenuViewItemSortDescending", "Descending"},
    {"rContentBrowserMenuViewItemSortName", "Name"},
    {"rContentBrowserMenuViewItemSortSize", "Size"},
    {"rContentBrowserMenuViewItemSortType", "Type"},
    {"rContentBrowserMetadataBitDepth", "^1d-bit"},
    {"rContentBrowserMetadataBitDepthFloat", "^1d-bit float"},
    {"rContentBrowserMetadataBitDepthHalf", "^1d-bit half"},
    {"rContentBrowserMetadataChannels", "Channels"},
    {"rContentBrowserMetadataChannelsValue", "^1s, ^2s"},
    {"rContentBrowserMetadataFileCreationDate", "Created"},
    {"rContentBrowserMetadataFileFramerate", "Frame Rate"},
    {"rContentBrowserMetadataFileLastModifiedDate", "Modified"},
    {"rContentBrowserMetadataFileName", "Name"},
    {"rContentBrowserMetadataFileSize", "Size"},
    {"rContentBrowserMetadataFileType", "Type"},
    {"rContentBrowserMetadataFileTypeTag", "File"},
    {"rContentBrowserMetadataLayers", "Layers"},
    {"rContentBrowserMetadataMipLevels", "Mip Levels"},
    {"rContentBrowserMetadataPages", "Pages"},
    {"rContentBrowserMetadataParts", "Parts"},
    {"rContentBrowserMetadataResolution", "Resolution"},
    {"rContentBrowserMetadataResolutionValue", "^1d x ^2d"},
    {"rContentBrowserOkButtonCaptionImport", "Import"},
    {"rContentBrowserOkButtonCaptionReference", "Reference"},
    {"rContentBrowserProjectsCurrentProject", "Current Project"},
    {"rContentBrowserProjectsWorkspaceRoot", "Project Root"},
    {"rContentBrowserTabFavorites", "Favorites"},
    {"rContentBrowserTabLibrary", "Library"},
    {"rContentBrowserTabMetadata", "Metadata"},
    {"rContentBrowserTabPreview", "Preview"},
    {"rContentBrowserTabProjects", "Projects"},
    {"rContentBrowserTabSystem", "System"},
    {"rDownloadFailed", "The download failed."},
    {"rFirstNewFavFolderPlaceholder", "New Folder"},
    {"rHttpCode", "HTTP status ^1d"},
    {"rHttpError", "HTTP error"},
    {"rHttpErrorMessageTitle", "Connection Error"},
    {"rHttpRequestTimeout", "The request timed out."},
    {"rHttpServerErrorGeneric", "The server could not complete the request."},
    {"rHttpServerListenError", "The local server could not listen for connections."},
    {"rHttpSuccessMessageTitle", "Download Complete"},
    {"rNewFavFolderPlaceholder", "New Folder ^1d"},
    {"rProjectWindow", "Project Window..."},
    {"rSaveCloseAction", "Save and Close"},
    {"rSetProject", "Set Project..."},
    {"rTooltipAddFavoritesfolder", "New favorites folder"},
    {"rTooltipAddFavoritespath", "Add a location to Favorites"},
    {"rTooltipAddfavorite", "Add the current folder to Favorites"},
    {"rTooltipCreatenewfolder", "New folder"},
    {"rTooltipGotoParentDirectory", "Go to the parent folder"},
    {"rTooltipHelp", "Help"},
    {"rTooltipListview", "List view"},
    {"rTooltipNavigationhistory", "Type a path, or pick a recent location"},
    {"rTooltipNextlocation", "Forward"},
    {"rTooltipPreferences", "Show or hide panels"},
    {"rTooltipPreviouslocation", "Back"},
    {"rTooltipRefreshcontents", "Refresh"},
    {"rTooltipScaler", "Thumbnail size"},
    {"rTooltipSortby", "Sort by"},
    {"rTooltipThumbnailview", "Thumbnail view"},

    // What the content views say when a search matches nothing, and the names the type
    // column gives the 3D formats that the desktop's file types name poorly or not at all.
    {"kContentBrowserSearchNoMatch", "No items match"},
    {"rContentBrowserFileKindObj", "Wavefront OBJ Model"},
    {"rContentBrowserFileKindFbx", "FBX Scene"},
    {"rContentBrowserFileKindAbc", "Alembic Cache"},
    {"rContentBrowserFileKindUsd", "USD Scene"},
    {"rContentBrowserFileKindUsda", "USD Scene (Text)"},
    {"rContentBrowserFileKindUsdc", "USD Scene (Binary)"},
    {"rContentBrowserFileKindUsdz", "USDZ Package"},
    {"rContentBrowserFileKindGltf", "glTF Scene"},
    {"rContentBrowserFileKindGlb", "glTF Binary Scene"},
    {"rContentBrowserFileKindBlend", "Blender Scene"},
    {"rContentBrowserFileKindVdb", "OpenVDB Volume"},
    {"rContentBrowserFileKindPly", "PLY Mesh"},
    {"rContentBrowserFileKindStl", "STL Mesh"},

    // The browser's notices about its favorites file.
    {"kContentBrowserFavoritesUnreadable",
     "Your favorites file ^1s could not be read, so Favorites start empty. Before favorites are saved again, the file "
     "is kept as ^2s."},
    {"kContentBrowserFavoritesNotSaved",
     "Favorites could not be saved to ^1s (^2s). The change was undone; your favorites are as they were."},
    {"kContentBrowserFavoritesNotKeptAside",
     "Favorites could not be saved: your earlier favorites file ^1s could not be kept as ^2s, so it was not "
     "replaced. The change was undone."},
    {"kContentBrowserFavoritesLocked", "another program keeps the file locked"},
    {"kContentBrowserFavoritesNotAFile",
     "^1s is not a regular file, so it was left alone. Favorites start empty and are kept for this session only."},

    // The browser's notices about the folder shown.
    {"kContentBrowserFolderGone", "The folder ^1s no longer exists. Showing ^2s instead."},
    {"kContentBrowserFileGone", "^1s no longer exists, so nothing was sent to the scene."},
    {"kContentBrowserFolderUnreadable", "This folder cannot be read: you do not have permission to list it."},
    {"kContentBrowserUndecodableName", "This name is not valid UTF-8. Rename it to open or import it."},
    {"kContentBrowserUndecodableNameOpen",
     "^1s cannot be opened: its name is not valid UTF-8. Rename it to open or import it."},

    // The status line under the content view: the items shown, then what is selected with
    // the size of its files. ^1s of the last two is one of the first two.
    {"kContentBrowserStatusItemCount", "^1d items"},
    {"kContentBrowserStatusOneItem", "1 item"},
    {"kContentBrowserStatusSelected", "^1s, ^2d selected"},
    {"kContentBrowserStatusSelectedSize", "^1s, ^2d selected (^3s)"},

    // The host's own messages.
    {"kOrloHostUnknownCommand", "Unknown command: ^1s"},
    {"kOrloHostEmptyCommand", "Empty command"},
    {"kOrloHostOptionVarsCorrupt",
     "Your settings file ^1s could not be read. It was kept as ^2s and settings start from their defaults."},
    {"kOrloHostOptionVarsNotMoved",
     "Your settings file ^1s could not be read or moved aside. Settings start from their defaults and will not be "
     "saved in this session, so the file stays as it is."},
    {"kOrloHostOptionVarsUnreadable",
     "Your settings file ^1s could not be opened. Settings start from their defaults and will not be saved in this "
     "session, so the file stays as it is."},
    {"kOrloHostOptionVarsWriteFailed", "Settings could not be saved to ^1s: ^2s"},
    {"kOrloHostOptionVarsNotAFile",
     "Your settings file ^1s is not a regular file, so it was left alone. Settings start from their defaults and "
     "will not be saved in this session."},
};

QHash<QString, QString> builtInTable()
{
    QHash<QString, QString> table;
    table.reserve(int(std::size(englishTexts)));
    for (const Entry& entry : englishTexts)
        table.insert(QString::fromLatin1(entry.key), QString::fromUtf8(entry.text));
    return table;
}

QHash<QString, QString>& table()
{
    static QHash<QString, QString> theTable = builtInTable();
    return theTable;
}

} // namespace

QString TstringTable::text(const QString& key)
{
    const QHash<QString, QString>& texts = table();
    const auto it = texts.constFind(key);
    return it == texts.constEnd() ? key : it.value();
}

bool TstringTable::contains(const QString& key)
{
    return table().contains(key);
}

QStringList TstringTable::keys()
{
    QStringList keys = table().keys();
    keys.sort();
    return keys;
}

void TstringTable::setText(const QString& key, const QString& text)
{
    table().insert(key, text);
}

void TstringTable::restoreDefaults()
{
    table() = builtInTable();
}
