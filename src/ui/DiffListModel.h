#pragma once

#include "ui/LineDiff.h"

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>

namespace varnel {

/// The lines of a comparison.
class DiffListModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("the preview has one")

public:
    enum Role { KindRole = Qt::UserRole, TextRole };
    /// As DiffLine::Kind.
    enum class Kind { Same, Removed, Added, Left };
    Q_ENUM(Kind)

    using QAbstractListModel::QAbstractListModel;

    int rowCount(const QModelIndex& parent = {}) const override
    {
        return parent.isValid() ? 0 : static_cast<int>(m_lines.size());
    }
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override { return {{KindRole, "kind"}, {TextRole, "line"}}; }

    void setLines(std::vector<DiffLine> lines);

private:
    std::vector<DiffLine> m_lines;
};

} // namespace varnel
