#include "ui/DiffListModel.h"

namespace varnel {

QVariant DiffListModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const DiffLine& line = m_lines[static_cast<std::size_t>(index.row())];
    if (role == KindRole)
        return static_cast<int>(line.kind);
    return role == TextRole || role == Qt::DisplayRole ? QVariant(line.text) : QVariant();
}

void DiffListModel::setLines(std::vector<DiffLine> lines)
{
    if (lines == m_lines)
        return;
    beginResetModel();
    m_lines = std::move(lines);
    endResetModel();
}

} // namespace varnel
