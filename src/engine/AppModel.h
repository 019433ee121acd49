#pragma once

#include "base/Clock.h"
#include "base/HttpClient.h"
#include "base/Task.h"
#include "engine/Turn.h"
#include "ollama/OllamaTypes.h"
#include "store/ChatSession.h"
#include "store/ConnectionSettings.h"
#include "tunnel/LinkState.h"

#include <QObject>
#include <QString>
#include <QUuid>

#include <map>
#include <optional>
#include <stop_token>
#include <vector>

namespace varnel {

class Preferences;

/// A turn that failed: what is shown beside the prompt it belongs to, until it is tried again.
struct TurnFailure
{
    QUuid session;
    /// The user's message that got no whole answer.
    QUuid prompt;
    /// The status text, as it stood.
    QString text;

    bool operator==(const TurnFailure&) const = default;
};

/// What is known of a reply beyond what is stored with it.
struct ReplyFacts
{
    /// Pieces of text a second once the model had begun; nothing if there were too few to tell.
    std::optional<double> tokensPerSecond;

    bool operator==(const ReplyFacts&) const = default;
};

/// Everything that the screens show and what the user can do with it. Views read the properties, call the
/// operations and look again when told that something changed. It belongs to one thread, and one turn runs at
/// a time.
class AppModel : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QUuid selection READ selection WRITE select NOTIFY selectionChanged)
    Q_PROPERTY(QString draft READ draft WRITE setDraft NOTIFY draftChanged)
    Q_PROPERTY(QString sessionQuery READ sessionQuery WRITE setSessionQuery NOTIFY sessionQueryChanged)
    Q_PROPERTY(bool isStreaming READ isStreaming NOTIFY isStreamingChanged)
    Q_PROPERTY(QString statusMessage READ statusMessage NOTIFY statusMessageChanged)
    Q_PROPERTY(varnel::LinkState linkState READ linkState NOTIFY linkStateChanged)
    Q_PROPERTY(QString connectionReport READ connectionReport NOTIFY connectionReportChanged)
    Q_PROPERTY(QString connectionDetail READ connectionDetail NOTIFY connectionDetailChanged)
    Q_PROPERTY(QString hostLabel READ hostLabel NOTIFY connectionChanged)
    Q_PROPERTY(QString defaultModel READ defaultModel NOTIFY defaultModelChanged)
    Q_PROPERTY(QString selectedTitle READ selectedTitle NOTIFY selectedSessionChanged)
    Q_PROPERTY(QString selectedModel READ selectedModel NOTIFY selectedSessionChanged)
    Q_PROPERTY(bool selectedIsEmpty READ selectedIsEmpty NOTIFY selectedSessionChanged)
    Q_PROPERTY(QString removedTitle READ removedTitle NOTIFY removedChanged)

public:
    /// What the model works with; all of it outlives the model.
    struct Services
    {
        Preferences& preferences;
        const Clock& clock;
    };

    /// Begins with one empty conversation, selected, and the saved connection, not looked at yet.
    explicit AppModel(Services services, QObject* parent = nullptr);
    AppModel(const AppModel&) = delete;
    AppModel& operator=(const AppModel&) = delete;
    AppModel(AppModel&&) = delete;
    AppModel& operator=(AppModel&&) = delete;
    ~AppModel() override;

    const std::vector<ChatSession>& sessions() const { return m_sessions; }
    /// The conversation of that identifier; null if there is none. Valid until the conversations change.
    const ChatSession* session(const QUuid& id) const;
    const ChatSession* selectedSession() const { return session(m_selection); }
    const QUuid& selection() const { return m_selection; }
    QString draft() const;
    const QString& sessionQuery() const { return m_sessionQuery; }
    bool isStreaming() const { return m_isStreaming; }
    /// The conversation that is being answered; null if none is.
    const QUuid& streamingSession() const { return m_streamingSession; }
    /// The message that is being written; null if none is.
    const QUuid& streamingMessage() const { return m_streamingMessage; }
    const QString& statusMessage() const { return m_statusMessage; }
    LinkState linkState() const { return m_linkState; }
    const QString& connectionReport() const { return m_connectionReport; }
    const QString& connectionDetail() const { return m_connectionDetail; }
    const ConnectionSettings& connection() const { return m_connection; }
    QString hostLabel() const { return m_connection.hostLabel(); }
    QString defaultModel() const;
    QString selectedTitle() const;
    QString selectedModel() const;
    bool selectedIsEmpty() const;
    const std::vector<OllamaModel>& installedModels() const { return m_installedModels; }
    const std::vector<OllamaRunning>& runningModels() const { return m_runningModels; }
    const std::optional<TurnFailure>& failure() const { return m_failure; }
    ReplyFacts factsOf(const QUuid& message) const;
    /// The title of the conversation that undoRemove() brings back; empty when there is none.
    QString removedTitle() const;

    void setDraft(const QString& text);
    void setSessionQuery(const QString& text);
    /// Shows a conversation; an identifier that names none changes nothing.
    void select(const QUuid& id);

    /// Makes an empty conversation in front of the others and selects it; an empty one that is selected is
    /// kept.
    Q_INVOKABLE void newConversation();
    Q_INVOKABLE void rename(const QUuid& id, const QString& title);
    Q_INVOKABLE void togglePinned(const QUuid& id);
    /// Removes a conversation; the last one is replaced by an empty one. For ten seconds it can be brought
    /// back.
    Q_INVOKABLE void remove(const QUuid& id);
    /// Brings the conversation that was removed last back, with its draft, and selects it.
    Q_INVOKABLE void undoRemove();
    /// The Ollama model that answers the selected conversation from now on.
    Q_INVOKABLE void chooseModel(const QString& name);

    /// Sends the draft of the selected conversation. While a reply runs nothing is sent, and the status says
    /// why.
    Q_INVOKABLE void send();
    /// Ends the running reply; what has arrived of it stays.
    Q_INVOKABLE void stop();
    /// Sends the prompt of a failed turn again.
    Q_INVOKABLE void tryAgain();
    /// Takes the prompt of a failed turn back into the composer.
    Q_INVOKABLE void editFailed();
    /// Asks the server whether it is there and which models it has. A newer check replaces one under way.
    Q_INVOKABLE void checkConnection();
    /// Asks the server which models it holds in memory. While a reply runs that is known already.
    Q_INVOKABLE void refreshRunningModels();

