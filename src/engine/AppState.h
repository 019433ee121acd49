#pragma once

#include "engine/ContextEstimate.h"
#include "engine/SearchStep.h"
#include "engine/SessionSearch.h"
#include "engine/TurnFailure.h"
#include "ollama/LibrarySearch.h"
#include "ollama/OllamaTypes.h"
#include "store/ChatSession.h"
#include "store/ConnectionSettings.h"
#include "store/Drafts.h"
#include "store/LibraryItem.h"
#include "store/LibraryLocation.h"
#include "tunnel/LinkState.h"

#include <QObject>
#include <QString>
#include <QUuid>

#include <map>
#include <optional>
#include <set>
#include <type_traits>
#include <utility>
#include <vector>

namespace varnel {

/// What is known of a reply beyond what is stored with it; kept for this run.
struct ReplyFacts
{
    /// Pieces of text a second once the model had begun; nothing if there were too few to tell.
    std::optional<double> tokensPerSecond;
    /// From the request to the first piece, in seconds.
    std::optional<double> untilFirstPiece;
    /// What the web tools did for it, in order.
    std::vector<SearchStep> steps;

    bool operator==(const ReplyFacts&) const = default;
};

/// Everything that the screens show, each thing with a signal that says when it changed. What the user can do
/// with it is AppModel.
class AppState : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QUuid selection READ selection NOTIFY selectionChanged)
    Q_PROPERTY(bool passthroughEnabled READ passthroughEnabled NOTIFY passthroughEnabledChanged)
    Q_PROPERTY(bool contextButtonEnabled READ contextButtonEnabled NOTIFY contextButtonEnabledChanged)
    Q_PROPERTY(QString connectionReport READ connectionReport NOTIFY connectionReportChanged)
    Q_PROPERTY(varnel::LinkState linkState READ linkState NOTIFY linkStateChanged)
    Q_PROPERTY(QString connectionDetail READ connectionDetail NOTIFY connectionDetailChanged)
    Q_PROPERTY(bool tunnelIsUp READ tunnelIsUp NOTIFY tunnelIsUpChanged)
    Q_PROPERTY(bool isStreaming READ isStreaming NOTIFY isStreamingChanged)
    Q_PROPERTY(bool isBusy READ isBusy NOTIFY isStreamingChanged)
    Q_PROPERTY(bool isImporting READ isImporting NOTIFY isImportingChanged)
    Q_PROPERTY(bool isReadingPage READ isReadingPage NOTIFY isReadingPageChanged)
    Q_PROPERTY(QString statusMessage READ statusMessage NOTIFY statusMessageChanged)
    Q_PROPERTY(QString libraryQuery READ libraryQuery WRITE setLibraryQuery NOTIFY libraryQueryChanged)
    Q_PROPERTY(QString sessionQuery READ sessionQuery WRITE setSessionQuery NOTIFY sessionQueryChanged)
    Q_PROPERTY(QString modelQuery READ modelQuery WRITE setModelQuery NOTIFY modelQueryChanged)
    Q_PROPERTY(QString pullStatus READ pullStatus NOTIFY pullStatusChanged)
    Q_PROPERTY(QString pullTarget READ pullTarget NOTIFY pullTargetChanged)
    Q_PROPERTY(bool isPulling READ isPulling NOTIFY isPullingChanged)
    Q_PROPERTY(double pullShare READ pullShare NOTIFY pullStatusChanged)
    Q_PROPERTY(QString defaultModel READ defaultModel NOTIFY defaultModelChanged)
    Q_PROPERTY(int credentialRevision READ credentialRevision NOTIFY credentialRevisionChanged)
    Q_PROPERTY(QString hostLabel READ hostLabel NOTIFY connectionChanged)
    Q_PROPERTY(QString removedTitle READ removedTitle NOTIFY removedTitleChanged)
    Q_PROPERTY(bool canUndoEdit READ canUndoEdit NOTIFY canUndoEditChanged)
    Q_PROPERTY(bool undoesFork READ undoesFork NOTIFY canUndoEditChanged)
    Q_PROPERTY(bool undoesHere READ undoesHere NOTIFY undoesHereChanged)

