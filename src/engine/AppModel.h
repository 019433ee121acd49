#pragma once

#include "base/ProcessRunner.h"
#include "base/Task.h"
#include "base/Worker.h"
#include "engine/AppServices.h"
#include "engine/AppState.h"
#include "engine/ConversationFiles.h"
#include "engine/PromptMaterial.h"
#include "engine/TunnelOpening.h"
#include "engine/Turn.h"
#include "engine/TurnBuffers.h"
#include "providers/credentials/ApiBase.h"
#include "providers/credentials/CredentialWorker.h"
#include "store/ConversationKeeper.h"
#include "store/LibraryStore.h"
#include "store/ProjectPlan.h"

#include <QTimer>
#include <QUrl>

#include <memory>
#include <set>
#include <stop_token>

namespace varnel {

struct ProbeResult;

/// What the user can do, and the state that changes by it. Views read the properties, call the operations and
/// look again when told that something changed. It belongs to one thread; one turn, one pull and one attempt
/// to connect run at a time.
///
/// Operations never throw: what goes wrong is said in `statusMessage`, of models in `pullStatus`.
class AppModel : public varnel::AppState // in full, for the tools that look at screens
{
    Q_OBJECT
    Q_PROPERTY(QUuid selection READ selection WRITE select NOTIFY selectionChanged)
    Q_PROPERTY(QString draft READ draft WRITE setDraft NOTIFY draftChanged)
    Q_PROPERTY(QString selectedTitle READ selectedTitle NOTIFY selectedSessionChanged)
    Q_PROPERTY(QString selectedModel READ selectedModel NOTIFY selectedSessionChanged)
    Q_PROPERTY(bool needsCloudConfirmation READ needsCloudConfirmation NOTIFY selectedSessionChanged)
    Q_PROPERTY(QString toolsHint READ toolsHint NOTIFY selectedSessionChanged)
    Q_PROPERTY(bool selectedIsEmpty READ selectedIsEmpty NOTIFY selectedSessionChanged)

public:
    using Approval = std::function<Task<bool>(QString url, std::stop_token stop)>;

    using Services = AppServices;

    /// Reads what is stored; where nothing can be read, begins with one empty conversation.
    explicit AppModel(Services services, QObject* parent = nullptr);
    AppModel(const AppModel&) = delete;
    AppModel& operator=(const AppModel&) = delete;
    AppModel(AppModel&&) = delete;
    AppModel& operator=(AppModel&&) = delete;
    /// Stops everything and writes what is not saved yet.
    ~AppModel() override;

    /// Lets files that are being written be finished, for some seconds at most, ends the running reply,
    /// keeping what has come of it, stops the tunnel and saves. For the end of the program.
    void shutDown();

    QString selectedTitle() const;
    /// The name of what answers the selected conversation.
    QString selectedModel() const;
    bool selectedIsEmpty() const;
    /// How much of its context the selected conversation takes with what is drafted; an estimate.
    ContextUse contextUse() const;
    /// What the settings of a new conversation are.
    ChatSession newSettings() const;
    /// What is to be said when that is more than there is; empty while it is not. Follows the draft too.
    QString contextWarning() const;
    /// What is to be said when the selected conversation searches the web and its model was found to have no
    /// tools; empty otherwise.
    QString toolsHint() const;
    /// Whether the selected conversation is about to be sent to a provider to which none has gone yet, so
    /// that the user is to be asked first.
    bool needsCloudConfirmation() const;
    /// The user agrees to send to the provider of the selected conversation, from now on.
    Q_INVOKABLE void confirmCloud();
    /// Where the public services are.
    const ApiBases& apiBases() const { return m_bases; }
    CredentialWorker& credentials() { return m_credentials; }
    /// The settings of no conversation; those that are shown elsewhere too have an operation here.
    Preferences& preferences() { return m_services.preferences; }
    const DiagnosticsLog& diagnosticsLog() const { return m_services.log; }

    // Conversations. An identifier that names none changes nothing.

    /// Shows a conversation.
    void select(const QUuid& id);
    /// Makes an empty conversation in front of the others and selects it; an empty one that is selected is
    /// kept.
    Q_INVOKABLE void newConversation();
    Q_INVOKABLE void rename(const QUuid& id, const QString& title);
    Q_INVOKABLE void togglePinned(const QUuid& id);
    /// Makes a copy of a conversation and selects it.
    Q_INVOKABLE void duplicate(const QUuid& id);
    /// Removes a conversation; the last one is replaced by an empty one. For ten seconds it can be brought
    /// back, however many others are removed meanwhile.
    Q_INVOKABLE void remove(const QUuid& id);
    /// Brings the conversation that was removed last of those back, with its draft, and selects it.
    Q_INVOKABLE void undoRemove();
    /// Adds a conversation that was read from a file, and selects it.
    void addConversation(ChatSession session);
    /// Changes the settings of the selected conversation; its messages, times and identity stay.
    void changeSettings(const std::function<void(ChatSession&)>& change);
    /// The same for any conversation.
    void changeSettings(const QUuid& id, const std::function<void(ChatSession&)>& change);

