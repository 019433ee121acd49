#pragma once

#include <QByteArray>

namespace varnel {

/// Keeps the end of an output of any length: at most `limit` bytes, beginning at a whole UTF-8 character.
class BoundedTail
{
public:
    static constexpr qsizetype defaultLimit = qsizetype(1) << 20;

    /// @param limit in bytes, at least 1. Up to twice as much memory is used.
    explicit BoundedTail(qsizetype limit = defaultLimit);

    void append(QByteArrayView bytes);
    void clear();

    /// The last bytes that were appended, as they are; only what is cut off makes it begin elsewhere.
    QByteArray bytes() const;
    /// Whether more was appended than is kept.
    bool isCut() const noexcept;

private:
    qsizetype m_limit;
    QByteArray m_bytes;
    bool m_dropped = false; // bytes before m_bytes
};

} // namespace varnel
