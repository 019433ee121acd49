#include "ui/AttachmentListModel.h"

#include "base/Error.h"
#include "store/FileAccess.h"
#include "store/LibraryPath.h"
#include "store/LibraryStore.h"
#include "ui/Intake.h"
#include "ui/LibraryKinds.h"

namespace varnel {

namespace {

constexpr qsizetype longestTitle = 200;

bool isPasted(const LibraryItem& item)
{
    return item.kind == LibraryKind::File && item.relativePath && item.folder == Intake::pastedFolder();
}

} // namespace

AttachmentListModel::AttachmentListModel(AppModel& app, QObject* parent)
    : QAbstractListModel(parent)
    , m_app(app)
{
    connect(&app, &AppModel::attachmentIDsChanged, this, &AttachmentListModel::refresh);
    connect(&app, &AppModel::libraryItemsChanged, this, &AttachmentListModel::refresh);
    connect(&app, &AppModel::selectedSessionChanged, this, &AttachmentListModel::refresh);
    refresh();
}

int AttachmentListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant AttachmentListModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const AttachmentRow& row = m_rows[static_cast<std::size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
    case TitleRole:
        return row.title;
    case DrawingRole:
        return row.drawing;
    case ReasonRole:
        return row.reason;
    case PastedRole:
        return row.pasted;
    default:
        return {};
    }
}

QHash<int, QByteArray> AttachmentListModel::roleNames() const
{
    return {{TitleRole, "title"}, {DrawingRole, "drawing"}, {ReasonRole, "reason"}, {PastedRole, "pasted"}};
}

void AttachmentListModel::remove(int row)
{
    if (row < 0 || row >= count())
        return;
    m_app.detach(QUuid(m_rows[static_cast<std::size_t>(row)].id));
    Q_EMIT taken();
}

void AttachmentListModel::showInText(int row)
{
    if (row >= 0 && row < count() && m_rows[static_cast<std::size_t>(row)].pasted)
        m_reading = followText(m_rows[static_cast<std::size_t>(row)].id, m_app.selection());
}

Task<void> AttachmentListModel::followText(QUuid item, QUuid session)
{
    const LibraryItem* const found = m_app.libraryItem(item);
    if (!found || !found->relativePath)
        co_return;
    const QString root = m_app.location().folder();
    const QString path = *found->relativePath;
    QString text;
    try {
        text = co_await m_worker.run([root, path](const std::stop_token&) {
            return QString::fromUtf8(readBeginning(libraryFile(root, path), largestImport).bytes);
        });
    } catch (const Cancelled&) {
        co_return;
    } catch (const Error&) {
        // The attachment stays; what is wrong with its file is said when it is sent.
        co_return;
    }
    const std::vector<QUuid> attached = m_app.attachmentIDs();
    const bool isAttached = std::find(attached.begin(), attached.end(), item) != attached.end();
    if (m_app.selection() != session || !isAttached) // sent or taken away meanwhile
        co_return;
    const QString draft = m_app.draft();
    m_app.setDraft(draft.isEmpty() ? text : draft + QStringLiteral("\n\n") + text);
    m_app.deleteItem(item);
    Q_EMIT taken();
}

void AttachmentListModel::refresh()
{
    std::vector<AttachmentRow> rows;
    for (const QUuid& id : m_app.attachmentIDs()) {
        const LibraryItem* const item = m_app.libraryItem(id);
        if (!item || !item->isLive())
            continue;
        rows.push_back({.id = id,
                        .title = item->title.left(longestTitle),
                        .drawing = drawingOf(item->kind),
                        .reason = m_app.unreadableReason(*item).left(2 * longestTitle),
                        .pasted = isPasted(*item)});
    }
    if (rows == m_rows)
        return;
    beginResetModel();
    m_rows = std::move(rows);
    endResetModel();
    Q_EMIT countChanged();
}

} // namespace varnel
