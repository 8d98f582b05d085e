#pragma once

#include "OrloHostExport.h"
#include "Tstring.h"
#include "TstringArray.h"

#include <QString>
#include <QStringList>

/// The value a script command gives back: nothing, an integer, a string or a string
/// array. Each reader converts from whatever the command set:
///
/// | set as       | asString()                     | asStringArray()        | asInt()                         |
/// |--------------|--------------------------------|------------------------|---------------------------------|
/// | nothing      | ""                             | empty                  | 0                               |
/// | integer      | decimal                        | { decimal }            | the integer                     |
/// | string       | the string                     | { the string }         | the string read as a decimal, else 0 |
/// | string array | elements joined by one blank   | the array              | the first element read as asInt reads a string |
class ORLOHOST_EXPORT TvslCmdResult
{
public:
    enum class Type { Empty, Int, String, StringArray };

    TvslCmdResult() = default;

    void setInt(int value);
    void setString(const Tstring& value);
    void setString(const QString& value);
    void setStringArray(const TstringArray& value);
    void setStringArray(const QStringList& value);
    void clear();

    Type type() const { return m_type; }
    bool isEmpty() const { return m_type == Type::Empty; }

    Tstring asString() const;
    QString asQString() const;
    TstringArray asStringArray() const;
    QStringList asQStringList() const;
    /// ok, when given, tells whether the value was an integer or read as one.
    int asInt(bool* ok = nullptr) const;

private:
    Type m_type = Type::Empty;
    int m_int = 0;
    QStringList m_strings;
};