public:
    using QObject::QObject;
    AppState(const AppState&) = delete;
    AppState& operator=(const AppState&) = delete;
    AppState(AppState&&) = delete;
    AppState& operator=(AppState&&) = delete;
    ~AppState() override = default;

    /// Pinned ones first, then the one changed last.
    const SessionList& sessions() const { return m_sessions; }
    /// The conversation of that identifier; null if there is none. Valid until the conversations change.
    const ChatSession* session(const QUuid& id) const;
    const ChatSession* selectedSession() const { return session(m_selection); }
    const QUuid& selection() const { return m_selection; }
    /// The same for QML, which knows no such type and hands it on as it is.
    Q_INVOKABLE QVariant selectionId() const { return m_selection; }

    const std::vector<LibraryItem>& libraryItems() const { return m_libraryItems; }
    /// The item of that identifier, deleted or not; null if there is none.
    const LibraryItem* libraryItem(const QUuid& id) const;
    const LibraryLocation& location() const { return m_location; }

    const ConnectionSettings& connection() const { return m_connection; }
    QString hostLabel() const { return m_connection.hostLabel(); }
    bool passthroughEnabled() const { return m_passthroughEnabled; }
    bool contextButtonEnabled() const { return m_contextButtonEnabled; }
    /// The remote models that are switched off, each as providerModelEntry() spells it.
    const std::set<QString>& disabledProviderModels() const { return m_disabledProviderModels; }
    const std::optional<WorkContext>& workContext() const { return m_workContext; }

    const std::vector<OllamaModel>& installedModels() const { return m_installedModels; }
    const std::vector<OllamaRunning>& runningModels() const { return m_runningModels; }
    const QString& connectionReport() const { return m_connectionReport; }
    LinkState linkState() const { return m_linkState; }
    const QString& connectionDetail() const { return m_connectionDetail; }
    bool tunnelIsUp() const { return m_tunnelIsUp; }

    /// Of the selected conversation.
    QString draft() const;
    /// The library items attached to the next message of the selected conversation, in the order attached.
    std::vector<QUuid> attachmentIDs() const;

    bool isStreaming() const { return m_isStreaming; }
    /// Whether a turn runs, or is looked into before anything of it is sent.
    bool isBusy() const { return m_isStreaming || m_isPreparing; }
    /// Whether something is still being copied into the library.
    bool isImporting() const { return m_imports > 0; }
    /// Whether a page of the web is being read for a draft.
    bool isReadingPage() const { return m_isReadingPage; }
    /// The conversation that is being answered; null if none is.
    const QUuid& streamingSession() const { return m_streamingSession; }
    /// The message that is being written; null if none is.
    const QUuid& streamingMessage() const { return m_streamingMessage; }
    /// The turn that failed last and was not tried again.
    const std::optional<TurnFailure>& failure() const { return m_failure; }
    ReplyFacts factsOf(const QUuid& message) const;
    const QString& statusMessage() const { return m_statusMessage; }

    /// What the search for `sessionQuery` found; nothing while there is no query or its search is under way.
    const std::optional<std::vector<SessionHit>>& sessionHits() const { return m_sessionHits; }

    const QString& libraryQuery() const { return m_libraryQuery; }
    void setLibraryQuery(const QString& text);
    const QString& sessionQuery() const { return m_sessionQuery; }
    void setSessionQuery(const QString& text);
    const QString& modelQuery() const { return m_modelQuery; }
    void setModelQuery(const QString& text);

    const std::vector<OllamaLibraryHit>& libraryHits() const { return m_libraryHits; }
    const QString& pullStatus() const { return m_pullStatus; }
    const QString& pullTarget() const { return m_pullTarget; }
    bool isPulling() const { return m_isPulling; }
    /// From 0 to 1, of the file that is being fetched; -1 while that is not known.
    double pullShare() const { return m_pullShare; }
    const QString& defaultModel() const { return m_defaultModel; }
    int credentialRevision() const { return m_credentialRevision; }

    /// The title of the conversation that is brought back next; empty when there is none.
    const QString& removedTitle() const { return m_removedTitle; }
    /// Whether messages that were replaced can still be brought back.
    bool canUndoEdit() const { return m_canUndoEdit; }
    /// Whether undoing takes a fork away, back to where it was made, rather than bringing messages back.
    bool undoesFork() const { return m_undoesFork; }
    /// Whether the selected conversation is the one that undoing changes or takes away.
    bool undoesHere() const { return m_canUndoEdit && m_undoSession == m_selection; }

