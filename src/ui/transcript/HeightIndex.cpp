#include "ui/transcript/HeightIndex.h"

#include <bit>

namespace varnel {

void HeightIndex::append(int height)
{
    m_heights.push_back(height);
    const std::size_t position = m_heights.size();
    // The new node covers its own row and the nodes directly below it.
    qint64 sum = height;
    const std::size_t lowest = position & (~position + 1);
    for (std::size_t step = 1; step < lowest; step <<= 1)
        sum += m_sums[position - step - 1];
    m_sums.push_back(sum);
    m_total += height;
}

int HeightIndex::setHeight(int row, int height)
{
    int& held = m_heights[static_cast<std::size_t>(row)];
    const int growth = height - held;
    if (growth == 0)
        return 0;
    held = height;
    m_total += growth;
    for (std::size_t position = static_cast<std::size_t>(row) + 1; position <= m_sums.size();
         position += position & (~position + 1))
        m_sums[position - 1] += growth;
    return growth;
}

void HeightIndex::truncate(int count)
{
    if (count >= this->count())
        return;
    // A node covers only rows up to its own, so those that stay are still right.
    m_total = offsetOf(count);
    m_heights.resize(static_cast<std::size_t>(count));
    m_sums.resize(static_cast<std::size_t>(count));
}

qint64 HeightIndex::offsetOf(int row) const
{
    qint64 sum = 0;
    for (std::size_t position = static_cast<std::size_t>(row); position > 0; position &= position - 1)
        sum += m_sums[position - 1];
    return sum;
}

int HeightIndex::rowAt(qint64 offset) const
{
    if (m_heights.empty())
        return -1;
    if (offset < 0)
        return 0;
    std::size_t position = 0;
    for (std::size_t step = std::bit_floor(m_sums.size()); step > 0; step >>= 1) {
        const std::size_t next = position + step;
        if (next <= m_sums.size() && m_sums[next - 1] <= offset) {
            position = next;
            offset -= m_sums[next - 1];
        }
    }
    return static_cast<int>(std::min(position, m_heights.size() - 1));
}

} // namespace varnel
