#include "ui/ConversationListModel.h"

#include "engine/SessionSearch.h"

#include <QTimeZone>

#include <algorithm>

namespace varnel {

ConversationListModel::ConversationListModel(AppModel& app, const Clock& clock, QObject* parent)
    : QAbstractListModel(parent)
    , m_app(app)
    , m_clock(clock)
{
    connect(&app, &AppModel::sessionsChanged, this, &ConversationListModel::refresh);
    connect(&app, &AppModel::sessionChanged, this, &ConversationListModel::refreshRow);
    connect(&app, &AppModel::messagesChanged, this, &ConversationListModel::refreshRow);
    connect(&app, &AppModel::messageChanged, this, &ConversationListModel::refreshRow);
    connect(&app, &AppModel::selectionChanged, this, &ConversationListModel::noteSelection);
    connect(&app, &AppModel::isStreamingChanged, this, &ConversationListModel::noteStreaming);
    connect(&app, &AppModel::sessionQueryChanged, this, [this] { m_awaited.reset(); });
    connect(&app, &AppModel::sessionQueryChanged, this, &ConversationListModel::refresh);
    connect(&app, &AppModel::sessionQueryChanged, this, &ConversationListModel::searchingChanged);
    connect(&app, &AppModel::sessionHitsChanged, this, &ConversationListModel::takeHits);
    m_midnight.setSingleShot(true);
    connect(&m_midnight, &QTimer::timeout, this, [this] {
        refresh();
        awaitMidnight();
    });
    m_selected = app.selection();
    refresh();
    awaitMidnight();
}

int ConversationListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant ConversationListModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const ConversationRow& row = m_rows[static_cast<std::size_t>(index.row())];
    switch (role) {
    case IdRole:
        return row.id.toString(QUuid::WithoutBraces);
    case Qt::DisplayRole:
    case TitleRole:
        return row.title;
    case PreviewRole:
        return row.preview;
    case TimeRole:
        return row.time;
    case GroupRole:
        return row.group;
    case PinnedRole:
        return row.pinned;
    case StreamingRole:
        return row.streaming;
    case UnseenRole:
        return row.unseen;
    case CurrentRole:
        return row.current;
    case HitStartRole:
        return row.hitStart;
    case HitLengthRole:
        return row.hitLength;
    default:
        return {};
    }
}

QHash<int, QByteArray> ConversationListModel::roleNames() const
{
    return {{IdRole, "identifier"},       {TitleRole, "title"},        {PreviewRole, "preview"},
            {TimeRole, "time"},           {GroupRole, "group"},        {PinnedRole, "pinned"},
            {StreamingRole, "streaming"}, {UnseenRole, "unseen"},      {CurrentRole, "current"},
            {HitStartRole, "hitStart"},   {HitLengthRole, "hitLength"}};
}

int ConversationListModel::currentRow() const
{
    return rowOfSession(m_app.selection());
}

bool ConversationListModel::searching() const
{
    return !m_app.sessionQuery().trimmed().isEmpty();
}

void ConversationListModel::open(int row)
{
    Q_EMIT aboutToOpen();
    show(row);
}

void ConversationListModel::show(int row)
{
    const QUuid* const id = sessionAt(row);
    if (!id)
        return;
    const SessionHit* const found = searching() ? hitIn(*id) : nullptr;
    const SessionHit hit = found ? *found : SessionHit();
    m_app.select(QUuid(*id));
    if (!hit.message.isNull())
        Q_EMIT hitOpened(hit.message.toString(QUuid::WithoutBraces),
                         hit.snippet.mid(hit.hitStart, hit.hitLength));
}

void ConversationListModel::openFirstHit()
{
    if (!searching())
        return;
    m_awaited.reset();
    if (!m_app.sessionHits())
        m_awaited = m_rows.empty() ? QUuid() : m_rows.front().id; // its title holds the words
    open(0);
}

int ConversationListModel::rowOfIdentifier(const QString& id) const
{
    return rowOfSession(QUuid(id));
}

void ConversationListModel::duplicate(int row)
{
    if (const QUuid* const id = sessionAt(row))
        m_app.duplicate(QUuid(*id));
}

void ConversationListModel::rename(int row, const QString& title)
{
    if (const QUuid* const id = sessionAt(row))
        m_app.rename(QUuid(*id), title);
}

void ConversationListModel::togglePinned(int row)
{
    if (const QUuid* const id = sessionAt(row))
        m_app.togglePinned(QUuid(*id));
}