    /// The Ollama model that answers the selected conversation from now on.
    Q_INVOKABLE void chooseModel(const QString& name);
    /// The provider's model that answers the selected conversation from now on.
    /// @param model the preferred one of that provider if it is empty.
    void chooseRemoteModel(RemoteProvider provider, const QString& model);
    /// Switches the selected conversation to the installed model that suits a kind of work best.
    void chooseWorkContext(WorkContext context);
    void setSearch(SearchSource source);
    /// @param session the selected one if it is null, here and below.
    Q_INVOKABLE void setProjectPath(const QString& path, const QUuid& session = {});

    // Copies outside the program. The status says what became of them.

    /// Saves a conversation to a file, in place of what is there.
    void exportConversation(const QUuid& id, const QString& file, ConversationForm form);
    /// Has something else written to a file on the model's worker, with the same words about it. The model
    /// keeps the task and ends it before the worker.
    void saveWith(const std::function<Task<void>(Worker*)>& write, const QString& file);
    /// Saves the selected conversation as Markdown.
    Q_INVOKABLE void saveTranscript(const QString& file);
    /// Saves one message of a conversation as it stands.
    void saveReply(const QUuid& session, const QUuid& message, const QString& file);
    /// Adds a conversation that was exported as JSON, and selects it.
    Q_INVOKABLE void importConversation(const QString& file);

    // The composer of the selected conversation.

    /// Puts the text of a web page below the draft. A newer page replaces one that is still being read.
    Q_INVOKABLE void readPage(const QString& url, const QUuid& session = {});
    Q_INVOKABLE void stopReadingPage();

    void setDraft(const QString& text);
    Q_INVOKABLE void attach(const QUuid& item);
    Q_INVOKABLE void detach(const QUuid& item);

    // Turns.

    /// Sends the draft of the selected conversation with its attachments. A turn that cannot be sent leaves
    /// both where they are, and the status says why.
    Q_INVOKABLE void send();
    /// Ends the running reply; what has arrived of it stays.
    Q_INVOKABLE void stop();
    /// Sends the prompt of a failed turn again.
    Q_INVOKABLE void tryAgain();
    /// The same with what its failure offers: the temperature 1, or no web tools.
    Q_INVOKABLE void resetTemperatureAndTryAgain();
    Q_INVOKABLE void turnSearchOffAndTryAgain();
    /// Takes the prompt of a failed turn back into the composer.
    Q_INVOKABLE void editFailed();
    /// Asks for the last reply of the selected conversation once more.
    Q_INVOKABLE void regenerate();
    /// Replaces a prompt of the selected conversation and everything after it, and sends it.
    Q_INVOKABLE void editAndResend(const QUuid& message, const QString& text);
    /// Goes on from a message of the selected conversation in a new one.
    Q_INVOKABLE void fork(const QUuid& message);
    /// Brings back what the last of these three replaced; until the next send.
    Q_INVOKABLE void undoEdit();
    /// Opens a new conversation with a reply as its draft, to be answered by another model.
    Q_INVOKABLE void handOffReply(const QUuid& message);
    /// Opens a new conversation about an item of the library.
    Q_INVOKABLE void handOffItem(const QUuid& item);
    /// Decides about an address that the model wants to read and that nobody mentioned; by default it may.
    void setApproval(Approval approval) { m_approval = std::move(approval); }
    /// Why the selected conversation's model cannot read an item; empty if it can.
    QString unreadableReason(const LibraryItem& item) const;

    // The connection.

    /// Opens the tunnel where there is one, then asks the server. A newer attempt replaces one under way.
    Q_INVOKABLE void openConnection();
    Q_INVOKABLE void closeConnection();
    /// Asks the server whether it is there and which models it has.
    Q_INVOKABLE void checkConnection();
    /// At the start of the program: looks where no tunnel has to be opened first.
    void checkAtStart();
    void setConnection(const ConnectionSettings& settings);
    /// Asks the server which models it holds in memory.
    Q_INVOKABLE void refreshRunningModels();

    // Models of the server.

    /// Searches the public library for `modelQuery`.
    Q_INVOKABLE void searchModels();
    Q_INVOKABLE void pullModel(const QString& name);
    Q_INVOKABLE void stopPull();
    Q_INVOKABLE void removeModel(const QString& name);
    Q_INVOKABLE void chooseDefaultModel(const QString& name);

