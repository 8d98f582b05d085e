#pragma once

#include "OrloHostExport.h"

#include <QHashFunctions>
#include <QString>

#include <cstddef>
#include <functional>
#include <string>

/// The host's string type. It holds Unicode text (UTF-16, as QString does) and is
/// cheap to copy (implicitly shared).
///
/// Narrow C strings are read as UTF-8 and wide C strings as UTF-32 (UTF-16 where
/// wchar_t is 16 bits wide). A null pointer gives an empty string.
class ORLOHOST_EXPORT Tstring
{
public:
    Tstring() = default;
    Tstring(const char* utf8);
    Tstring(const wchar_t* wide);
    explicit Tstring(const QString& text);
    explicit Tstring(const std::string& utf8);
    explicit Tstring(const std::wstring& wide);

    Tstring& operator+=(const Tstring& other);
    Tstring& operator+=(const char* utf8);

    bool isEmpty() const;
    /// Length in UTF-16 code units.
    int length() const;

    std::string asUtf8() const;
    std::wstring asWString() const;
    const QString& toQString() const { return m_text; }

    /// Ordering is by UTF-16 code units, as QString::compare without locale.
    int compare(const Tstring& other) const;

private:
    QString m_text;
};

ORLOHOST_EXPORT Tstring operator+(const Tstring& a, const Tstring& b);
ORLOHOST_EXPORT Tstring operator+(const Tstring& a, const char* b);
ORLOHOST_EXPORT Tstring operator+(const char* a, const Tstring& b);

ORLOHOST_EXPORT bool operator==(const Tstring& a, const Tstring& b);
ORLOHOST_EXPORT bool operator==(const Tstring& a, const char* b);
ORLOHOST_EXPORT bool operator==(const char* a, const Tstring& b);
ORLOHOST_EXPORT bool operator!=(const Tstring& a, const Tstring& b);
ORLOHOST_EXPORT bool operator!=(const Tstring& a, const char* b);
ORLOHOST_EXPORT bool operator!=(const char* a, const Tstring& b);
ORLOHOST_EXPORT bool operator<(const Tstring& a, const Tstring& b);

ORLOHOST_EXPORT size_t qHash(const Tstring& text, size_t seed = 0) noexcept;

/// Conversions between the host string and QString, in the host's own spelling.
ORLOHOST_EXPORT void Tstring_fromQString(const QString& from, Tstring& to);
ORLOHOST_EXPORT QString Tstring_toQString(const Tstring& from);

template<>
struct std::hash<Tstring>
{
    size_t operator()(const Tstring& text) const noexcept { return qHash(text); }
};
