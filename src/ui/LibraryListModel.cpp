#include "ui/LibraryListModel.h"

#include "base/Text.h"
#include "ui/LibraryKinds.h"

#include <QDateTime>
#include <QLocale>

#include <algorithm>

namespace varnel {

namespace {

constexpr qsizetype longestTitle = 300;
constexpr qsizetype longestNote = 100000;

QString tidy(const QString& name)
{
    return wellFormed(name.simplified());
}

QString folderNamed(const QString& name)
{
    const QString trimmed = tidy(name);
    return trimmed.isEmpty() ? QStringLiteral("Library") : trimmed;
}

QString dayOf(Instant time)
{
    const auto seconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count();
    return QLocale().toString(QDateTime::fromMSecsSinceEpoch(seconds).date(), QLocale::ShortFormat);
}

} // namespace

LibraryListModel::LibraryListModel(AppModel& app, QObject* parent)
    : QAbstractListModel(parent)
    , m_app(app)
{
    connect(&app, &AppModel::libraryItemsChanged, this, &LibraryListModel::refresh);
    connect(&app, &AppModel::libraryQueryChanged, this, &LibraryListModel::refresh);
    connect(&app, &AppModel::attachmentIDsChanged, this, [this] {
        if (count() > 0)
            Q_EMIT dataChanged(index(0), index(count() - 1), {AttachedRole});
        Q_EMIT currentChanged();
    });
    refresh();
}

int LibraryListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant LibraryListModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const LibraryItem& item = m_rows[static_cast<std::size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
    case TitleRole:
        return item.title.left(longestTitle);
    case DrawingRole:
        return drawingOf(item.kind);
    case DetailRole:
        return detailOf(item);
    case AttachedRole: {
        const std::vector<QUuid> attached = m_app.attachmentIDs();
        return std::find(attached.begin(), attached.end(), item.id) != attached.end();
    }
    default:
        return {};
    }
}

QHash<int, QByteArray> LibraryListModel::roleNames() const
{
    return {
        {TitleRole, "title"}, {DrawingRole, "drawing"}, {DetailRole, "detail"}, {AttachedRole, "attached"}};
}

QString LibraryListModel::detailOf(const LibraryItem& item) const
{
    const QString detail = kindName(item.kind) + QStringLiteral(" · ") + dayOf(item.createdAt);
    return m_folder.isEmpty() ? item.folder.left(longestTitle) + QStringLiteral(" · ") + detail : detail;
}

void LibraryListModel::setFolder(const QString& folder)
{
    if (folder == m_folder)
        return;
    m_folder = folder;
    refresh();
    Q_EMIT filterChanged();
}

void LibraryListModel::setKind(int kind)
{
    if (kind == m_kind)
        return;
    m_kind = kind;
    refresh();
    Q_EMIT filterChanged();
}

void LibraryListModel::setShowsDeleted(bool deleted)
{
    if (deleted == m_showsDeleted)
        return;
    m_showsDeleted = deleted;
    refresh();
    Q_EMIT filterChanged();
}

bool LibraryListModel::isShown(const LibraryItem& item, const QStringList& words) const
{
    if (item.isLive() == m_showsDeleted || (m_kind >= 0 && static_cast<int>(item.kind) != m_kind) ||
        (!m_folder.isEmpty() && item.folder != m_folder))
        return false;
    return std::all_of(words.begin(), words.end(), [&item](const QString& word) {
        return item.title.contains(word, Qt::CaseInsensitive) ||
               item.note.contains(word, Qt::CaseInsensitive) ||
               item.folder.contains(word, Qt::CaseInsensitive) ||
               (item.urlString && item.urlString->contains(word, Qt::CaseInsensitive));
    });
}

void LibraryListModel::refresh()
{
    refreshFolders();
    const QStringList words = m_app.libraryQuery().simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    std::vector<LibraryItem> rows;
    for (const LibraryItem& item : m_app.libraryItems()) {
        if (isShown(item, words))
            rows.push_back(item);
    }
    const int before = currentRow();
    if (rows != m_rows) {
        beginResetModel();
        m_rows = std::move(rows);
        endResetModel();
    }
    // When the chosen item went, the one in its place is chosen.
    if (currentRow() < 0)
        m_current = m_rows.empty() ? QUuid()
                                   : m_rows[static_cast<std::size_t>(std::clamp(before, 0, count() - 1))].id;
    Q_EMIT countChanged();
    Q_EMIT currentChanged();
}