    // The library.

    /// Copies files into the library.
    /// @param andAttach whether they go with the next message of the conversation.
    void importFiles(const QList<QUrl>& files, const QString& folder, bool andAttach,
                     const QUuid& session = {});
    /// Puts something into the library that no file holds yet, such as a picture that was pasted.
    /// @param contents makes the bytes, on another thread.
    /// @param fileName what such a file would be called.
    void importContents(const std::function<QByteArray()>& contents, const QString& fileName,
                        const QString& folder, bool andAttach);
    void addLink(const QString& title, const QString& url, const QString& note, const QString& folder);
    /// Changes title, note or folder of an item.
    void changeItem(const QUuid& id, const std::function<void(LibraryItem&)>& change);
    Q_INVOKABLE void deleteItem(const QUuid& id);
    Q_INVOKABLE void restoreItem(const QUuid& id);
    Q_INVOKABLE void removeItemForGood(const QUuid& id);
    Q_INVOKABLE void backUp();
    /// Takes a backup in place of what there is; a backup of that is made first.
    Q_INVOKABLE void restoreBackup(const QString& name);

    // Files of a project.

    /// What writing the files of a reply would do, read on another thread, after what was asked for before;
    /// empty when it has none or no folder is chosen, and then the status says so.
    Task<std::vector<PlannedProjectFile>> planProjectFiles(QUuid message);
    /// Writes the files of a reply on another thread; the status says how it went.
    /// @param paths only these; all of them if it is empty.
    void writeProjectFiles(const QUuid& message, const QStringList& paths = {});
    /// Puts back what the last writing overwrote, in the same way.
    void restoreProjectFiles();
    bool canRestoreProjectFiles() const { return m_projectBackup.has_value(); }

    // Preferences and credentials.

    void setPassthroughEnabled(bool allowed);
    void setContextButtonEnabled(bool shown);
    void setDisabledProviderModels(const std::set<QString>& entries);
    /// Says that a credential was saved or removed through credentials().
    void noteCredentialChange();

private:
    struct RemovedSession;
    struct ReplacedMessages;

    QString useLocation();
    void load();
    void noteSave(const SaveStatus& status);
    /// Says what the user has to know, in the status and the log.
    void notify(const QString& text);
    void repeatStartNotices();
    void endStartNotices();
    /// Runs something that may throw Error, which becomes the status; whether it went well.
    bool attempt(const std::function<void()>& action);
    void saveSessions();
    void saveDrafts();

    ChatSession* edit(const QUuid& id);
    ChatMessage* editMessage(const QUuid& session, const QUuid& message);
    std::size_t placeFor(const ChatSession& session) const;
    void insertAndSelect(ChatSession session);
    void insertNewConversation();
    /// Marks a conversation as changed now and moves it to its place.
    void touch(const QUuid& id);
    void moveIntoPlace(const QUuid& id);
    void announceSession(const QUuid& id);
    void announceSelection();
    void addToDraft(const QUuid& session, const QString& text);
    void takeFromDraft(const QUuid& session, const QString& prompt, const std::vector<QUuid>& attachments);
    void detachEverywhere(const QUuid& item);
    bool isUntouched(const ChatSession& session) const;
    void announceRemoved();
    Task<void> followUndoTime();
    void searchSessions();
    void searchSessionsAgain();
    Task<void> followSessionSearch(QString query, std::stop_token stop);

    void setFailure(std::optional<TurnFailure> failure);
    /// @param session whose prompt is being made ready; null for none.
    void setPreparing(const QUuid& session);
    void setStreaming(const QUuid& session, const QUuid& message);
    /// Whether a turn runs, which is said.
    bool refuseWhileStreaming();
    /// Whether a conversation is answered by a provider and none is allowed; it is Ollama's then.
    bool refusesPassthrough(QUuid session);
    void resend(QUuid session, QUuid prompt, std::optional<QString> edited = {});
    Task<void> followSend(QUuid session, QString prompt, std::vector<QUuid> attachments,
                          std::stop_token stop);
    Task<void> followResend(QUuid session, QUuid prompt, std::optional<QString> edited, std::stop_token stop);
    Task<void> runPrepared(QUuid session, PromptMaterial material, std::stop_token stop);
    Task<void> savePrompt(QUuid session, QUuid prompt, std::stop_token stop);
    Task<PromptMaterial> preparePrompt(PromptQuestion question, std::stop_token stop);
    void checkStillAsked(const ChatSession& asked);
    TurnRequest turnRequest(const ChatSession& session, PromptMaterial material) const;
    TurnServices turnServices();
    TurnObserver observerOf(const QUuid& session, const QUuid& message);
    void showReply(const QUuid& session, const QUuid& message, const QString& thinking, const QString& reply);
    void showLatest();
    QUuid beginReply(const QUuid& session, const TurnRequest& request);
    void completeReply(const QUuid& session, const QUuid& message, const TurnOutcome& outcome);
    void endTurn(const QUuid& session, const QUuid& message, TurnFailure failure);
    void keep(const QUuid& session, const QUuid& message);
    std::vector<LibraryItem> itemsOf(const std::vector<QUuid>& ids) const;
    /// The items of the library whose media a stored prompt carries.
    std::vector<LibraryItem> mediaItemsOf(const QString& content) const;
    /// The items of the library that are attached to a stored prompt.
    std::vector<LibraryItem> attachedItems(const QString& content) const;

