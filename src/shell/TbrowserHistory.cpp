#include "TbrowserHistory.h"

#include <algorithm>

TbrowserHistory::TbrowserHistory() = default;

bool TbrowserHistory::isAtEnd() const
{
    return m_paths.isEmpty() || m_position == size() - 1;
}

void TbrowserHistory::stepBack()
{
    if (m_position > 0)
        --m_position;
}

void TbrowserHistory::stepForward()
{
    if (m_position < size() - 1)
        ++m_position;
}

void TbrowserHistory::truncateAfterCurrent()
{
    while (size() > m_position + 1)
        m_paths.removeLast();
}

void TbrowserHistory::append(const QString& path)
{
    m_paths.append(path);
}

void TbrowserHistory::clear()
{
    m_paths.clear();
    m_position = 0;
}

void TbrowserHistory::setPosition(int i)
{
    m_position = m_paths.isEmpty() ? 0 : std::clamp(i, 0, size() - 1);
}

QString TbrowserHistory::current() const
{
    return m_paths.isEmpty() ? QString() : m_paths.at(m_position);
}

void TbrowserHistory::add(const QString& path)
{
    // Deliberately the newest entry, not the current one: revisiting the far end after
    // stepping back keeps the forward entries.
    if (!m_paths.isEmpty() && m_paths.constLast() == path)
        return;
    if (!isAtEnd())
        truncateAfterCurrent();
    append(path);
    // On the very first entry the position is already 0 and stays there.
    stepForward();
}

std::optional<QString> TbrowserHistory::back()
{
    stepBack();
    if (m_paths.isEmpty())
        return std::nullopt;
    return m_paths.at(m_position);
}

std::optional<QString> TbrowserHistory::forward()
{
    stepForward();
    if (m_paths.isEmpty())
        return std::nullopt;
    return m_paths.at(m_position);
}
