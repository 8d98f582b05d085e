#pragma once

#include <QList>

/// The growable array behind the host's typed arrays (TstringArray, Tint32Array).
/// Header-only so that each module instantiates it for itself; the typed arrays
/// are the host's public names for it.
template<typename T>
class Tarray
{
public:
    /// The hint only reserves room; the array starts empty.
    explicit Tarray(int capacityHint = 8) { m_items.reserve(capacityHint > 0 ? capacityHint : 0); }

    void addLast(const T& value) { m_items.append(value); }

    /// Inserts before position index; index == length() appends. An index outside
    /// 0..length() is ignored and returns false.
    bool insert(int index, const T& value)
    {
        if (index < 0 || index > length())
            return false;
        m_items.insert(index, value);
        return true;
    }

    /// Removes the element at index; an index out of range is ignored and returns false.
    bool remove(int index)
    {
        if (index < 0 || index >= length())
            return false;
        m_items.removeAt(index);
        return true;
    }

    /// Index of the first element equal to value, or -1.
    int find(const T& value) const { return int(m_items.indexOf(value)); }

    /// Indexing outside 0..length()-1 is a programming error (asserted in debug builds).
    T& operator[](int index) { return m_items[index]; }
    const T& operator[](int index) const { return m_items[index]; }

    int length() const { return int(m_items.size()); }
    bool isEmpty() const { return m_items.isEmpty(); }
    void clear() { m_items.clear(); }

    const QList<T>& items() const { return m_items; }

    friend bool operator==(const Tarray& a, const Tarray& b) { return a.m_items == b.m_items; }
    friend bool operator!=(const Tarray& a, const Tarray& b) { return a.m_items != b.m_items; }

private:
    QList<T> m_items;
};
