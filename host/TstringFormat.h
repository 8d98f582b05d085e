#pragma once

#include "OrloHostExport.h"
#include "Tstring.h"

#include <QString>

#include <initializer_list>
#include <type_traits>

/// One argument of the host's placeholder formatting: a string or an integer.
class ORLOHOST_EXPORT TformatArg
{
public:
    TformatArg(const Tstring& text);
    TformatArg(const QString& text);
    TformatArg(const char* utf8);
    template<typename Integer,
             std::enable_if_t<std::is_integral_v<Integer> && !std::is_same_v<Integer, bool>, int> = 0>
    TformatArg(Integer value)
        : m_isInteger(true)
        , m_integer(static_cast<qint64>(value))
    {
    }

    bool isInteger() const { return m_isInteger; }
    /// The argument as text: a string as it is, an integer in decimal.
    QString toText() const;

private:
    bool m_isInteger = false;
    qint64 m_integer = 0;
    QString m_text;
};

/// Fills the host's placeholders in pattern: "^Ns" and "^Nd" stand for the N-th
/// argument (N from 1 to 9), "s" marking a string and "d" an integer. The letter is
/// the pattern author's intent only: either kind of argument is written as its text
/// (integers in decimal). A placeholder without a matching argument is left as it
/// stands, so a missing argument shows instead of vanishing; a caret that does not
/// start a placeholder is kept. "^^" writes a single caret.
///
///   TstringFormat("^1s (^2d)", {name, 3})  ->  "Scenes (3)"
ORLOHOST_EXPORT Tstring TstringFormat(const Tstring& pattern, std::initializer_list<TformatArg> args);
ORLOHOST_EXPORT QString TstringFormat(const QString& pattern, std::initializer_list<TformatArg> args);
ORLOHOST_EXPORT Tstring TstringFormat(const char* pattern, std::initializer_list<TformatArg> args);
