#include "ui/ModelListModel.h"

#include "base/Error.h"
#include "providers/credentials/ModelFilter.h"
#include "store/Preferences.h"

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
    connect(&app, &AppModel::passthroughEnabledChanged, this, &ModelListModel::refresh);
    connect(&app, &AppModel::disabledProviderModelsChanged, this, &ModelListModel::refresh);
    connect(&app, &AppModel::credentialRevisionChanged, this, [this] { m_looking = followCredentials(); });
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
    case VisionRole:
        return row.readsImages;
    case CloudRole:
        return row.provider.has_value();
    default:
        return {};
    }
}

QHash<int, QByteArray> ModelListModel::roleNames() const
{
    return {{NameRole, "name"},       {GroupRole, "group"},   {DetailRole, "detail"},
            {CurrentRole, "current"}, {VisionRole, "vision"}, {CloudRole, "cloud"}};
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

QString ModelListModel::keyAt(int row) const
{
    if (row < 0 || row >= count())
        return {};
    const ModelRow& model = m_rows[static_cast<std::size_t>(row)];
    return (model.provider ? displayName(*model.provider) : QString()) + QLatin1Char('\n') + model.name;
}

int ModelListModel::rowOfKey(const QString& key) const
{
    int row = 0;
    while (row < count() && keyAt(row) != key)
        ++row;
    return row < count() ? row : -1;
}

void ModelListModel::choose(int row)
{
    if (row < 0 || row >= count())
        return;
    const ModelRow chosenRow = m_rows[static_cast<std::size_t>(row)];
    if (chosenRow.provider)
        m_app.chooseRemoteModel(*chosenRow.provider, chosenRow.name);
    else
        m_app.chooseModel(chosenRow.name);
    Q_EMIT chosen();
}

void ModelListModel::look()
{
    m_app.refreshRunningModels();
    m_looking = followCredentials();
}

Task<void> ModelListModel::followCredentials()
{
    std::vector<RemoteProvider> available;
    try {
        // Looking through a list is no reason to ask for the password of the keyring.
        for (const CredentialStatus& status : co_await m_app.credentials().statuses(Unlocking::Never)) {
            if (status.available)
                available.push_back(status.provider);
        }
    } catch (const Cancelled&) {
        co_return;
    }
    m_available = std::move(available);
    refresh();
}

void ModelListModel::addInstalled(std::vector<ModelRow>& rows, const QString& wanted) const
{
    const ChatSession* const selected = m_app.selectedSession();
    const bool isLocal = selected && selected->answerBackend == AnswerBackend::Ollama;
    const auto isLoaded = [this](const OllamaModel& model) {
        const auto& running = m_app.runningModels();
        return std::any_of(running.begin(), running.end(),
                           [&model](const OllamaRunning& loaded) { return loaded.name == model.name; });
    };
    for (const bool loaded : {true, false}) {
        for (const OllamaModel& model : m_app.installedModels()) {
            if (isLoaded(model) == loaded && model.name.contains(wanted, Qt::CaseInsensitive))
                rows.push_back({.name = model.name,
                                .provider = std::nullopt,
                                .group = loaded ? tr("Loaded") : tr("Installed"),
                                .detail = detailOf(model),
                                .current = isLocal && model.name == selected->model,
                                .readsImages = ollamaModelReadsImages(model.name)});
        }
    }
}

void ModelListModel::addClouds(std::vector<ModelRow>& rows, const QString& wanted) const
{
    if (!m_app.passthroughEnabled())
        return;
    const ChatSession* const selected = m_app.selectedSession();
    for (const RemoteProvider provider : m_available) {
        QStringList models = suggestedModels(provider);
        const bool answers = selected && selected->answerBackend == AnswerBackend::Remote &&
                             selected->remoteProvider == provider;
        if (answers && !models.contains(selected->remoteModel))
            models.prepend(selected->remoteModel);
        for (const QString& model : std::as_const(models)) {
            const bool current = answers && model == selected->remoteModel;
            const bool off = m_app.disabledProviderModels().contains(providerModelEntry(provider, model));
            const QString name = displayName(provider);
            if ((off && !current) || !(name + QLatin1Char(' ') + model).contains(wanted, Qt::CaseInsensitive))
                continue;
            rows.push_back({.name = model,
                            .provider = provider,
                            .group = tr("Cloud"),
                            .detail = name,
                            .current = current,
                            .readsImages = remoteModelReads(AttachmentKind::Images, provider, model)});
        }
    }
}

void ModelListModel::refresh()
{
    const QString wanted = m_filter.trimmed();
    std::vector<ModelRow> rows;
    addInstalled(rows, wanted);
    addClouds(rows, wanted);
    if (rows != m_rows) {
        beginResetModel();
        m_rows = std::move(rows);
        endResetModel();
    }
    Q_EMIT countChanged();
    Q_EMIT currentRowChanged();
}

} // namespace varnel
