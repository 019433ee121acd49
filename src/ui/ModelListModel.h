#pragma once

#include "base/Task.h"
#include "engine/AppModel.h"
#include "providers/RemoteProvider.h"
#include "ui/EngineObjects.h"

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>

#include <optional>
#include <vector>

namespace varnel {

/// A model as the picker shows it.
struct ModelRow
{
    QString name;
    /// Nothing for a model of the Ollama server.
    std::optional<RemoteProvider> provider;
    /// The heading that it stands under.
    QString group;
    /// Parameters and size on disk, as far as the server tells.
    QString detail;
    bool current = false;
    /// It can be sent pictures, as far as its name tells.
    bool readsImages = false;

    bool operator==(const ModelRow&) const = default;
};

/// The models that can answer: those that the server holds in memory, then the others that it has, then those
/// of the providers that have a key, only those whose name holds the filter.
class ModelListModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(QString filter READ filter WRITE setFilter NOTIFY filterChanged)
    Q_PROPERTY(int count READ count NOTIFY countChanged)
    Q_PROPERTY(int installed READ installed NOTIFY countChanged)
    Q_PROPERTY(int currentRow READ currentRow NOTIFY currentRowChanged)

public:
    enum Role { NameRole = Qt::UserRole, GroupRole, DetailRole, CurrentRole, VisionRole, CloudRole };

    /// The model outlives the list.
    explicit ModelListModel(AppModel& app, QObject* parent = nullptr);
    static ModelListModel* create(QQmlEngine* engine, QJSEngine*) { return provided<ModelListModel>(engine); }

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    const QString& filter() const { return m_filter; }
    void setFilter(const QString& filter);
    int count() const { return static_cast<int>(m_rows.size()); }
    /// How many there are without the filter.
    int installed() const { return static_cast<int>(m_app.installedModels().size()); }
    /// The row of the model that answers the selected conversation, -1 if it is not listed.
    int currentRow() const;
    /// What tells a row's model from all others, and the row of that model now; empty and -1 for none.
    Q_INVOKABLE QString keyAt(int row) const;
    Q_INVOKABLE int rowOfKey(const QString& key) const;
    /// Has the model of a row answer the selected conversation; a row that is not there does nothing.
    Q_INVOKABLE void choose(int row);
    /// Looks again which models are in memory and which providers have a key.
    Q_INVOKABLE void look();

Q_SIGNALS:
    void filterChanged();
    void countChanged();
    void currentRowChanged();
    void chosen();

private:
    void refresh();
    void addInstalled(std::vector<ModelRow>& rows, const QString& wanted) const;
    void addClouds(std::vector<ModelRow>& rows, const QString& wanted) const;
    Task<void> followCredentials();

    AppModel& m_app;
    QString m_filter;
    std::vector<ModelRow> m_rows;
    std::vector<RemoteProvider> m_available; // with a key
    Task<void> m_looking;
};

} // namespace varnel
