#include "ui/ServerModelList.h"

#include "store/ModelRoles.h"

#include <QLocale>

#include <algorithm>

namespace varnel {

namespace {

// What a server says has no length that one could rely on.
constexpr qsizetype longestName = 200;
constexpr std::size_t mostRows = 2000;

QString bytes(qint64 count)
{
    return QLocale().formattedDataSize(count, 1, QLocale::DataSizeSIFormat);
}

QString detailOf(const OllamaModel& model)
{
    QStringList parts;
    if (model.parameterSize && !model.parameterSize->isEmpty())
        parts.append(model.parameterSize->left(longestName));
    if (model.size)
        parts.append(bytes(*model.size));
    if (isCodingModel(model.name))
        parts.append(ServerModelList::tr("Coding"));
    if (isReasoningModel(model.name))
        parts.append(ServerModelList::tr("Reasoning"));
    if (isVisionModel(model.name))
        parts.append(ServerModelList::tr("Vision"));
    return parts.join(QStringLiteral(" · "));
}

QString loadedText(const std::vector<OllamaRunning>& running, const QString& name)
{
    const auto found = std::find_if(running.begin(), running.end(),
                                    [&name](const OllamaRunning& loaded) { return loaded.name == name; });
    if (found == running.end())
        return {};
    if (found->sizeVRAM && *found->sizeVRAM > 0)
        return ServerModelList::tr("Loaded, %1").arg(bytes(*found->sizeVRAM));
    return ServerModelList::tr("Loaded");
}

} // namespace

ServerModelList::ServerModelList(AppModel& app, QObject* parent)
    : QAbstractListModel(parent)
    , m_app(app)
{
    connect(&app, &AppModel::installedModelsChanged, this, &ServerModelList::refresh);
    connect(&app, &AppModel::runningModelsChanged, this, &ServerModelList::refresh);
    connect(&app, &AppModel::defaultModelChanged, this, &ServerModelList::refresh);
    refresh();
}

int ServerModelList::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant ServerModelList::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const ServerModelRow& row = m_rows[static_cast<std::size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
    case NameRole:
        return row.name.left(longestName);
    case DetailRole:
        return row.detail;
    case LoadedRole:
        return row.loaded;
    case DefaultRole:
        return row.isDefault;
    default:
        return {};
    }
}

QHash<int, QByteArray> ServerModelList::roleNames() const
{
    return {{NameRole, "name"}, {DetailRole, "facts"}, {LoadedRole, "loaded"}, {DefaultRole, "isDefault"}};
}

int ServerModelList::defaultRow() const
{
    const auto found =
        std::find_if(m_rows.begin(), m_rows.end(), [](const ServerModelRow& row) { return row.isDefault; });
    return found == m_rows.end() ? -1 : static_cast<int>(found - m_rows.begin());
}

QString ServerModelList::nameAt(int row) const
{
    return row < 0 || row >= count() ? QString()
                                     : m_rows[static_cast<std::size_t>(row)].name.left(longestName);
}

int ServerModelList::rowOf(const QString& name) const
{
    int row = 0;
    while (row < count() && nameAt(row) != name)
        ++row;
    return row < count() ? row : -1;
}

void ServerModelList::makeDefault(int row)
{
    if (row >= 0 && row < count())
        m_app.chooseDefaultModel(QString(m_rows[static_cast<std::size_t>(row)].name));
}

void ServerModelList::removeModel(int row)
{
    if (row >= 0 && row < count())
        m_app.removeModel(QString(m_rows[static_cast<std::size_t>(row)].name));
}

void ServerModelList::refresh()
{
    std::vector<ServerModelRow> rows;
    qint64 total = 0;
    for (const OllamaModel& model : m_app.installedModels()) {
        total += std::max<qint64>(0, model.size.value_or(0));
        if (rows.size() < mostRows)
            rows.push_back({.name = model.name,
                            .detail = detailOf(model),
                            .loaded = loadedText(m_app.runningModels(), model.name),
                            .isDefault = model.name == m_app.defaultModel()});
    }
    const std::size_t models = m_app.installedModels().size();
    m_summary = models == 1 ? tr("1 model, %1 on disk").arg(bytes(total))
                            : tr("%1 models, %2 on disk").arg(QString::number(models), bytes(total));
    if (rows == m_rows)
        return;
    const bool sameModels =
        std::equal(rows.begin(), rows.end(), m_rows.begin(), m_rows.end(),
                   [](const auto& one, const auto& other) { return one.name == other.name; });
    if (sameModels) {
        // The list keeps its place while something is said of its rows.
        m_rows = std::move(rows);
        Q_EMIT dataChanged(index(0), index(count() - 1));
    } else {
        beginResetModel();
        m_rows = std::move(rows);
        endResetModel();
    }
    Q_EMIT countChanged();
}

} // namespace varnel
