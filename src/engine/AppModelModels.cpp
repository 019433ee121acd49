// The models of the server: searching the public library, pulling, removing, and the default.
#include "engine/AppModelPrivate.h"

#include "engine/Probe.h"
#include "engine/PullProgress.h"
#include "ollama/OllamaClient.h"
#include "ollama/OllamaError.h"
#include "store/Preferences.h"

namespace varnel {

namespace {

/// What is said when a pull or a removal did not come to its end.
QString endingOf(const std::exception_ptr& exception)
{
    try {
        std::rethrow_exception(exception);
    } catch (const Cancelled&) {
        return QStringLiteral("Stopped.");
    } catch (const TransportError& error) {
        return OllamaError::unreachable(error.message()).message();
    } catch (const Error& error) {
        return error.message();
    }
}

QString searchingText(const QString& query)
{
    return QStringLiteral("Searching %1").arg(query);
}

} // namespace

void AppModel::setPullStatus(const QString& text, double share)
{
    if (text == m_pullStatus && share == m_pullShare)
        return;
    m_pullStatus = text;
    m_pullShare = share;
    Q_EMIT pullStatusChanged();
}

/// While something is pulled or removed, that has the line.
void AppModel::saySearch(const QString& text)
{
    if (m_isPulling)
        setStatusMessage(text);
    else
        setPullStatus(text);
}

void AppModel::searchModels()
{
    const QString query = m_modelQuery.trimmed();
    m_stopModelSearch.request_stop();
    if (query.isEmpty()) {
        saySearch(QStringLiteral("Type a model name to search."));
        return;
    }
    saySearch(searchingText(query));
    if (!m_isPulling) // its name stays beside its progress
        assign(m_pullTarget, QString(), &AppState::pullTargetChanged);
    m_stopModelSearch = std::stop_source();
    m_modelSearch = followModelSearch(query, m_stopModelSearch.get_token());
}

Task<void> AppModel::followModelSearch(QString query, std::stop_token stop)
{
    QString said;
    try {
        HttpClient http;
        const OllamaClient client(m_connection.baseURL(), http);
        std::vector<OllamaLibraryHit> hits =
            co_await client.searchLibrary(m_bases.url(ApiBase::ModelLibrary), query, stop);
        if (hits.empty())
            said = QStringLiteral("No models matched %1").arg(query);
        assign(m_libraryHits, std::move(hits), &AppState::libraryHitsChanged);
    } catch (const Cancelled&) {
        co_return; // a newer search is under way
    } catch (const TransportError& error) {
        said = OllamaError::unreachable(error.message()).message();
    } catch (const Error& error) {
        said = error.message();
    }
    // A pull may have begun or ended meanwhile.
    clearStatus(searchingText(query));
    if (m_pullStatus == searchingText(query))
        setPullStatus(QString());
    if (!said.isEmpty())
        saySearch(said);
}

void AppModel::pullModel(const QString& name)
{
    if (m_isPulling || name.trimmed().isEmpty())
        return;
    const QString model = name.trimmed();
    assign(m_isPulling, true, &AppState::isPullingChanged);
    assign(m_pullTarget, model, &AppState::pullTargetChanged);
    setPullStatus(QStringLiteral("Pulling %1…").arg(model));
    m_stopPull = std::stop_source();
    m_pull = followPull(model, m_stopPull.get_token());
}

void AppModel::stopPull()
{
    m_stopPull.request_stop();
}

Task<void> AppModel::followPull(QString name, std::stop_token stop)
{
    try {
        PullProgress progress(name);
        // A connection of its own: a pull takes hours, and closing it is what stops the server.
        HttpClient http;
        PullStream stream = OllamaClient(m_connection.baseURL(), http).pull(name, stop);
        while (const std::optional<StatusChunk> chunk = co_await stream.next()) {
            if (chunk->error)
                throw OllamaError::api(*chunk->error);
            progress.take(*chunk, m_services.clock.steadyNow());
            setPullStatus(progress.text(), progress.share().value_or(-1));
        }
        const QString done = QStringLiteral("Installed %1").arg(name);
        setPullStatus(done);
        setStatusMessage(done);
        co_await refreshInstalledModels({}); // what is done can be stopped no more
    } catch (...) {
        setPullStatus(endingOf(std::current_exception()));
    }
    assign(m_isPulling, false, &AppState::isPullingChanged);
}

Task<void> AppModel::refreshInstalledModels(std::stop_token stop)
{
    try {
        const QUrl base = m_connection.baseURL();
        HttpClient http;
        const OllamaClient client(base, http, std::chrono::seconds(5));
        std::vector<OllamaModel> models = usableModels(co_await client.listModels(stop));
        if (base == m_connection.baseURL()) // else another server by now
            assign(m_installedModels, std::move(models), &AppState::installedModelsChanged);
    } catch (const Error&) {
        co_return; // what was done is done; the next check says what is wrong with the server
    }
}

void AppModel::removeModel(const QString& name)
{
    if (m_isPulling || name.isEmpty())
        return;
    assign(m_isPulling, true, &AppState::isPullingChanged);
    assign(m_pullTarget, name, &AppState::pullTargetChanged);
    setPullStatus(QStringLiteral("Removing %1").arg(name));
    m_stopPull = std::stop_source();
    m_pull = followRemoval(name, m_stopPull.get_token());
}

Task<void> AppModel::followRemoval(QString name, std::stop_token stop)
{
    try {
        HttpClient http;
        co_await OllamaClient(m_connection.baseURL(), http).remove(name, stop);
        if (name == m_defaultModel) {
            attempt([this] { m_services.preferences.setDefaultModel(QString()); });
            assign(m_defaultModel, m_services.preferences.defaultModel(), &AppState::defaultModelChanged);
        }
        const QString done = QStringLiteral("Removed %1").arg(name);
        setPullStatus(done);
        setStatusMessage(done);
        co_await refreshInstalledModels({});
    } catch (...) {
        setPullStatus(endingOf(std::current_exception()));
    }
    assign(m_isPulling, false, &AppState::isPullingChanged);
}

void AppModel::chooseDefaultModel(const QString& name)
{
    const QString model = name.trimmed();
    if (model.isEmpty() || !attempt([&] { m_services.preferences.setDefaultModel(model); }))
        return;
    assign(m_defaultModel, model, &AppState::defaultModelChanged);
    if (selectedIsEmpty())
        chooseModel(model);
    setStatusMessage(QStringLiteral("Default model %1").arg(model));
}

} // namespace varnel
