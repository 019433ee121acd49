#include "ui/ProviderModelList.h"

#include "store/Preferences.h"

namespace varnel {

ProviderModelList::ProviderModelList(AppModel& app, QObject* parent)
    : QAbstractListModel(parent)
    , m_app(app)
{
    for (const RemoteProvider provider : allRemoteProviders()) {
        for (const QString& model : suggestedModels(provider))
            m_rows.push_back({provider, model});
    }
    connect(&app, &AppModel::disabledProviderModelsChanged, this,
            [this] { Q_EMIT dataChanged(index(0), index(rowCount() - 1)); });
}

int ProviderModelList::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

QVariant ProviderModelList::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const auto place = static_cast<std::size_t>(index.row());
    const Row& row = m_rows[place];
    switch (role) {
    case ProviderRole:
        return displayName(row.provider);
    case Qt::DisplayRole:
    case NameRole:
        return row.model;
    case ShownRole:
        return !m_app.disabledProviderModels().contains(providerModelEntry(row.provider, row.model));
    case FirstRole:
        return place == 0 || m_rows[place - 1].provider != row.provider;
    default:
        return {};
    }
}

QHash<int, QByteArray> ProviderModelList::roleNames() const
{
    return {{ProviderRole, "provider"}, {NameRole, "name"}, {ShownRole, "shown"}, {FirstRole, "first"}};
}

void ProviderModelList::setShown(int row, bool shown)
{
    if (row < 0 || row >= rowCount())
        return;
    const Row& chosen = m_rows[static_cast<std::size_t>(row)];
    std::set<QString> entries = m_app.disabledProviderModels();
    const QString entry = providerModelEntry(chosen.provider, chosen.model);
    if (shown)
        entries.erase(entry);
    else
        entries.insert(entry);
    m_app.setDisabledProviderModels(entries);
}

} // namespace varnel
