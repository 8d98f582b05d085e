#pragma once

#include "OrloHostExport.h"

#include <QString>
#include <QStringList>

/// The host's resource-string table, in English. Every key the browser uses has a
/// text here; a host may replace texts to localise them.
///
/// Texts may carry host placeholders ("^1s", "^2d"; see TstringFormat). The table is
/// read and written on the GUI thread only.
class ORLOHOST_EXPORT TstringTable
{
public:
    /// The text of key; a key the table does not know comes back as the key itself,
    /// so a missing text shows up on screen instead of as a blank.
    static QString text(const QString& key);
    static bool contains(const QString& key);
    /// All keys, sorted.
    static QStringList keys();

    /// Replaces (or adds) the text of key.
    static void setText(const QString& key, const QString& text);
    /// Puts every built-in English text back and drops keys added with setText.
    static void restoreDefaults();

    TstringTable() = delete;
};
