#pragma once

#include "engine/AppModel.h"
#include "ui/EngineObjects.h"

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>

#include <vector>

namespace varnel {

/// A model of the server as those who manage it see it.
struct ServerModelRow
{
    QString name;
    /// Parameters, size on disk, and what it is good at.
    QString detail;
    /// Where it is loaded, with the memory it takes; empty if it is not.
    QString loaded;
    bool isDefault = false;

    bool operator==(const ServerModelRow&) const = default;
};

/// The models that the server has on its disk, in the server's order.
class ServerModelList : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(int count READ count NOTIFY countChanged)
    Q_PROPERTY(QString summary READ summary NOTIFY countChanged)
    Q_PROPERTY(int defaultRow READ defaultRow NOTIFY countChanged)

public:
    enum Role { NameRole = Qt::UserRole, DetailRole, LoadedRole, DefaultRole };

    /// The model outlives the list.
    explicit ServerModelList(AppModel& app, QObject* parent = nullptr);
    static ServerModelList* create(QQmlEngine* engine, QJSEngine*)
    {
        return provided<ServerModelList>(engine);
    }

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    int count() const { return static_cast<int>(m_rows.size()); }
    /// How many there are and what they take on the server's disk.
    const QString& summary() const { return m_summary; }
    /// The row of the model of new conversations, -1 if the server does not have it.
    int defaultRow() const;

    // A row that is not there does nothing and has no name.

    /// The name of a row's model, cut to what a screen can show.
    Q_INVOKABLE QString nameAt(int row) const;
    /// The row of a name; -1 if there is none.
    Q_INVOKABLE int rowOf(const QString& name) const;
    Q_INVOKABLE void makeDefault(int row);
    Q_INVOKABLE void removeModel(int row);

Q_SIGNALS:
    void countChanged();

private:
    void refresh();

    AppModel& m_app;
    std::vector<ServerModelRow> m_rows;
    QString m_summary;
};

} // namespace varnel
