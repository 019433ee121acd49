#pragma once

#include "base/Clock.h"
#include "engine/AppModel.h"
#include "ui/ConversationRow.h"
#include "ui/EngineObjects.h"

#include <QAbstractListModel>
#include <QDate>
#include <QSet>
#include <QTimer>
#include <QtQml/qqmlregistration.h>

#include <map>
#include <set>
#include <vector>

namespace varnel {

/// The conversations as the sidebar lists them: pinned ones, then by day, only those that the search finds.
/// It follows the model row by row, so that what is on the screen stays where it is.
class ConversationListModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(int currentRow READ currentRow NOTIFY currentRowChanged)
    Q_PROPERTY(bool searching READ searching NOTIFY searchingChanged)
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role {
        IdRole = Qt::UserRole,
        TitleRole,
        PreviewRole,
        TimeRole,
        GroupRole,
        PinnedRole,
        StreamingRole,
        UnseenRole,
        CurrentRole,
        HitStartRole,
        HitLengthRole
    };

    /// Both outlive the list. Days change at midnight of this computer's zone.
    ConversationListModel(AppModel& app, const Clock& clock, QObject* parent = nullptr);
    static ConversationListModel* create(QQmlEngine* engine, QJSEngine*)
    {
        return provided<ConversationListModel>(engine);
    }

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    /// The row of the conversation that is shown, -1 if the search leaves it out.
    int currentRow() const;
    /// Whether the list is filtered.
    bool searching() const;
    int count() const { return static_cast<int>(m_rows.size()); }

    /// Operations on the conversation of a row; a row that is not there does nothing.
    /// Where the search found words in its messages, that is told with hitOpened().
    Q_INVOKABLE void open(int row);
    /// Opens the first row of what the search finds; at its hit, or at all, once there is an answer.
    Q_INVOKABLE void openFirstHit();
    /// The row of the conversation of that identifier, as the role tells it; -1 if the list has none.
    Q_INVOKABLE int rowOfIdentifier(const QString& id) const;
    Q_INVOKABLE void duplicate(int row);
    /// The message in which the search found its words; null if it is the title, or nothing is searched.
    Q_INVOKABLE QUuid hitMessage(int row) const;
    Q_INVOKABLE void rename(int row, const QString& title);
    Q_INVOKABLE void togglePinned(int row);
    Q_INVOKABLE void remove(int row);
    Q_INVOKABLE void removeCurrent();
    /// Shows the conversation that many rows below the one that is shown; stays at the ends.
    Q_INVOKABLE void step(int by);

Q_SIGNALS:
    void currentRowChanged();
    void searchingChanged();
    void countChanged();
    /// The user goes to another conversation; not sent when one comes to the front by itself.
    void aboutToOpen();
    /// A conversation was opened where the search found this text in this message.
    void hitOpened(const QString& message, const QString& text);

private:
    void show(int row);
    /// What a row was made of, and the row: most conversations are as they were.
    struct Described
    {
        Instant updatedAt;
        QString title;
        bool pinned = false;
        std::size_t messages = 0;
        ConversationRow row;
    };

    ConversationRow describe(const ChatSession& session, const QDateTime& now);
    const ConversationRow& describedAnew(const ChatSession& session, const QDateTime& now);
    const ConversationRow& described(const ChatSession& session, const QDateTime& now);
    QDateTime now() const;
    /// What the search found in a conversation; null while nothing is, or only its title is known to fit.
    const SessionHit* hitIn(const QUuid& session) const;
    bool isShown(const ChatSession& session) const;
    /// Makes the rows what they should be: with as few changes as possible, or, when most of them are others,
    /// at once.
    void refresh();
    bool isAnotherList(const std::vector<ConversationRow>& target) const;
    void replaceAll(std::vector<ConversationRow> target);
    void reconcile(const std::vector<ConversationRow>& target);
    void place(int row, const std::vector<ConversationRow>& target);
    void refreshRow(const QUuid& id);
    int rowOfSession(const QUuid& id) const;
    const QUuid* sessionAt(int row) const;

    void takeHits();
    void noteStreaming();
    void noteSelection();
    void awaitMidnight();

    AppModel& m_app;
    const Clock& m_clock;
    std::vector<ConversationRow> m_rows;
    std::map<QUuid, Described> m_described;
    QDate m_describedDay;
    std::map<QUuid, SessionHit> m_hits;
    /// What is to be opened at its hit once the search has ended; null for what it finds first.
    std::optional<QUuid> m_awaited;
    std::set<QUuid> m_unseen;
    QUuid m_streaming;
    QUuid m_selected;
    QTimer m_midnight;
};

} // namespace varnel
