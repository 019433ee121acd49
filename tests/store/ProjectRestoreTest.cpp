#include "store/ProjectPlan.h"

#include "ProjectDisk.h"
#include "StoreFixtures.h"

using namespace varnel;
using namespace varnel::test;

class ProjectRestoreTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void overwrittenBytesComeBack()
    {
        const Disk disk;
        disk.put(QStringLiteral("project/twice"), QByteArray("\xff\0old", 5));
        disk.put(QStringLiteral("project/edited"), "old");
        disk.put(QStringLiteral("project/swapped"), "old");
        ProjectBackup backup;
        QVERIFY_THROWS_EXCEPTION(ProjectWriteError,
                                 writeProjectFiles(disk.session,
                                                   {file(QStringLiteral("twice"), QStringLiteral("1")),
                                                    file(QStringLiteral("edited"), QStringLiteral("1")),
                                                    file(QStringLiteral("fresh"), QStringLiteral("1")),
                                                    file(QStringLiteral("swapped"), QStringLiteral("1")),
                                                    file(QStringLiteral("twice"), QStringLiteral("2")),
                                                    file(QStringLiteral("../x"), {})},
                                                   backup));
        QCOMPARE(disk.get(QStringLiteral("project/twice")), "2");
        disk.put(QStringLiteral("project/edited"), "by hand");
        QVERIFY(QFile::remove(disk.path(QStringLiteral("project/swapped"))));
        disk.link(QStringLiteral("../outside/secret"), QStringLiteral("project/swapped"));

        const ProjectRestore restored = restoreProjectFiles(backup);
        const QStringList& problems = restored.problems;
        QCOMPARE(restored.remaining.files.size(), 2U); // by hand they can still be put back
        QCOMPARE(problems.size(), 2);
        QCOMPARE(problems.at(0), QStringLiteral("edited was changed since and is left as it is."));
        QVERIFY(problems.at(1).startsWith(QStringLiteral("swapped could not be read: ")));
        QCOMPARE(disk.get(QStringLiteral("project/twice")), QByteArray("\xff\0old", 5));
        QCOMPARE(disk.get(QStringLiteral("project/edited")), "by hand");
        QCOMPARE(disk.get(QStringLiteral("project/fresh")), "1");
        QCOMPARE(disk.get(QStringLiteral("outside/secret")), "secret");
    }

    // The backup is the only copy of what stood there.
    void whatIsNotPutBackRemains_data()
    {
        QTest::addColumn<QString>("obstacle");
        for (const char* const obstacle : {"full disk", "read-only folder", "folder gone"})
            QTest::newRow(obstacle) << QString(QLatin1String(obstacle));
    }
    void whatIsNotPutBackRemains()
    {
        QFETCH(QString, obstacle);
        const Disk disk;
        const QString project = disk.session.projectPath;
        std::optional<SmallDisk> small;
        if (obstacle == QLatin1String("full disk") && !small.emplace(project).isThere())
            QSKIP("no file system can be mounted");
        disk.put(QStringLiteral("project/small"), "small");
        disk.put(QStringLiteral("project/shut/big"), QByteArray(40'000, 'b'));
        ProjectBackup backup;
        writeProjectFiles(disk.session,
                          {file(QStringLiteral("small"), QStringLiteral("1")),
                           file(QStringLiteral("shut/big"), QStringLiteral("2"))},
                          backup);

        const QByteArray shut = disk.encoded(QStringLiteral("project/shut"));
        const bool isShut = obstacle == QLatin1String("read-only folder");
        const bool isGone = obstacle == QLatin1String("folder gone");
        if (small)
            disk.put(QStringLiteral("project/filler"), QByteArray(40'000, 'f'));
        if (isGone)
            QVERIFY(QDir().rename(project, disk.path(QStringLiteral("away"))));
        else if (!small)
            QVERIFY(::chmod(qPrintable(disk.top.path()), 0755) == 0 &&
                    ::chmod(qPrintable(project), 0777) == 0 && ::chmod(shut.constData(), 0555) == 0);
        ProjectRestore restored;
        {
            const AsNobody nobody(isShut);
            restored = restoreProjectFiles(backup);
        }
        QCOMPARE(restored.problems.size(), 1);
        QCOMPARE(restored.remaining.files.size(), isGone ? 2U : 1U);
        QCOMPARE(restored.remaining.files.back(), backup.files.back());
        if (!isGone) {
            QCOMPARE(disk.get(QStringLiteral("project/small")), "small");
            QCOMPARE(disk.get(QStringLiteral("project/shut/big")), "2");
            QCOMPARE(
                QDir(disk.path(QStringLiteral("project/shut"))).entryList(QDir::Files | QDir::Hidden).size(),
                1);
        }

        if (small)
            QVERIFY(QFile::remove(disk.path(QStringLiteral("project/filler"))));
        if (isGone)
            QVERIFY(QDir().rename(disk.path(QStringLiteral("away")), project));
        QVERIFY(::chmod(shut.constData(), 0777) == 0);
        QVERIFY(restoreProjectFiles(restored.remaining).problems.empty());
        QCOMPARE(disk.get(QStringLiteral("project/small")), "small");
        QCOMPARE(disk.get(QStringLiteral("project/shut/big")), QByteArray(40'000, 'b'));
    }

    void whatCannotBeKeptIsWrittenAndSaid()
    {
        const Disk disk;
        QFile large(disk.path(QStringLiteral("project/large")));
        QVERIFY(large.open(QIODevice::WriteOnly) && large.resize(ProjectBackup::largestFile + 1));
        disk.put(QStringLiteral("project/secret"), "secret");
        QVERIFY(::chmod(qPrintable(disk.top.path()), 0755) == 0 &&
                ::chmod(qPrintable(disk.session.projectPath), 0777) == 0 &&
                ::chmod(disk.encoded(QStringLiteral("project/secret")).constData(), 0) == 0);
        const AsNobody nobody;
        const std::vector<ProjectFile> files{file(QStringLiteral("large"), QStringLiteral("1")),
                                             file(QStringLiteral("secret"), QStringLiteral("2")),
                                             file(QStringLiteral("fresh"), QStringLiteral("3"))};
        const std::vector<PlannedProjectFile> planned = planProjectFiles(disk.session, files);
        QCOMPARE(planned.at(0).notKept, QStringLiteral("large is larger than 64 MiB."));
        QVERIFY(planned.at(1).notKept.startsWith(QStringLiteral("secret could not be read: ")));
        QVERIFY(planned.at(0).change == ProjectFileChange::Changed &&
                planned.at(1).change == ProjectFileChange::Changed && planned.at(2).notKept.isEmpty());
        ProjectBackup backup;
        QCOMPARE(writeProjectFiles(disk.session, files, backup).size(), 3U);
        QCOMPARE(disk.get(QStringLiteral("project/large")), "1");
        QCOMPARE(disk.mode(QStringLiteral("project/secret")), mode_t(0));
        QCOMPARE(backup.lost().size(), 2);
        QCOMPARE(backup.lost().at(0),
                 QStringLiteral("What large held cannot be put back: large is larger than 64 MiB."));
        QCOMPARE(restoreProjectFiles(backup).problems, backup.lost());
    }
};

QTEST_GUILESS_MAIN(ProjectRestoreTest)
#include "ProjectRestoreTest.moc"