void LibraryListModel::refreshFolders()
{
    QStringList folders;
    for (const LibraryItem& item : m_app.libraryItems()) {
        if (!folders.contains(item.folder))
            folders.append(item.folder);
    }
    folders.sort(Qt::CaseInsensitive);
    if (!m_folder.isEmpty() && !folders.contains(m_folder)) {
        m_folder.clear();
        Q_EMIT filterChanged();
    }
    if (folders == m_folders)
        return;
    m_folders = folders;
    Q_EMIT foldersChanged();
}

int LibraryListModel::currentRow() const
{
    const auto found = std::ranges::find(m_rows, m_current, &LibraryItem::id);
    return found == m_rows.end() ? -1 : static_cast<int>(found - m_rows.begin());
}

void LibraryListModel::setCurrentRow(int row)
{
    if (row < 0 || row >= count() || row == currentRow())
        return;
    m_current = m_rows[static_cast<std::size_t>(row)].id;
    Q_EMIT currentChanged();
}

const LibraryItem* LibraryListModel::current() const
{
    return m_app.libraryItem(m_current);
}

QString LibraryListModel::currentTitle() const
{
    return current() ? current()->title.left(longestTitle) : QString();
}

QString LibraryListModel::currentNote() const
{
    return current() ? current()->note.left(longestNote) : QString();
}

QString LibraryListModel::currentFolder() const
{
    return current() ? current()->folder.left(longestTitle) : QString();
}

QString LibraryListModel::currentAddress() const
{
    return current() ? current()->urlString.value_or(QString()).left(longestNote) : QString();
}

QString LibraryListModel::currentDetail() const
{
    if (!current())
        return {};
    const QString added = tr("%1, added %2").arg(kindName(current()->kind), dayOf(current()->createdAt));
    return current()->isLive() ? added : tr("%1, deleted %2").arg(added, dayOf(*current()->deletedAt));
}

bool LibraryListModel::currentAttached() const
{
    const std::vector<QUuid> attached = m_app.attachmentIDs();
    return std::find(attached.begin(), attached.end(), m_current) != attached.end();
}

bool LibraryListModel::currentDeleted() const
{
    return current() && !current()->isLive();
}

void LibraryListModel::keepTyped(const QString& identifier, const QVariantMap& typed)
{
    const LibraryItem* const item = m_app.libraryItem(QUuid(identifier));
    if (!item)
        return;
    LibraryItem wanted = *item;
    if (const QString title = tidy(typed.value(QStringLiteral("title")).toString()); !title.isEmpty())
        wanted.title = title;
    if (const auto folder = typed.constFind(QStringLiteral("folder")); folder != typed.constEnd())
        wanted.folder = folderNamed(folder->toString());
    if (const auto note = typed.constFind(QStringLiteral("note")); note != typed.constEnd())
        wanted.note = wellFormed(note->toString());
    if (wanted == *item)
        return;
    m_app.changeItem(wanted.id, [&wanted](LibraryItem& changed) { changed = wanted; });
}

void LibraryListModel::moveTo(const QString& folder)
{
    if (current())
        keepTyped(currentIdentifier(), {{QStringLiteral("folder"), folder}});
}

void LibraryListModel::toggleAttached()
{
    if (currentAttached())
        m_app.detach(QUuid(m_current));
    else
        m_app.attach(QUuid(m_current));
}

void LibraryListModel::remove()
{
    if (!currentDeleted())
        m_app.deleteItem(QUuid(m_current));
}

void LibraryListModel::restore()
{
    m_app.restoreItem(QUuid(m_current));
}

void LibraryListModel::removeForGood()
{
    if (currentDeleted())
        m_app.removeItemForGood(QUuid(m_current));
}

void LibraryListModel::handOff()
{
    m_app.handOffItem(QUuid(m_current));
}

bool LibraryListModel::addLink(const QString& address, const QString& folder)
{
    const QString typed = address.trimmed();
    const bool isWhole = typed.contains(QLatin1String("://"));
    const QUrl url(isWhole ? typed : QStringLiteral("https://") + typed, QUrl::StrictMode);
    const bool isPage = url.scheme() == QLatin1String("https") || url.scheme() == QLatin1String("http");
    // A word alone is no address; with its scheme in front it is, for computers of the same network.
    if (!isPage || url.host().isEmpty() || (!isWhole && !url.host().contains(QLatin1Char('.'))))
        return false;
    const QString title = (url.host() + url.path()).left(longestTitle);
    m_app.addLink(title.endsWith(QLatin1Char('/')) ? title.chopped(1) : title, url.toString(), {}, folder);
    if (!m_app.libraryItems().empty())
        m_current = m_app.libraryItems().front().id;
    refresh();
    return true;
}

} // namespace varnel
