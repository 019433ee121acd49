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
    , m_keeper(useLocation(), m_services.clock, [this](const SaveStatus& status) { noteSave(status); })
    , m_library(m_location.folder(), [this](SaveQueue::Save save) { m_keeper.saveLibrary(std::move(save)); })
    , m_port(m_processes, m_worker, m_services.clock)
    , m_tunnel({m_services.secrets, m_processes, m_worker, m_services.clock}, m_services.programs)
{
    m_draftTimer.setSingleShot(true);
    connect(&m_draftTimer, &QTimer::timeout, this, [this] { m_keeper.saveDrafts(m_drafts); });
    connect(this, &AppState::sessionQueryChanged, this, &AppModel::searchSessions);
    // Later: the hits of one search may open a conversation, which may change the list.
    connect(this, &AppState::sessionsChanged, this, &AppModel::searchSessionsAgain, Qt::QueuedConnection);
    load();
    m_tunnel.setOnExit([this](int status, const QString& output) { tunnelEnded(status, output); });
}

/// The data folder, known before anything that is kept in it.
QString AppModel::useLocation()
{
    m_location = m_services.location ? *m_services.location : resolveLocation(systemStorageFolders());
    return m_location.folder();
}

AppModel::~AppModel()
{
    for (Task<void>* const task : {&m_turn, &m_connectionTask, &m_running, &m_pull, &m_modelSearch,
                                   &m_sessionSearch, &m_undoTime, &m_page, &m_backup})
        task->reset();
    m_fileTasks.clear();
    shutDown();
}

void AppModel::load()
{
    const Preferences& preferences = m_services.preferences;
    m_libraryItems = m_library.items();
    m_connection = preferences.connection();
    m_passthroughEnabled = preferences.passthrough();
    m_contextButtonEnabled = preferences.contextButton();
    m_disabledProviderModels = preferences.disabledProviderModels();
    m_workContext = preferences.workContext();
    m_defaultModel = preferences.defaultModel();
    StoredConversations stored = m_keeper.load(varnel::newConversation(preferences, m_services.clock.now()));
    m_sessions = std::move(stored.sessions);
    m_drafts = std::move(stored.drafts);
    m_selection = m_sessions.front().id;
    m_connectionDetail = m_connection.hostLabel();
    QStringList problems = QStringList(stored.problems.begin(), stored.problems.end()) + m_bases.complaints();
    if (m_library.loadProblem())
        problems.push_back(*m_library.loadProblem());
    if (preferences.problem())
        problems.push_back(*preferences.problem());
    if (const auto problem = preferences.connectionProblem())
        problems.push_back(*problem);
    for (const QString& problem : std::as_const(problems))
        notify(problem);
}

void AppModel::shutDown()
{
    m_isEnding = true;
    finishFileWork();
    // What has come of a running reply is kept, and shown as unfinished at the next start.
    showLatest();
    m_stopTurn.request_stop();
    m_stopConnection.request_stop();
    m_draftTimer.stop();
    m_keeper.saveDrafts(m_drafts);
    if (m_isStreaming) {
        m_keeper.replyEnded(m_streamingMessage);
        saveSessions();
    }
    // Saving goes on behind while ssh is given its time to end.
    m_tunnel.stop();
    assign(m_tunnelIsUp, false, &AppState::tunnelIsUpChanged);
    m_keeper.flush();
}

void AppModel::notify(const QString& text)
{
    m_services.log.log(text);
    if (!m_startNotices) {
        setStatusMessage(text);
        return;
    }
    if (!m_startNotices->contains(text))
        m_startNotices->push_back(text);
    setStatusMessage(m_startNotices->join(QLatin1Char(' ')));
}

/// What was said at the start was gone with the first word about the server, before anybody could read it.
void AppModel::repeatStartNotices()
{
    const QStringList notices = std::exchange(m_startNotices, std::nullopt).value_or(QStringList());
    if (!notices.isEmpty())
        setStatusMessage(notices.join(QLatin1Char(' ')));
}

/// The first look at the server was broken off, and nothing need come after it.
void AppModel::endStartNotices()
{
    if (m_linkState == LinkState::Connecting)
        m_startNotices.reset();
}

void AppModel::noteSave(const SaveStatus& status)
{
    if (status.setAside)
        notify(status.setAside->text());
    if (status.failure)
        notify(*status.failure);
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
    m_keeper.saveSessions(m_sessions);
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
