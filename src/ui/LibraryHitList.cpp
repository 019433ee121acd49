#include "ui/LibraryHitList.h"

#include <algorithm>

namespace varnel {

namespace {

// What a page says has no length that one could rely on.
constexpr qsizetype longestName = 200;
constexpr qsizetype longestText = 400;

} // namespace

LibraryHitList::LibraryHitList(AppModel& app, QObject* parent)
    : QAbstractListModel(parent)
    , m_app(app)
{
    connect(&app, &AppModel::libraryHitsChanged, this, [this] {
        beginResetModel();
        endResetModel();
        Q_EMIT countChanged();
    });
    connect(&app, &AppModel::installedModelsChanged, this, [this] {
        if (count() > 0)
            Q_EMIT dataChanged(index(0), index(count() - 1), {InstalledRole});
    });
    connect(&app, &AppModel::pullStatusChanged, this, &LibraryHitList::pullLineChanged);
}

int LibraryHitList::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant LibraryHitList::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const OllamaLibraryHit& hit = m_app.libraryHits()[static_cast<std::size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
    case NameRole:
        return hit.name.left(longestName);
    case SummaryRole:
        return hit.summary.left(longestText);
    case InstalledRole:
        return isInstalled(hit.name);
    default:
        return {};
    }
}

QHash<int, QByteArray> LibraryHitList::roleNames() const
{
    return {{NameRole, "name"}, {SummaryRole, "summary"}, {InstalledRole, "installed"}};
}

QString LibraryHitList::pullLine() const
{
    return m_app.pullStatus().left(longestText).simplified();
}

void LibraryHitList::pull(int row)
{
    if (row >= 0 && row < count())
        m_app.pullModel(QString(m_app.libraryHits()[static_cast<std::size_t>(row)].name));
}

bool LibraryHitList::isInstalled(const QString& name) const
{
    // A name without a tag is the one that the server calls latest.
    const QString full = name.contains(QLatin1Char(':')) ? name : name + QStringLiteral(":latest");
    const auto& models = m_app.installedModels();
    return std::any_of(models.begin(), models.end(),
                       [&full](const OllamaModel& model) { return model.name == full; });
}

} // namespace varnel