void ConversationListModel::remove(int row)
{
    if (const QUuid* const id = sessionAt(row))
        m_app.remove(QUuid(*id));
}

void ConversationListModel::removeCurrent()
{
    m_app.remove(QUuid(m_app.selection()));
}

void ConversationListModel::step(int by)
{
    const int current = currentRow();
    const int last = count() - 1;
    if (last >= 0)
        open(current < 0 ? 0 : std::clamp(current + by, 0, last));
}

QDateTime ConversationListModel::now() const
{
    return QDateTime::fromMSecsSinceEpoch(m_clock.now().time_since_epoch().count());
}

const ConversationRow& ConversationListModel::describedAnew(const ChatSession& session, const QDateTime& now)
{
    Described& kept = m_described[session.id];
    kept = {.updatedAt = session.updatedAt,
            .title = session.title,
            .pinned = session.pinned,
            .messages = session.messages.size(),
            .row = varnel::rowOf(session, now)};
    return kept.row;
}

const ConversationRow& ConversationListModel::described(const ChatSession& session, const QDateTime& now)
{
    const auto kept = m_described.find(session.id);
    if (kept == m_described.end())
        return describedAnew(session, now);
    const Described& known = kept->second;
    const bool isCurrent = known.updatedAt == session.updatedAt && known.pinned == session.pinned &&
                           known.messages == session.messages.size() && known.title == session.title;
    return isCurrent ? known.row : describedAnew(session, now);
}

ConversationRow ConversationListModel::describe(const ChatSession& session, const QDateTime& now)
{
    ConversationRow row = described(session, now);
    row.streaming = session.id == m_app.streamingSession();
    row.unseen = m_unseen.contains(session.id);
    row.current = session.id == m_app.selection();
    if (const SessionHit* const hit = hitIn(session.id); hit && !hit->snippet.isEmpty()) {
        row.preview = hit->snippet;
        row.hitStart = static_cast<int>(hit->hitStart);
        row.hitLength = static_cast<int>(hit->hitLength);
    }
    return row;
}

bool ConversationListModel::isShown(const ChatSession& session) const
{
    return !searching() || m_hits.contains(session.id) || holdsWords(session.title, m_app.sessionQuery());
}

void ConversationListModel::refresh()
{
    const QDateTime present = now();
    const int previousCount = count();
    const int previousRow = currentRow();
    // Rows tell days, and those of conversations that are gone are not kept for ever.
    if (std::exchange(m_describedDay, present.date()) != present.date() ||
        m_described.size() > 2 * m_app.sessions().size() + 100)
        m_described.clear();
    std::vector<ConversationRow> target;
    target.reserve(m_app.sessions().size());
    for (const ChatSession& session : m_app.sessions()) {
        if (isShown(session))
            target.push_back(describe(session, present));
    }
    const bool isAnother = isAnotherList(target);
    if (isAnother) {
        replaceAll(std::move(target));
    } else {
        reconcile(target);
    }
    if (count() != previousCount)
        Q_EMIT countChanged();
    if (isAnother || currentRow() != previousRow)
        Q_EMIT currentRowChanged();
}

/// Row by row, thousands that come and go would each move all that are below.
bool ConversationListModel::isAnotherList(const std::vector<ConversationRow>& target) const
{
    constexpr qsizetype most = 64;
    QSet<QUuid> shown;
    shown.reserve(count());
    for (const ConversationRow& row : m_rows)
        shown.insert(row.id);
    qsizetype arriving = 0;
    for (const ConversationRow& row : target)
        arriving += shown.remove(row.id) ? 0 : 1;
    const qsizetype leaving = shown.size();
    return arriving + leaving > most;
}

void ConversationListModel::replaceAll(std::vector<ConversationRow> target)
{
    if (!m_rows.empty()) {
        beginRemoveRows({}, 0, count() - 1);
        m_rows.clear();
        endRemoveRows();
    }
    if (!target.empty()) {
        beginInsertRows({}, 0, static_cast<int>(target.size()) - 1);
        m_rows = std::move(target);
        endInsertRows();
    }
}

void ConversationListModel::reconcile(const std::vector<ConversationRow>& target)
{
    QSet<QUuid> wanted;
    wanted.reserve(static_cast<qsizetype>(target.size()));
    for (const ConversationRow& row : target)
        wanted.insert(row.id);
    for (int row = count() - 1; row >= 0; --row) {
        if (wanted.contains(m_rows[static_cast<std::size_t>(row)].id))
            continue;
        beginRemoveRows({}, row, row);
        m_rows.erase(m_rows.begin() + row);
        endRemoveRows();
    }
    for (int row = 0; row < static_cast<int>(target.size()); ++row)
        place(row, target);
}

