#pragma once

#include "OrloHostExport.h"
#include "Tclient.h"
#include "Tint32Array.h"
#include "Tstring.h"
#include "TstringArray.h"

#include <QString>
#include <QStringList>

/// The host's option variables: named, typed, persistent settings, each kept under a
/// category. A variable holds one of an integer, an integer array, a string or a
/// string array; writing a value of another type replaces the variable.
///
/// Persistence: once the host has set a preference directory, changes are written to
/// optionVars.json in it. All changes made within one pass of the event loop are written
/// once, on a writer thread, so the GUI thread never waits for the disk. Each write locks
/// the file (a QLockFile beside it), reads it again, applies only this process's changes,
/// and replaces it through a flushed and synced temporary file, so two hosts sharing a
/// preference directory lose nothing of each other's, and a crash or kill leaves either the
/// old or the new file, never half of one. A failed write keeps the values in memory, is
/// tried again with the next change, and is reported once through the error display.
/// Changes that another process writes to the file are loaded (listeners are called for
/// them), except where this process has changed the variable since. Without a preference
/// directory nothing is written.
///
/// Listeners: a client added for a key is called after every set and every removal of
/// that variable (also when a set writes the value it already had). Its message is
/// named after the key, with the detail "changed" or "removed".
///
/// Keys are case-sensitive; the empty key is never a variable. GUI thread only (the writer
/// thread is the store's own).
class ORLOHOST_EXPORT TprefOptionVar
{
public:
    enum class Type { None, Int, IntArray, String, StringArray };

    static bool optionVarExists(const Tstring& key);
    static Type type(const Tstring& key);
    /// Keys of all variables, sorted.
    static QStringList keys();

    /// Each reader fills value and returns true only when the variable exists and holds
    /// that type; otherwise value is left as it was and the result is false.
    static bool getOptionVarValue(const Tstring& key, Tint32Array& value);
    static bool getOptionVarValue(const Tstring& key, TstringArray& value);
    static bool getOptionVarValue(const Tstring& key, Tstring& value);
    static bool getOptionVarValue(const Tstring& key, int& value);
    /// The variable's integer, or defaultValue when it is missing or not an integer.
    static int intValue(const Tstring& key, int defaultValue);

    /// Writes the variable under category. Returns false, changing nothing, for the
    /// empty key.
    static bool setOptionVarValue(const Tstring& key, int value, const Tstring& category);
    static bool setOptionVarValue(const Tstring& key, const Tint32Array& value, const Tstring& category);
    static bool setOptionVarValue(const Tstring& key, const TstringArray& value, const Tstring& category);
    static bool setOptionVarValue(const Tstring& key, const Tstring& value, const Tstring& category);
    /// Writes the variable without naming a category: an existing variable keeps its
    /// category, a new one has none.
    static bool setOptionVarValue(const Tstring& key, int value);
    static bool setOptionVarValue(const Tstring& key, const Tint32Array& value);
    static bool setOptionVarValue(const Tstring& key, const TstringArray& value);
    static bool setOptionVarValue(const Tstring& key, const Tstring& value);

    /// Deletes the variable. Returns false (and calls no listener) when it did not exist.
    static bool removeOptionVar(const Tstring& key);
    /// The variable's category; empty when it has none or does not exist.
    static Tstring category(const Tstring& key);

    /// Subscribes client to changes of key (the variable need not exist yet). See
    /// TclientServer::addClient for the tag and the result.
    static bool addClient(const Tstring& key, Tclient* client, const char* metaclass, TclientCallback callback);
    /// Removes the client's subscriptions to key with that tag (all its subscriptions to
    /// key when metaclass is null). Returns how many were removed.
    static int removeClient(const Tstring& key, Tclient* client, const char* metaclass);
    /// Number of subscriptions to key.
    static int clientCount(const Tstring& key);

    /// Host side: makes dir the preference directory and replaces the whole store with
    /// what its optionVars.json holds (an empty store when there is no such file).
    /// Listeners are not called for the replaced values.
    ///
    /// Something other than a regular file at that path (a FIFO, a folder) is never opened:
    /// the user is told, it is left alone, and the store starts empty and is not written.
    /// A file that cannot be parsed, or is not shaped as this store writes it, is
    /// renamed to "optionVars.json.corrupt-<yyyyMMdd-hhmmss>" (with "-2", "-3", ...
    /// added if that name is taken), the store starts empty, and the user is told once
    /// through TcommandEngine::displayError. When the file cannot be read or moved aside,
    /// the user is told likewise and nothing is written to dir for the rest of the
    /// session, so that the file is never overwritten unseen. Set the host's error
    /// display before calling this, or the notice is only recorded.
    ///
    /// An empty dir empties the store and stops persistence.
    static void setPreferenceDirectory(const QString& dir);
    static QString preferenceDirectory();
    /// The file the store is written to; empty without a preference directory.
    static QString storeFilePath();

    /// Host side: waits until every change made so far is in the file (or its failure has been
    /// reported), and applies what other processes wrote. Changing the preference directory,
    /// and quitting the application, do this first.
    static void flush();

    /// Forgets every variable and subscription and the preference directory.
    static void resetForTesting();

    TprefOptionVar() = delete;
};
