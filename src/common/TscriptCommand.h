#pragma once

#include <QString>

// The browser's script commands that carry a file, and the one way they are run.
//
// A path or file argument always goes into a command as a string literal of the host's
// script language: a backslash and a double quote are each preceded by a backslash, a line
// break ('\n') is written as the two characters \n, and every other character stands as it
// is. An ordinary path thus reads exactly as typed, and no file name can close the string
// and append script of its own.
class TscriptCommand
{
public:
    // text as it stands between the double quotes of a string literal (without the quotes).
    static QString literal(const QString& text);

    // performFileSilentImportAction( "PATH")
    static QString fileImport(const QString& path);
    // performFileReferenceAction( "PATH")
    static QString fileReference(const QString& path);

    // Hands command to the host as a one-shot idle script action (echoed, undoable): it runs
    // from the event loop once the caller has returned, then deletes itself.
    static void runDeferred(const QString& command);
};
