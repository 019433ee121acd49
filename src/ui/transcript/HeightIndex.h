#pragma once

#include <QtGlobal>

#include <vector>

namespace varnel {

/// The heights of a column of rows, with their sums kept ready: where a row begins and which row lies at a
/// place are found in O(log n), however many rows there are. Heights are whole numbers (device pixels), so
/// that sums are exact and a row drawn twice is drawn at the very same pixel.
class HeightIndex
{
public:
    int count() const { return static_cast<int>(m_heights.size()); }
    qint64 total() const { return m_total; }
    int height(int row) const { return m_heights[static_cast<std::size_t>(row)]; }

    void append(int height);
    /// Replaces a height and returns by how much it grew.
    int setHeight(int row, int height);
    /// Drops all rows from `count` on.
    void truncate(int count);
    void clear() { truncate(0); }

    /// The sum of the heights of all rows before `row`; `row` may be count().
    qint64 offsetOf(int row) const;
    /// The row that covers `offset`: the last one whose beginning is not below it among rows that have a
    /// height. Clamped to the first and last row; -1 if there are none.
    int rowAt(qint64 offset) const;

private:
    std::vector<int> m_heights;
    std::vector<qint64> m_sums; ///< a Fenwick tree over m_heights, m_sums[i] covers the rows below i + 1
    qint64 m_total = 0;
};

} // namespace varnel
