#include "ui/ModelListModel.h"

#include <QLocale>

#include <algorithm>

namespace varnel {

namespace {

QString detailOf(const OllamaModel& model)
{
    QStringList parts;
    if (model.parameterSize && !model.parameterSize->isEmpty())
        parts.append(*model.parameterSize);
    if (model.size)
        parts.append(QLocale().formattedDataSize(*model.size, 1, QLocale::DataSizeSIFormat));
    return parts.join(QStringLiteral(" · "));
}

} // namespace

ModelListModel::ModelListModel(AppModel& app, QObject* parent)
    : QAbstractListModel(parent)
    , m_app(app)
{
    connect(&app, &AppModel::installedModelsChanged, this, &ModelListModel::refresh);
    connect(&app, &AppModel::runningModelsChanged, this, &ModelListModel::refresh);
    connect(&app, &AppModel::selectedSessionChanged, this, &ModelListModel::refresh);
    refresh();
}

int ModelListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant ModelListModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const ModelRow& row = m_rows[static_cast<std::size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
    case NameRole: {
        // A name is what a server says it is.
        constexpr qsizetype longest = 200;
        return row.name.left(longest);
    }
    case GroupRole:
        return row.group;
    case DetailRole:
        return row.detail;
    case CurrentRole:
        return row.current;
    default:
        return {};
    }
}

QHash<int, QByteArray> ModelListModel::roleNames() const
{
    return {{NameRole, "name"}, {GroupRole, "group"}, {DetailRole, "detail"}, {CurrentRole, "current"}};
}

void ModelListModel::setFilter(const QString& filter)
{
    if (filter == m_filter)
        return;
    m_filter = filter;
    Q_EMIT filterChanged();
    refresh();
}

int ModelListModel::currentRow() const
{
    const auto found =
        std::find_if(m_rows.begin(), m_rows.end(), [](const ModelRow& row) { return row.current; });
    return found == m_rows.end() ? -1 : static_cast<int>(found - m_rows.begin());
}

void ModelListModel::choose(int row)
{
    if (row < 0 || row >= count())
        return;
    m_app.chooseModel(QString(m_rows[static_cast<std::size_t>(row)].name));
    Q_EMIT chosen();
}

void ModelListModel::refresh()
{
    const QString wanted = m_filter.trimmed();
    const QString current = m_app.selectedModel();
    const auto isLoaded = [this](const OllamaModel& model) {
        const auto& running = m_app.runningModels();
        return std::any_of(running.begin(), running.end(),
                           [&model](const OllamaRunning& loaded) { return loaded.name == model.name; });
    };
    std::vector<ModelRow> rows;
    for (const bool loaded : {true, false}) {
        for (const OllamaModel& model : m_app.installedModels()) {
            if (isLoaded(model) == loaded && model.name.contains(wanted, Qt::CaseInsensitive))
                rows.push_back({.name = model.name,
                                .group = loaded ? tr("Loaded") : tr("Installed"),
                                .detail = detailOf(model),
                                .current = model.name == current});
        }
    }
    if (rows != m_rows) {
        beginResetModel();
        m_rows = std::move(rows);
        endResetModel();
    }
    Q_EMIT countChanged();
    Q_EMIT currentRowChanged();
}

} // namespace varnel
