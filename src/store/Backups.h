#pragma once

#include "base/Clock.h"
#include "store/LibraryItem.h"
#include "store/SessionList.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace varnel {

/// One backup in the data folder.
struct Backup
{
    /// The name of its folder, which is the time it was made.
    QString name;
    QString folder;
    /// Where it was just made: a sentence for each stored file that is not in it.
    QStringList leftOut;

    bool operator==(const Backup&) const = default;

    /// What the status says once it was made.
    QString statusText() const
    {
        return (QStringList(QStringLiteral("Backup ") + name) + leftOut).join(QLatin1Char(' '));
    }
};

/// What a backup holds.
struct BackupContents
{
    SessionList sessions;
    std::vector<LibraryItem> items;
    /// A sentence for each stored file that could not be copied back.
    QStringList leftOut;
};

/// The folder that holds the backups of a data folder.
QString backupsFolder(const QString& root);
/// What a backup made at a moment is called: the moment, to the second.
QString backupName(Instant now);

/// Copies the conversations, the library's index and its stored files into a folder named after the time.
/// What is to be in it has to be saved before. Blocks for as long as the disk does; touches nothing but the
/// new folder, so it may run on any thread. Throws Error, also for a second backup within the same second;
/// nothing remains of a backup that failed.
Backup makeBackup(const QString& root, const std::vector<LibraryItem>& items, Instant now);

/// The backups of a data folder, the newest first.
std::vector<Backup> listBackups(const QString& root);

/// Reads a backup and copies those of its stored files back that the data folder no longer has; nothing is
/// overwritten. The caller puts the contents into the place of what there was and saves them. Throws Error
/// when the backup cannot be read; nothing was copied then.
BackupContents restoreBackup(const QString& root, const Backup& backup);

} // namespace varnel
