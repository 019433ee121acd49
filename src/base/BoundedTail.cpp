#include "base/BoundedTail.h"

#include <algorithm>

namespace varnel {

BoundedTail::BoundedTail(qsizetype limit)
    : m_limit(limit)
{}

void BoundedTail::append(QByteArrayView bytes)
{
    if (bytes.size() >= m_limit) {
        m_dropped = m_dropped || !m_bytes.isEmpty() || bytes.size() > m_limit;
        m_bytes = bytes.last(m_limit).toByteArray();
        return;
    }
    // Moved to the front only when a whole limit is behind, so that each byte is moved once at most.
    if (m_bytes.size() + bytes.size() > 2 * m_limit) {
        m_bytes.remove(0, m_bytes.size() - m_limit);
        m_dropped = true;
    }
    m_bytes.append(bytes);
}

void BoundedTail::clear()
{
    m_bytes.clear();
    m_dropped = false;
}

QByteArray BoundedTail::bytes() const
{
    if (!isCut())
        return m_bytes;
    const QByteArrayView tail = QByteArrayView(m_bytes).last(std::min(m_limit, m_bytes.size()));
    // The rest of a character that was cut: three bytes at most, more is no UTF-8 and left alone.
    qsizetype start = 0;
    while (start < 3 && start < tail.size() && (static_cast<unsigned char>(tail[start]) & 0xC0U) == 0x80U)
        ++start;
    return tail.sliced(start).toByteArray();
}

bool BoundedTail::isCut() const noexcept
{
    return m_dropped || m_bytes.size() > m_limit;
}

} // namespace varnel