Q_SIGNALS:
    /// Which conversations there are, or their order.
    void sessionsChanged();
    /// The title, model or another setting of one, or its place in time.
    void sessionChanged(const QUuid& id);
    /// Messages of a conversation came or went.
    void messagesChanged(const QUuid& session);
    /// The text of one message.
    void messageChanged(const QUuid& session, const QUuid& message);
    void selectionChanged();
    /// The selected conversation is another one, or something of it other than its messages' texts changed.
    void selectedSessionChanged();
    void draftChanged();
    void sessionQueryChanged();
    void isStreamingChanged();
    void statusMessageChanged();
    void linkStateChanged();
    void connectionReportChanged();
    void connectionDetailChanged();
    void connectionChanged();
    void defaultModelChanged();
    void installedModelsChanged();
    void runningModelsChanged();
    void failureChanged();
    void removedChanged();

private:
    struct RemovedSession
    {
        ChatSession session;
        QString draft;
        /// The empty conversation that took its place; null if others were left.
        QUuid replacement;
    };

    ChatSession* find(const QUuid& id);
    void insertNewConversation();
    /// Marks a conversation as changed now. It and every other reference into the list are invalid
    /// afterwards.
    void touch(ChatSession& session);
    void moveIntoPlace(ChatSession& session);
    void announceSession(const QUuid& id);
    void setRemoved(std::optional<RemovedSession> removed);
    Task<void> followUndoTime();

    void setStatusMessage(const QString& text);
    void setLinkState(LinkState state);
    void setConnectionTexts(const QString& report, const QString& detail);
    void setFailure(std::optional<TurnFailure> failure);
    void setStreaming(const QUuid& session, const QUuid& message);

    void startTurn(ChatSession& session);
    Task<void> followTurn(TurnRequest request, QUuid session, QUuid message, std::stop_token stop);
    void showReply(const QUuid& session, const QUuid& message, const QString& thinking, const QString& reply);
    void completeReply(const QUuid& session, const QUuid& message, const TurnOutcome& outcome);
    void endTurn(const QUuid& session, const QUuid& message, const QString& failureText);

    Task<void> followProbe(std::stop_token stop);
    Task<void> followRunning(std::stop_token stop);

    Services m_services;
    std::vector<ChatSession> m_sessions;
    QUuid m_selection;
    std::map<QUuid, QString> m_drafts;
    QString m_sessionQuery;
    QString m_statusMessage;
    ConnectionSettings m_connection;
    LinkState m_linkState = LinkState::Unknown;
    QString m_connectionReport;
    QString m_connectionDetail;
    std::vector<OllamaModel> m_installedModels;
    std::vector<OllamaRunning> m_runningModels;
    std::optional<TurnFailure> m_failure;
    std::optional<RemovedSession> m_removed;
    std::map<QUuid, ReplyFacts> m_facts;

    bool m_isStreaming = false;
    QUuid m_streamingSession;
    QUuid m_streamingMessage;
    bool m_retried = false;

    // Connections of probes; a turn has its own.
    HttpClient m_http;
    std::stop_source m_stopTurn;
    std::stop_source m_stopProbe;
    // Last, so that they are gone before anything they use.
    Task<void> m_turn;
    Task<void> m_probe;
    Task<void> m_running;
    Task<void> m_undoTime;
};

} // namespace varnel
