#include "engine/AppModel.h"

#include "app/DiagnosticsLog.h"
#include "engine/AppModelPrivate.h"
#include "store/NewConversation.h"
#include "store/Preferences.h"
#include "store/StorageLocation.h"

namespace varnel {

namespace {

// While somebody types, the draft is saved at this pace.
constexpr std::chrono::milliseconds draftPause(800);

} // namespace

AppModel::AppModel(Services services, QObject* parent)
    : AppState(parent)
    , m_services(std::move(services))
    , m_bases(m_services.environment)
    , m_credentials(m_services.secrets, m_services.environment)
    , m_storage(m_services.location ? *m_services.location : resolveLocation(systemStorageFolders()),
                [this](const QString& text) { notify(text); })
    , m_port(m_processes, m_worker, m_services.clock)
    , m_tunnel({m_services.secrets, m_processes, m_worker, m_services.clock}, m_services.programs)
{
    m_draftTimer.setSingleShot(true);
    connect(&m_draftTimer, &QTimer::timeout, this, [this] { m_storage.save(m_drafts); });
    connect(this, &AppState::sessionQueryChanged, this, &AppModel::searchSessions);
    connect(this, &AppState::sessionsChanged, this, &AppModel::searchSessionsAgain);
    load();
    m_tunnel.setOnExit([this](int status, const QString& output) { tunnelEnded(status, output); });
}

AppModel::~AppModel()
{
    for (Task<void>* const task : {&m_turn, &m_connectionTask, &m_running, &m_pull, &m_modelSearch,
                                   &m_sessionSearch, &m_undoTime, &m_backup})
        task->reset();
    m_imports.clear();
    shutDown();
}

void AppModel::load()
{
    const Preferences& preferences = m_services.preferences;
    m_location = m_storage.location();
    m_libraryItems = m_storage.library().items();
    m_connection = preferences.connection();
    m_passthroughEnabled = preferences.passthrough();
    m_contextButtonEnabled = preferences.contextButton();
    m_disabledProviderModels = preferences.disabledProviderModels();
    m_workContext = preferences.workContext();
    m_defaultModel = preferences.defaultModel();
    Storage::Contents contents = m_storage.load();
    m_sessions = std::move(contents.sessions);
    m_sessions.sort();
    m_drafts = std::move(contents.drafts);
    if (m_sessions.empty())
        insertNewConversation();
    m_selection = m_sessions.front().id;
    m_connectionDetail = m_connection.hostLabel();
    QStringList problems = contents.problems + m_storage.takeLibraryNotices() + m_bases.complaints();
    if (preferences.problem())
        problems.push_back(*preferences.problem());
    if (const auto problem = preferences.connectionProblem())
        problems.push_back(*problem);
    for (const QString& problem : std::as_const(problems))
        notify(problem);
    // A fresh conversation and what was recovered are saved at once; anything else is on the disk already.
    if (contents.isChanged || m_sessions.size() == 1)
        saveSessions();
}

void AppModel::shutDown()
{
    // What has come of a running reply is kept, and shown as unfinished at the next start.
    m_stopTurn.request_stop();
    m_stopConnection.request_stop();
    m_tunnel.stop();
    assign(m_tunnelIsUp, false, &AppState::tunnelIsUpChanged);
    m_draftTimer.stop();
    m_storage.save(m_drafts);
    if (m_isStreaming)
        m_storage.save(m_sessions, QUuid());
    m_storage.flush();
}

void AppModel::notify(const QString& text)
{
    setStatusMessage(text);
    m_services.log.log(text);
}

bool AppModel::attempt(const std::function<void()>& action)
{
    try {
        action();
        return true;
    } catch (const Error& error) {
        setStatusMessage(error.message());
        return false;
    }
}

void AppModel::saveSessions()
{
    m_storage.save(m_sessions, m_streamingMessage);
}

void AppModel::saveDrafts()
{
    if (!m_draftTimer.isActive())
        m_draftTimer.start(draftPause);
}

QString AppModel::selectedTitle() const
{
    const ChatSession* const selected = selectedSession();
    return selected ? selected->title : QString();
}

QString AppModel::selectedModel() const
{
    const ChatSession* const selected = selectedSession();
    if (!selected)
        return {};
    return selected->answerBackend == AnswerBackend::Remote ? selected->remoteModel : selected->model;
}

bool AppModel::selectedIsEmpty() const
{
    const ChatSession* const selected = selectedSession();
    return !selected || selected->messages.empty();
}

ContextUse AppModel::contextUse() const
{
    const ChatSession* const selected = selectedSession();
    if (!selected)
        return {};
    // Reading the whole history at every keystroke would be felt in a long conversation.
    if (!m_historyUse)
        m_historyUse = contextUseOf(*selected);
    ContextUse use = *m_historyUse;
    use.tokens += estimatedTokens(draft());
    return use;
}

void AppModel::setPassthroughEnabled(bool allowed)
{
    attempt([&] { m_services.preferences.setPassthrough(allowed); });
    assign(m_passthroughEnabled, allowed, &AppState::passthroughEnabledChanged);
}

void AppModel::setContextButtonEnabled(bool shown)
{
    attempt([&] { m_services.preferences.setContextButton(shown); });
    assign(m_contextButtonEnabled, shown, &AppState::contextButtonEnabledChanged);
}

void AppModel::setDisabledProviderModels(const std::set<QString>& entries)
{
    attempt([&] { m_services.preferences.setDisabledProviderModels(entries); });
    assign(m_disabledProviderModels, entries, &AppState::disabledProviderModelsChanged);
}

void AppModel::noteCredentialChange()
{
    assign(m_credentialRevision, m_credentialRevision + 1, &AppState::credentialRevisionChanged);
}

} // namespace varnel
