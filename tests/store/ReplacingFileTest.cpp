#include "store/ReplacingFile.h"
#include "store/SessionStore.h"

#include "StoreFixtures.h"

using namespace varnel;
using namespace varnel::test;

namespace {

const SessionList sessions{session(QStringLiteral("s"))};

void replace(const QString& path, std::string_view contents)
{
    ReplacingFile file(path, ReplacingFile::Folder::Users);
    file.write(contents);
    file.commit();
}

mode_t modeOf(const QString& path)
{
    struct stat status{};
    return ::stat(qPrintable(path), &status) == 0 ? status.st_mode & 07777U : 0;
}

} // namespace

class ReplacingFileTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void filesOfTheUserKeepWhatTheyHave()
    {
        const QTemporaryDir scratch;
        const auto path = [&](const char* name) { return scratch.filePath(QLatin1String(name)); };
        writeFile(path("notes.md.saving"), "mine");
        writeFile(path("notes.md"), "old");
        QVERIFY(::chmod(qPrintable(path("notes.md")), 0644) == 0);
        QVERIFY(QFile::link(path("notes.md"), path("link.md")));
        const mode_t before = ::umask(027);
        replace(path("link.md"), "new");
        replace(path("fresh.md"), "fresh");
        {
            ReplacingFile abandoned(path("notes.md"), ReplacingFile::Folder::Users);
            abandoned.write("never");
        }
        ::umask(before);
        QCOMPARE(contentsOf(path("notes.md.saving")), QByteArray("mine"));
        QCOMPARE(contentsOf(path("notes.md")), QByteArray("new"));
        QCOMPARE(modeOf(path("notes.md")), mode_t(0644));
        QCOMPARE(modeOf(path("fresh.md")), mode_t(0640));
        QCOMPARE(namesIn(scratch.path()).join(u' '),
                 QStringLiteral("fresh.md link.md notes.md notes.md.saving"));
    }

    // The new file is in its place, and only then something fails.
    void afterALateFailureTheNextSaveKnowsItsOwnFile_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QByteArray>("meanwhile"); // what another program writes after the failure
        QTest::addColumn<QStringList>("kept");
        const QString unreadable = QStringLiteral("unreadable");
        const QString changed = QStringLiteral("changed");
        QTest::newRow("nothing there") << QByteArray() << QByteArray() << QStringList();
        QTest::newRow("own file") << QByteArray("[]") << QByteArray() << QStringList();
        QTest::newRow("what was set aside is told")
            << QByteArray("[}") << QByteArray() << QStringList(unreadable);
        QTest::newRow("both are told")
            << QByteArray("[}") << QByteArray("[ ]") << QStringList({unreadable, changed});
        QTest::newRow("unreadable and gone")
            << QByteArray("gone") << QByteArray("[ ]") << QStringList(changed);
    }
    void afterALateFailureTheNextSaveKnowsItsOwnFile()
    {
        QFETCH(QByteArray, before);
        QFETCH(QByteArray, meanwhile);
        QFETCH(QStringList, kept);
        const QTemporaryDir scratch;
        const QString folder = scratch.filePath(QStringLiteral("data"));
        const QString path = SessionStore::fileIn(folder);
        QVERIFY(QDir().mkdir(folder));
        if (!before.isNull())
            writeFile(path, before);
        SessionStore store(folder);
        failureOf([&store] { store.load(); });
        if (before == "gone")
            QVERIFY(QFile::remove(path));
        {
            const UnsyncableFolder unsyncable(folder);
            const QString said = failureOf([&store] { store.save(sessions); });
            QVERIFY2(said.startsWith(folder + QStringLiteral(" could not be saved: ")), qPrintable(said));
        }
        QVERIFY(SessionStore(folder).load() == sessions);
        if (!meanwhile.isNull())
            writeFile(path, meanwhile);
        QStringList told;
        while (const std::optional<SetAside> aside = store.save(sessions))
            told.append(aside->path.section(u'.', -2).section(u'-', 0, 0));
        QCOMPARE(told, kept);
        QCOMPARE(namesIn(folder).size(), kept.size() + 1);
    }
};

QTEST_GUILESS_MAIN(ReplacingFileTest)
#include "ReplacingFileTest.moc"
