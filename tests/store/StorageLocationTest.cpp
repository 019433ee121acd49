#include "store/StorageLocation.h"
#include "store/Backups.h"
#include "store/LibraryStore.h"
#include "store/SessionStore.h"

#include "StoreFixtures.h"

#include <sys/stat.h>

using namespace varnel;
using namespace varnel::test;

class StorageLocationTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void withoutCloudDataIsLocal()
    {
        const QTemporaryDir scratch;
        const LibraryLocation location =
            resolveLocation({.applicationSupport = scratch.path(), .cloudContainer = std::nullopt});
        QCOMPARE(location.folder(), scratch.filePath(QStringLiteral("Varnel")));
        QVERIFY(!location.usingCloud && QFileInfo(location.folder()).isDir());
        QVERIFY(locationText(location).startsWith(QStringLiteral("iCloud is not available to this build.")));
        // A file in the folder's place is left to the first save to complain about.
        writeFile(scratch.filePath(QStringLiteral("file")), "x");
        resolveLocation(
            {.applicationSupport = scratch.filePath(QStringLiteral("file")), .cloudContainer = std::nullopt});
    }

    void cloudGetsWhatItLacks()
    {
        const QTemporaryDir scratch;
        const QString local = scratch.filePath(QStringLiteral("local/Varnel/"));
        const QString cloud = scratch.filePath(QStringLiteral("cloud/Documents/Varnel/"));
        for (const char* name :
             {"sessions.json", "Backups/1/sessions.json", "Library/a.txt", "Library/deep/.b", "Backups.txt",
              "library.json", "sessions.json.saving", "recovery.json", "Library/recovery.json"})
            writeFile(local + QLatin1String(name), name);
        QCOMPARE(::mkfifo(qPrintable(local + QStringLiteral("fifo")), 0600), 0);
        QVERIFY(QFile::link(QStringLiteral("/nonexistent"), local + QStringLiteral("dangling")));
        writeFile(cloud + QStringLiteral("library.json"), "newer");
        writeFile(cloud + QStringLiteral("Library/deep"), "in its way");
        const StorageFolders folders{.applicationSupport = scratch.filePath(QStringLiteral("local")),
                                     .cloudContainer = scratch.filePath(QStringLiteral("cloud"))};
        for (int start = 0; start < 2; ++start) {
            const LibraryLocation location = resolveLocation(folders);
            QVERIFY(location.usingCloud);
            QCOMPARE(location.folder() + u'/', cloud);
            QCOMPARE(namesIn(cloud).join(u' '),
                     QStringLiteral("Backups.txt Library library.json%1 sessions.json")
                         .arg(start == 0 ? QStringLiteral(" recovery.json") : QString()));
            QCOMPARE(namesIn(cloud + QStringLiteral("Library")).join(u' '),
                     QStringLiteral("a.txt deep recovery.json"));
            QCOMPARE(contentsOf(cloud + QStringLiteral("library.json")), QByteArray("newer"));
            QCOMPARE(contentsOf(cloud + QStringLiteral("sessions.json")), QByteArray("sessions.json"));
            // Once there are conversations, a reply of those from here has no place among them.
            QFile::remove(cloud + QStringLiteral("recovery.json"));
            QFile::remove(cloud + QStringLiteral("Library/recovery.json"));
        }
        QCOMPARE(locationText(resolveLocation(folders)),
                 QStringLiteral("Library and conversations are in the Varnel iCloud container."));
    }

    void backupsHoldEverythingAndComeBack()
    {
        const QTemporaryDir scratch;
        const QString root = scratch.filePath(QStringLiteral("data"));
        writeFile(scratch.filePath(QStringLiteral("a.txt")), "contents");
        const SessionList sessions{session(QStringLiteral("kept"))};
        SessionStore(root).save(sessions);
        LibraryStore library(root);
        library.importFile(QUrl::fromLocalFile(scratch.filePath(QStringLiteral("a.txt"))),
                           QStringLiteral("F/G"), noon);
        LibraryItem hostile = library.items().front();
        hostile.id = QUuid::createUuid();
        hostile.relativePath = QStringLiteral("../a.txt");
        library.add(hostile);

        const Backup backup = makeBackup(root, library.items(), noon);
        QCOMPARE(backup.statusText(), QStringLiteral("Backup 2026-03-18T12-00-00Z"));
        QCOMPARE(namesIn(backup.folder).join(u' '), QStringLiteral("F library.json sessions.json"));
        QCOMPARE(namesIn(backupsFolder(root)).size(), 1);
        // A second one within the same second fails and leaves the first as it is.
        QVERIFY(failureOf([&] {
                    makeBackup(root, library.items(), noon);
                }).contains(QStringLiteral("File exists")));
        const Backup later = makeBackup(root, library.items(), noon + std::chrono::seconds(1));
        QCOMPARE(listBackups(root), (std::vector<Backup>{later, backup}));
        // One that was killed in the middle is no backup, and is gone with the next.
        writeFile(backupsFolder(root) + QStringLiteral("/x.saving/sessions.json"), "[]");
        QCOMPARE(listBackups(root).size(), 2);
        makeBackup(root, {}, noon + std::chrono::seconds(2));
        QCOMPARE(namesIn(backupsFolder(root)).size(), 3);

        SessionStore(root).save({});
        const std::vector<LibraryItem> items = library.items();
        library.removeForGood(items.back().id);
        const BackupContents restored = restoreBackup(root, backup);
        QVERIFY(restored.sessions == sessions);
        QCOMPARE(restored.items, items);
        QCOMPARE(contentsOf(root + u'/' + *items.back().relativePath), QByteArray("contents"));
        QCOMPARE(contentsOf(scratch.filePath(QStringLiteral("a.txt"))), QByteArray("contents"));
    }

    void aLinkInTheWayKeepsNobodyFromBackingUp()
    {
        const QTemporaryDir scratch;
        const QString root = scratch.filePath(QStringLiteral("data"));
        for (const char* name : {"a.txt", "b.txt"})
            writeFile(scratch.filePath(QLatin1String(name)), name);
        LibraryStore library(root);
        for (const char* name : {"a.txt", "b.txt"})
            library.importFile(QUrl::fromLocalFile(scratch.filePath(QLatin1String(name))),
                               QString(QLatin1Char(*name)), noon);
        SessionStore(root).save({session(QStringLiteral("s"))});
        const LibraryItem linked = library.items().front();
        QVERIFY(QDir().rename(root + QStringLiteral("/b"), scratch.filePath(QStringLiteral("elsewhere"))));
        QVERIFY(QFile::link(scratch.filePath(QStringLiteral("elsewhere")), root + QStringLiteral("/b")));

        const Backup backup = makeBackup(root, library.items(), noon);
        const QString said = QStringLiteral("The file of \"b\" was left out: a link stands in its way.");
        QCOMPARE(backup.statusText(), QStringLiteral("Backup 2026-03-18T12-00-00Z ") + said);
        QCOMPARE(namesIn(backup.folder).join(u' '), QStringLiteral("a library.json sessions.json"));
        QCOMPARE(restoreBackup(root, backup).leftOut, QStringList(said));
        library.removeForGood(linked.id);
        QCOMPARE(library.items().size(), 1U);
        QCOMPARE(namesIn(scratch.filePath(QStringLiteral("elsewhere"))).size(), 1);
    }

    void failedBackupLeavesNothing()
    {
        const QTemporaryDir scratch;
        writeFile(SessionStore::fileIn(scratch.path()), "[]");
        QCOMPARE(::mkfifo(qPrintable(LibraryStore::indexIn(scratch.path())), 0600), 0);
        QVERIFY(!failureOf([&] { makeBackup(scratch.path(), {}, noon); }).isEmpty());
        QVERIFY(listBackups(scratch.path()).empty());
        QVERIFY(failureOf([&] {
                    restoreBackup(
                        scratch.path(),
                        {.name = {}, .folder = scratch.filePath(QStringLiteral("none")), .leftOut = {}});
                }).contains(QStringLiteral("holds no conversations")));
    }

    void firstBackupOfNothingSucceeds()
    {
        const QTemporaryDir scratch;
        makeBackup(scratch.path(), {}, noon);
        QCOMPARE(listBackups(scratch.path()).size(), 1);
    }
};

QTEST_GUILESS_MAIN(StorageLocationTest)
#include "StorageLocationTest.moc"
