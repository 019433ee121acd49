#include "ui/BackupListModel.h"

#include "store/Backups.h"
#include "store/StorageLocation.h"

#include <QDateTime>
#include <QDesktopServices>
#include <QFileInfo>
#include <QLocale>

namespace varnel {

namespace {

void reveal(const QString& folder)
{
    QDesktopServices::openUrl(QUrl::fromLocalFile(folder));
}

/// The name of a backup as a time of this computer; the name itself if it is none.
QString timeOf(const QString& name)
{
    QString stamp = name;
    const qsizetype time = stamp.indexOf(QLatin1Char('T'));
    if (time >= 0)
        stamp.replace(time, stamp.size() - time,
                      QString(stamp.mid(time)).replace(QLatin1Char('-'), QLatin1Char(':')));
    const QDateTime made = QDateTime::fromString(stamp, Qt::ISODate);
    constexpr qsizetype longest = 100;
    return made.isValid() ? QLocale().toString(made.toLocalTime(), QLocale::LongFormat) : name.left(longest);
}

} // namespace

BackupListModel::BackupListModel(AppModel& app, QObject* parent)
    : QAbstractListModel(parent)
    , m_app(app)
{
    connect(&app, &AppModel::backupEnded, this, [this](const QString& status) {
        constexpr qsizetype longest = 400;
        setReport(status.left(longest).simplified());
        refresh();
    });
}

BackupListModel::~BackupListModel() = default;

int BackupListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant BackupListModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const QString& name = m_backups[static_cast<std::size_t>(index.row())].name;
    switch (role) {
    case NameRole:
        return name;
    case Qt::DisplayRole:
    case TimeRole:
        return timeOf(name);
    default:
        return {};
    }
}

QHash<int, QByteArray> BackupListModel::roleNames() const
{
    return {{NameRole, "name"}, {TimeRole, "time"}};
}

QString BackupListModel::locationText() const
{
    return varnel::locationText(m_app.location());
}

void BackupListModel::begin()
{
    setReport({});
    refresh();
}

void BackupListModel::setReport(const QString& text)
{
    if (text == m_report)
        return;
    m_report = text;
    Q_EMIT reportChanged();
}

void BackupListModel::refresh()
{
    std::vector<Backup> backups = listBackups(folder());
    if (backups == m_backups)
        return;
    beginResetModel();
    m_backups = std::move(backups);
    endResetModel();
    Q_EMIT countChanged();
}

void BackupListModel::revealLibrary() const
{
    reveal(folder());
}

void BackupListModel::revealBackups() const
{
    const QString backups = backupsFolder(folder());
    // Before the first backup there is no such folder.
    reveal(QFileInfo::exists(backups) ? backups : folder());
}

void BackupListModel::restore(int row)
{
    if (row >= 0 && row < count())
        m_app.restoreBackup(QString(m_backups[static_cast<std::size_t>(row)].name));
}

} // namespace varnel