    void setReplaced(std::unique_ptr<ReplacedMessages> replaced);
    void replaceFrom(const QUuid& session, std::size_t index);
    void replacePrompt(const QUuid& session, std::size_t index, const QString& content);
    void openHandOff(Draft draft);

    void setOffline(const QString& message);
    Task<void> followConnection(std::stop_token stop);
    Task<void> followProbe(std::stop_token stop);
    Task<void> probeServer(std::stop_token stop);
    void showConnected(const QUrl& base, const ProbeResult& result);
    Task<void> followRunning(std::stop_token stop);
    void tunnelEnded(int status, const QString& output);
    void sayTunnelClosed();
    void dropTunnel();
    void dropOpening();

    Task<void> followModelSearch(QString query, std::stop_token stop);
    Task<void> followPull(QString name, std::stop_token stop);
    Task<void> followRemoval(QString name, std::stop_token stop);
    Task<void> refreshInstalledModels(std::stop_token stop);
    void setPullStatus(const QString& text, double share = -1);
    void saySearch(const QString& text);

    void keepTask(Task<void> task);
    void finishFileWork();
    Task<void> followSaving(Task<void> saving, QString file);
    Task<void> followConversationImport(QString file);
    Task<void> followPage(QUuid session, QString url, std::stop_token stop);
    void changeFailedAndTryAgain(const std::function<void(ChatSession&)>& change);

    void countImports(int change);
    Task<void> followImport(std::vector<std::function<LibraryItem()>> makers, QUuid attachTo);
    Task<void> followBackup();
    Task<void> followRestore(QString name);
    Task<BackupContents> exchangeBackups(QString name);
    bool refuseSecondBackup();
    Task<void> followProjectWrite(ChatSession session, std::vector<ProjectFile> files);
    Task<void> followProjectRestore(ProjectBackup backup);
    void showLibrary();

    Services m_services;
    ApiBases m_bases;
    SystemProcessRunner m_processes;
    Worker m_worker{2};
    // One after the other, in the order they were asked for.
    Worker m_projectWorker;
    CredentialWorker m_credentials;
    ConversationKeeper m_keeper;
    LibraryStore m_library;
    TunnelPort m_port;
    TunnelController m_tunnel;
    Approval m_approval;

    QTimer m_draftTimer;
    std::vector<RemovedSession> m_removed; // the one that was removed last comes last
    std::unique_ptr<ReplacedMessages> m_replaced;
    std::optional<ProjectBackup> m_projectBackup;
    SystemPageNetwork m_pages;
    std::shared_ptr<TurnBuffers> m_buffers; // of the running turn
    QUuid m_preparing;                      // the conversation whose prompt is being made ready
    bool m_isEnding = false;
    bool m_isOpeningTunnel = false;
    std::optional<TunnelExit> m_tunnelExit; // that nobody has told the user of
    // What was to be said until the server was asked for the first time, and is said again then.
    std::optional<QStringList> m_startNotices = QStringList();
    // The estimate of the selected conversation without its draft.
    mutable std::optional<ContextUse> m_historyUse;

    // Providers that the user agreed to; those that have answered before join when they are asked about.
    mutable std::set<RemoteProvider> m_confirmedClouds;
    // Models of which the server said so in this run.
    std::set<QString> m_modelsWithoutTools;

    std::stop_source m_stopTurn;
    std::stop_source m_stopConnection;
    std::stop_source m_stopPull;
    std::stop_source m_stopModelSearch;
    std::stop_source m_stopSessionSearch;
    std::stop_source m_stopPage;
    // Last, so that they are gone before anything they use.
    Task<void> m_turn;
    Task<void> m_connectionTask;
    Task<void> m_running;
    Task<void> m_pull;
    Task<void> m_modelSearch;
    Task<void> m_sessionSearch;
    Task<void> m_undoTime;
    Task<void> m_page;
    std::vector<Task<void>> m_fileTasks;
    Task<void> m_backup;
};

} // namespace varnel
