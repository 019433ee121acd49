#include "store/ConfinedPath.h"
#include "store/ProjectPlan.h"

#include "ProjectDisk.h"

using namespace varnel;
using namespace varnel::test;
using Lookup = ConfinedFolder::Lookup;

namespace {

QString problemOf(const Disk& disk, const ProjectFile& file, Lookup lookup)
{
    try {
        writeProjectFiles(disk.session, {file}, lookup);
        return {};
    } catch (const Error& error) {
        return error.message();
    }
}

} // namespace

class ProjectWriteTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void filesAreWrittenWhole_data() { bothLookups(); }
    void filesAreWrittenWhole()
    {
        QFETCH(Lookup, lookup);
        const Disk disk;
        disk.link(QStringLiteral("a"), QStringLiteral("project/inside"));
        disk.link(QStringLiteral("project"), QStringLiteral("by-link"));
        ChatSession session = disk.session;
        session.projectPath = disk.path(QStringLiteral("by-link"));
        disk.put(QStringLiteral("project/run.sh"), "old");
        QCOMPARE(::chmod(disk.encoded(QStringLiteral("project/run.sh")).constData(), 06751), 0);

        const std::vector<QUrl> written =
            writeProjectFiles(session,
                              {file(QStringLiteral("a/b/c.txt"), QStringLiteral("ä")),
                               file(QStringLiteral("run.sh"), QStringLiteral("new")),
                               file(QStringLiteral("inside/d"), QStringLiteral("1")),
                               file(QStringLiteral("a/d"), QStringLiteral("2"))},
                              lookup);
        const QString root =
            QFileInfo(disk.path(QStringLiteral("project"))).canonicalFilePath() + QLatin1Char('/');
        QCOMPARE(written, (std::vector{QUrl::fromLocalFile(root + QStringLiteral("a/b/c.txt")),
                                       QUrl::fromLocalFile(root + QStringLiteral("run.sh")),
                                       QUrl::fromLocalFile(root + QStringLiteral("a/d")),
                                       QUrl::fromLocalFile(root + QStringLiteral("a/d"))}));
        QCOMPARE(disk.look(QStringLiteral("project")),
                 "project/a \nproject/a/b \nproject/a/b/c.txt ä\nproject/a/d 2\nproject/inside " +
                     disk.encoded(QStringLiteral("project/a")) + "\nproject/kept kept\nproject/run.sh new");
        QCOMPARE(disk.mode(QStringLiteral("project/run.sh")), mode_t(0751)); // without set-uid and set-gid
    }

    void theProjectFolderIsMadeOnlyForAFile()
    {
        Disk disk;
        QVERIFY_THROWS_EXCEPTION(ProjectWriteError, writeProjectFiles({}, {file(QStringLiteral("a"), {})}));
        disk.session.projectPath = disk.path(QStringLiteral("new/project"));
        QCOMPARE(problemOf(disk, file(QStringLiteral("../a"), {}), Lookup::WholePath),
                 QStringLiteral("../a is outside the project directory."));
        QCOMPARE(planProjectFiles(disk.session, {file(QStringLiteral("a"), {})}).at(0).change,
                 ProjectFileChange::New);
        QVERIFY(!QFileInfo::exists(disk.path(QStringLiteral("new"))));
        QCOMPARE(problemOf(disk, file(QStringLiteral("a/b"), QStringLiteral("x")), Lookup::WholePath),
                 QString());
        QCOMPARE(disk.get(QStringLiteral("new/project/a/b")), "x");
    }

    void nothingOutsideEverChanges_data()
    {
        QTest::addColumn<QString>("path");
        const QString nul = QString(QChar(0));
        for (const QString& path : {QStringLiteral("../outside/secret"),
                                    QStringLiteral("a/../../outside/secret"),
                                    QStringLiteral(".."),
                                    QStringLiteral("."),
                                    QStringLiteral(""),
                                    QStringLiteral("a//b"),
                                    QStringLiteral("a/"),
                                    QStringLiteral("~/x"),
                                    QStringLiteral("~root"),
                                    QStringLiteral("..\\outside\\secret"),
                                    QStringLiteral("a\\b"),
                                    QStringLiteral("a") + nul,
                                    QStringLiteral("../outside/secret") + nul,
                                    QStringLiteral("{top}/outside/secret"),
                                    QStringLiteral("folder-link/secret"),
                                    QStringLiteral("folder-link/new/deep"),
                                    QStringLiteral("file-link"),
                                    QStringLiteral("dangling"),
                                    QStringLiteral("dangling-folder/x"),
                                    QStringLiteral("absolute-link/secret"),
                                    QStringLiteral("top-link"),
                                    QStringLiteral("twice/secret"),
                                    QStringLiteral("loop"),
                                    QStringLiteral("loop/x"),
                                    QStringLiteral("missing-then-up"),
                                    QStringLiteral("up/outside/secret"),
                                    QStringLiteral("sibling/x")})
            QTest::newRow(qPrintable(QString(path).replace(QChar(0), QLatin1Char('0')))) << path;
    }
    void nothingOutsideEverChanges()
    {
        QFETCH(QString, path);
        const Disk disk;
        path.replace(QStringLiteral("{top}"), disk.top.path());
        const auto link = [&disk](const QString& target, const char* name) {
            disk.link(target, QStringLiteral("project/") + QLatin1String(name));
        };
        link(QStringLiteral("../outside"), "folder-link");
        link(QStringLiteral("../outside/secret"), "file-link");
        link(QStringLiteral("../outside/not-there"), "dangling");
        link(QStringLiteral("../outside/nor-this"), "dangling-folder");
        link(disk.path(QStringLiteral("outside")), "absolute-link");
        link(QStringLiteral("."), "top-link");
        link(QStringLiteral("folder-link"), "twice");
        link(QStringLiteral("loop"), "loop");
        link(QStringLiteral("not/there/../../../outside/made"), "missing-then-up");
        link(QStringLiteral(".."), "up");
        link(disk.path(QStringLiteral("project-twin")), "sibling"); // begins like the project folder
        const QByteArray before = disk.look(QString());
        for (const Lookup lookup : {Lookup::WholePath, Lookup::NameByName}) {
            QCOMPARE(problemOf(disk, file(path, QStringLiteral("bad")), lookup),
                     path + QStringLiteral(" is outside the project directory."));
            const PlannedProjectFile planned = planProjectFiles(disk.session, {file(path, {})}, lookup).at(0);
            QCOMPARE(planned.change, ProjectFileChange::Refused);
            QCOMPARE(planned.earlier, QByteArray());
        }
        QCOMPARE(disk.look(QString()), before);
    }

    void theFolderItselfFollowsNothing_data() { bothLookups(); }
    void theFolderItselfFollowsNothing()
    {
        QFETCH(Lookup, lookup);
        const Disk disk;
        disk.link(QStringLiteral("../outside"), QStringLiteral("project/link"));
        disk.link(QStringLiteral("../outside/secret"), QStringLiteral("project/file"));
        QCOMPARE(::mkfifo(disk.encoded(QStringLiteral("project/pipe")).constData(), 0600), 0);
        const ConfinedFolder folder(disk.path(QStringLiteral("project")), lookup);
        const QByteArray before = disk.look(QString());
        for (const char* const name : {"link/secret", "link/a/b", "file", "pipe", "pipe/x", "kept/x"}) {
            const QString path = QLatin1String(name);
            QVERIFY_THROWS_EXCEPTION(ConfinedFolderError, folder.replace(path, "bad"));
            QVERIFY_THROWS_EXCEPTION(ConfinedFolderError, folder.read(path, 100));
        }
        QCOMPARE(disk.look(QString()), before);
        QVERIFY_THROWS_EXCEPTION(ConfinedFolderError, folder.read(QStringLiteral("kept"), 3));
        QCOMPARE(folder.read(QStringLiteral("kept"), 4), QByteArray("kept"));
        QCOMPARE(folder.read(QStringLiteral("no/such"), 4), std::nullopt);
    }

    void aLinkSwappedInNeverLeadsOut_data()
    {
        QTest::addColumn<Lookup>("lookup");
        QTest::addColumn<QString>("swapped");
        for (const char* const swapped : {"sub", "sub/x.txt"}) {
            QTest::addRow("%s, whole path", swapped) << Lookup::WholePath << QString(QLatin1String(swapped));
            QTest::addRow("%s, name by name", swapped)
                << Lookup::NameByName << QString(QLatin1String(swapped));
        }
    }
    void aLinkSwappedInNeverLeadsOut()
    {
        QFETCH(Lookup, lookup);
        QFETCH(QString, swapped);
        const Disk disk;
        disk.put(QStringLiteral("project/sub/x.txt"), "inside");
        disk.put(QStringLiteral("outside/x.txt"), "secret");
        const bool isFile = swapped.contains(QLatin1Char('/'));
        disk.link(isFile ? disk.path(QStringLiteral("outside/x.txt")) : QStringLiteral("../outside"),
                  QStringLiteral("project/swap"));
        const QByteArray before = disk.look(QStringLiteral("outside"));
        const QByteArray one = disk.encoded(QStringLiteral("project/") + swapped);
        const QByteArray other = disk.encoded(QStringLiteral("project/swap"));

        Swapper swapper(one, other);
        int written = 0;
        int refused = 0;
        bool leaked = false;
        for (int round = 0; round < 1000; ++round) {
            try {
                const ProjectFile target = file(QStringLiteral("sub/x.txt"), QString::number(round));
                leaked = leaked || planProjectFiles(disk.session, {target}, lookup).at(0).earlier == "secret";
                writeProjectFiles(disk.session, {target}, lookup);
                ++written;
            } catch (const Error&) {
                ++refused;
            }
            // What was written takes the place of the link; there has to be one again.
            const std::unique_lock<std::mutex> resting = swapper.hold();
            if (isFile && !isLink(one) && !isLink(other)) {
                ::unlink(other.constData());
                static_cast<void>(
                    ::symlink(disk.encoded(QStringLiteral("outside/x.txt")).constData(), other.constData()));
            }
        }
        const int swaps = swapper.stop();
        QCOMPARE(disk.look(QStringLiteral("outside")), before);
        QVERIFY(!leaked);
        QVERIFY2(swaps > 1000 && written > 0 && refused > 0,
                 qPrintable(QStringLiteral("%1 %2 %3").arg(swaps).arg(written).arg(refused)));
    }

    void aLinkInThePlaceOfAFolderThatIsMadeNeverLeadsOut_data() { bothLookups(); }
    void aLinkInThePlaceOfAFolderThatIsMadeNeverLeadsOut()
    {
        QFETCH(Lookup, lookup);
        const Disk disk;
        const QByteArray before = disk.look(QStringLiteral("outside"));
        const auto path = [&disk](const char* name, int round) {
            return disk.encoded(QStringLiteral("project/%1%2").arg(QLatin1String(name)).arg(round));
        };
        std::atomic<int> current = 0;
        std::atomic<int> swaps = 0;
        std::jthread swapper([&](const std::stop_token& stop) {
            while (!stop.stop_requested()) {
                const int round = current;
                if (::renameat2(AT_FDCWD, path("made", round).constData(), AT_FDCWD,
                                path("link", round).constData(), RENAME_EXCHANGE) == 0)
                    ++swaps;
            }
        });
        // Folders are made before the name turns out to be none: nothing waits for the disk, so many fit in.
        const QString noName(300, QLatin1Char('n'));
        for (int round = 1; round <= 1000; ++round) {
            disk.link(QStringLiteral("../outside"), QStringLiteral("project/link%1").arg(round));
            current = round;
            problemOf(disk, file(QStringLiteral("made%1/deep/").arg(round) + noName, {}), lookup);
        }
        swapper.request_stop();
        swapper.join();
        QCOMPARE(disk.look(QStringLiteral("outside")), before);
        QVERIFY(swaps > 0);
    }

    void aPlanTellsWhatWouldHappen()
    {
        const Disk disk;
        disk.put(QStringLiteral("project/same"), "same\n");
        disk.put(QStringLiteral("project/README.md"), "old");
        disk.put(QStringLiteral("project/.git/hooks/x"), "");
        disk.link(QStringLiteral(".git/hooks"), QStringLiteral("project/scripts"));
        QVERIFY(QDir(disk.session.projectPath).mkpath(QStringLiteral("folder")));
        const QStringList paths{QStringLiteral("same"),         QStringLiteral("kept"),
                                QStringLiteral("new/file"),     QStringLiteral("readme.md"),
                                QStringLiteral("scripts/post"), QStringLiteral("New/other"),
                                QStringLiteral("folder")};
        std::vector<ProjectFile> files;
        for (const QString& path : paths)
            files.push_back(file(path, QStringLiteral("same\n")));
        const QByteArray before = disk.look(QString());
        QStringList found;
        for (const PlannedProjectFile& planned : planProjectFiles(disk.session, files)) {
            constexpr std::array names{"new", "changed", "unchanged", "refused"};
            found += QStringLiteral("%1 %2 [%3] runs=%4 twin=%5 %6")
                         .arg(planned.file.relativePath,
                              QLatin1String(names.at(static_cast<std::size_t>(planned.change))),
                              QString::fromUtf8(planned.earlier).trimmed(),
                              QString::number(int(planned.runsByItself)), planned.twin, planned.problem);
        }
        QCOMPARE(found, (QStringList{
                            QStringLiteral("same unchanged [same] runs=0 twin= "),
                            QStringLiteral("kept changed [kept] runs=0 twin= "),
                            QStringLiteral("new/file new [] runs=0 twin=New "),
                            QStringLiteral("readme.md new [] runs=0 twin=README.md "),
                            QStringLiteral("scripts/post new [] runs=1 twin= "),
                            QStringLiteral("New/other new [] runs=0 twin=new "),
                            QStringLiteral("folder refused [] runs=0 twin= folder is not a regular file."),
                        }));
        QCOMPARE(disk.look(QString()), before);
    }

    void aFailedWriteLeavesTheOldFile()
    {
        const Disk disk;
        const QByteArray before = disk.look(QString());
        const QString longName(300, QLatin1Char('n'));
        QVERIFY(problemOf(disk, file(longName, {}), Lookup::WholePath)
                    .startsWith(longName + QStringLiteral(" could not")));
        QVERIFY(!problemOf(disk, file(QStringLiteral("kept/below"), {}), Lookup::WholePath).isEmpty());
        QCOMPARE(disk.look(QString()), before);
    }

private:
    static void bothLookups()
    {
        QTest::addColumn<Lookup>("lookup");
        QTest::newRow("whole path") << Lookup::WholePath;
        QTest::newRow("name by name") << Lookup::NameByName;
    }
};

QTEST_GUILESS_MAIN(ProjectWriteTest)
#include "ProjectWriteTest.moc"