Q_SIGNALS:
    /// Which conversations there are, or their order.
    void sessionsChanged();
    /// The title, model or another setting of one, or its place in time.
    void sessionChanged(const QUuid& id);
    /// Messages of a conversation came or went.
    void messagesChanged(const QUuid& session);
    /// The text of one message, or what is known of it.
    void messageChanged(const QUuid& session, const QUuid& message);
    void selectionChanged();
    /// The selected conversation is another one, or something of it other than its messages' texts changed.
    void selectedSessionChanged();
    void libraryItemsChanged();
    void connectionChanged();
    void passthroughEnabledChanged();
    void contextButtonEnabledChanged();
    void disabledProviderModelsChanged();
    void workContextChanged();
    void installedModelsChanged();
    void runningModelsChanged();
    void connectionReportChanged();
    void linkStateChanged();
    void connectionDetailChanged();
    void tunnelIsUpChanged();
    void draftChanged();
    void attachmentIDsChanged();
    /// A turn began or ended to be looked into, or to run.
    void isStreamingChanged();
    void isImportingChanged();
    /// Something could not be copied into the library, and the status says why. Comes before isImporting
    /// ends.
    /// @param session the conversation it was to be attached to; null if it was for the library only.
    void importFailed(const QUuid& session);
    /// A turn ended, in whatever way.
    void replyEnded(const QUuid& session, const QUuid& message);
    void failureChanged();
    void statusMessageChanged();
    void isReadingPageChanged();
    void libraryQueryChanged();
    void sessionQueryChanged();
    void sessionHitsChanged();
    void modelQueryChanged();
    void libraryHitsChanged();
    void pullStatusChanged();
    void pullTargetChanged();
    void isPullingChanged();
    void defaultModelChanged();
    void credentialRevisionChanged();
    void removedTitleChanged();
    void canUndoEditChanged();
    void undoesHereChanged();
    /// Whether overwritten files of a project can be put back, or what there is to put back.
    void projectFilesChanged();
    /// What became of a backup that was to be made or restored; the status says the same.
    void backupEnded(const QString& status);

protected:
    /// Gives a member a value and says so if it is another one.
    template <typename T>
    void assign(T& member, std::type_identity_t<T> value, void (AppState::*changed)())
    {
        if (member == value)
            return;
        member = std::move(value);
        Q_EMIT(this->*changed)();
    }
    void setStatusMessage(const QString& text);
    /// Takes a text away that is no longer true, if it is still what the status says.
    void clearStatus(const QString& text);

    SessionList m_sessions;
    QUuid m_selection;
    std::vector<LibraryItem> m_libraryItems;
    LibraryLocation m_location;
    ConnectionSettings m_connection;
    bool m_passthroughEnabled = false;
    bool m_contextButtonEnabled = false;
    std::set<QString> m_disabledProviderModels;
    std::optional<WorkContext> m_workContext;
    std::vector<OllamaModel> m_installedModels;
    std::vector<OllamaRunning> m_runningModels;
    QString m_connectionReport = QStringLiteral("Not tested");
    LinkState m_linkState = LinkState::Unknown;
    QString m_connectionDetail;
    bool m_tunnelIsUp = false;
    Drafts m_drafts;
    bool m_isStreaming = false;
    bool m_isPreparing = false;
    int m_imports = 0; // under way
    bool m_isReadingPage = false;
    QUuid m_streamingSession;
    QUuid m_streamingMessage;
    std::optional<TurnFailure> m_failure;
    std::map<QUuid, ReplyFacts> m_facts;
    QString m_statusMessage;
    QString m_libraryQuery;
    QString m_sessionQuery;
    std::optional<std::vector<SessionHit>> m_sessionHits;
    QString m_modelQuery;
    std::vector<OllamaLibraryHit> m_libraryHits;
    QString m_pullStatus;
    QString m_pullTarget;
    bool m_isPulling = false;
    double m_pullShare = -1;
    QString m_defaultModel;
    int m_credentialRevision = 0;
    QString m_removedTitle;
    bool m_canUndoEdit = false;
    bool m_undoesFork = false;
    QUuid m_undoSession;
};

} // namespace varnel
