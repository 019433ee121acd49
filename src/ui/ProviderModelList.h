#pragma once

#include "engine/AppModel.h"
#include "ui/EngineObjects.h"

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>

#include <vector>

namespace varnel {

/// The suggested models of the providers, each of which the menus may leave out.
class ProviderModelList : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    enum Role { ProviderRole = Qt::UserRole, NameRole, ShownRole, FirstRole };

    /// The model outlives the list.
    explicit ProviderModelList(AppModel& app, QObject* parent = nullptr);
    static ProviderModelList* create(QQmlEngine* engine, QJSEngine*)
    {
        return provided<ProviderModelList>(engine);
    }

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    /// Whether the menus offer the model of a row; a row that is not there does nothing.
    Q_INVOKABLE void setShown(int row, bool shown);

private:
    struct Row
    {
        RemoteProvider provider;
        QString model;
    };

    AppModel& m_app;
    std::vector<Row> m_rows;
};

} // namespace varnel