void ConversationListModel::place(int row, const std::vector<ConversationRow>& target)
{
    const ConversationRow& wanted = target[static_cast<std::size_t>(row)];
    const auto here = m_rows.begin() + row;
    const auto found = std::find_if(
        here, m_rows.end(), [&wanted](const ConversationRow& other) { return other.id == wanted.id; });
    if (found == m_rows.end()) {
        beginInsertRows({}, row, row);
        m_rows.insert(here, wanted);
        endInsertRows();
        return;
    }
    if (found == here + 1 && static_cast<std::size_t>(row) + 1 < target.size()) {
        // It is the one above that left: moving that one down is one change instead of one for each below.
        const QUuid leaving = here->id;
        const auto home =
            std::find_if(target.begin() + row, target.end(),
                         [&leaving](const ConversationRow& other) { return other.id == leaving; });
        const int to = std::min(static_cast<int>(home - target.begin()), count() - 1);
        beginMoveRows({}, row, row, {}, to + 1);
        std::rotate(here, here + 1, m_rows.begin() + to + 1);
        endMoveRows();
    } else if (found != here) {
        const int from = static_cast<int>(found - m_rows.begin());
        beginMoveRows({}, from, from, {}, row);
        std::rotate(here, found, found + 1);
        endMoveRows();
    }
    if (m_rows[static_cast<std::size_t>(row)] != wanted) {
        m_rows[static_cast<std::size_t>(row)] = wanted;
        Q_EMIT dataChanged(index(row), index(row));
    }
}

void ConversationListModel::refreshRow(const QUuid& id)
{
    const int row = rowOfSession(id);
    const ChatSession* const session = m_app.session(id);
    if (row < 0 || !session)
        return;
    const QDateTime present = now();
    static_cast<void>(describedAnew(*session, present));
    ConversationRow wanted = describe(*session, present);
    ConversationRow& shown = m_rows[static_cast<std::size_t>(row)];
    if (wanted == shown)
        return;
    shown = std::move(wanted);
    Q_EMIT dataChanged(index(row), index(row));
}

int ConversationListModel::rowOfSession(const QUuid& id) const
{
    const auto found = std::find_if(m_rows.begin(), m_rows.end(),
                                    [&id](const ConversationRow& row) { return row.id == id; });
    return found == m_rows.end() ? -1 : static_cast<int>(found - m_rows.begin());
}

const QUuid* ConversationListModel::sessionAt(int row) const
{
    return row < 0 || row >= count() ? nullptr : &m_rows[static_cast<std::size_t>(row)].id;
}

const SessionHit* ConversationListModel::hitIn(const QUuid& session) const
{
    const auto found = m_hits.find(session);
    return found == m_hits.end() ? nullptr : &found->second;
}

QUuid ConversationListModel::hitMessage(int row) const
{
    const QUuid* const id = sessionAt(row);
    const SessionHit* const hit = id ? hitIn(*id) : nullptr;
    return hit ? hit->message : QUuid();
}

void ConversationListModel::takeHits()
{
    m_hits.clear();
    if (m_app.sessionHits()) {
        for (const SessionHit& hit : *m_app.sessionHits())
            m_hits.emplace(hit.session, hit);
    }
    refresh();
    if (!m_app.sessionHits())
        return;
    const std::optional<QUuid> awaited = std::exchange(m_awaited, std::nullopt);
    if (awaited && (awaited->isNull() || *awaited == m_app.selection()))
        show(awaited->isNull() ? 0 : rowOfSession(*awaited));
}

void ConversationListModel::noteStreaming()
{
    const QUuid previous = std::exchange(m_streaming, m_app.streamingSession());
    if (m_streaming.isNull() && !previous.isNull() && previous != m_app.selection())
        m_unseen.insert(previous);
    refreshRow(previous);
    refreshRow(m_streaming);
}

void ConversationListModel::noteSelection()
{
    m_unseen.erase(m_app.selection());
    refreshRow(std::exchange(m_selected, m_app.selection()));
    refreshRow(m_selected);
    Q_EMIT currentRowChanged();
}

void ConversationListModel::awaitMidnight()
{
    const QDateTime present = now();
    const QDateTime midnight = present.date().addDays(1).startOfDay(present.timeZone());
    // A clock that was set back must not make it run dry.
    constexpr qint64 shortest = 1000;
    m_midnight.start(static_cast<int>(std::max(shortest, present.msecsTo(midnight) + shortest)));
}

} // namespace varnel
