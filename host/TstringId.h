#pragma once

#include "OrloHostExport.h"
#include "Tstring.h"
#include "TstringFormat.h"

#include <QByteArray>
#include <QString>

#include <initializer_list>

/// A resource-string id: names a text of the host's string table (TstringTable) by key.
///
/// Only the key is stored; the text is looked up on every read, so ids may be made
/// during static initialisation and still follow a later localisation of the table.
class ORLOHOST_EXPORT TstringId
{
public:
    explicit TstringId(const char* key);
    explicit TstringId(const QString& key);

    QString key() const;
    /// The current text of the key (the key itself when the table does not know it).
    Tstring asTstring() const;
    QString asQString() const;
    /// The text with its placeholders filled (see TstringFormat).
    Tstring format(std::initializer_list<TformatArg> args) const;

private:
    QByteArray m_key;
};
