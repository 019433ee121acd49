#include "store/SessionStore.h"

#include "StoreFixtures.h"

#include <QDateTime>
#include <QRandomGenerator>

#include <csignal>
#include <limits>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace varnel;
using namespace varnel::test;

namespace {

const SessionList oldSessions{session(QStringLiteral("old"))};
const SessionList newSessions{session(QStringLiteral("new"), {message(QString(100'000, u'x'))})};

/// Enough conversations for several parts of a file.
SessionList manySessions()
{
    SessionList sessions;
    for (int i = 0; i < 80; ++i)
        sessions.append(session(QString::number(i),
                                {message(QStringLiteral("[{\"}, {\n  },\n  { 🙂ü%1").arg(i).repeated(200)),
                                 message(QString(4000, u'y'), ChatRole::Assistant)}));
    return sessions;
}

/// As another program might write it, with half a character in its title.
const QByteArray oneSession =
    "{\"id\":\"0123ABCD-89AB-CDEF-0123-456789ABCDEF\",\"title\":\"\\ud800\",\"model\":\"m\",\"systemPrompt\":"
    "\"\","
    "\"messages\":[],\"temperature\":1,\"contextLength\":1,\"keepAlive\":\"\",\"answerBackend\":\"ollama\","
    "\"remoteProvider\":\"claude\","
    "\"remoteModel\":\"\",\"createdAt\":\"2026-03-18T12:00:00Z\",\"updatedAt\":\"2026-03-18T12:00:00Z\"}";

/// Limits how long files may become; a write beyond it fails as on a full disk.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        ::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{.rlim_cur = bytes, .rlim_max = m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &m_before); }

private:
    rlimit m_before{};
};

} // namespace

class SessionStoreTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whatIsSavedLoads()
    {
        const QTemporaryDir scratch;
        const QString folder = scratch.filePath(QStringLiteral("a/b"));
        SessionList sessions = manySessions();
        for (int round = 0; round < 2; ++round) {
            QVERIFY(!SessionStore(folder).save(sessions) || round == 1);
            QCOMPARE(titlesOf(SessionStore(folder).load()), titlesOf(sessions));
            QVERIFY(SessionStore(folder).load() == sessions);
            sessions = newSessions;
        }
        struct stat status{};
        QCOMPARE(::stat(qPrintable(SessionStore::fileIn(folder)), &status), 0);
        QCOMPARE(status.st_mode & 0777U, 0600U);
        QCOMPARE(::stat(qPrintable(folder), &status), 0);
        QCOMPARE(status.st_mode & 0777U, 0700U);
    }

    void listIsSorted()
    {
        const QTemporaryDir scratch;
        SessionList sessions;
        const auto add = [&sessions](const char* title, bool pinned, int minute) {
            ChatSession added = session(QString::fromLatin1(title));
            added.pinned = pinned;
            added.updatedAt += std::chrono::minutes(minute);
            sessions.append(added);
        };
        add("c", false, 5);
        add("e", false, 1);
        add("b", true, 0);
        add("d", false, 5);
        add("a", true, 3);
        SessionStore store(scratch.path());
        store.save(sessions);
        QCOMPARE(titlesOf(store.load()).join(u' '), QStringLiteral("a b c d e"));
    }

    void snapshotsDoNotChange()
    {
        SessionList sessions = manySessions();
        const SessionList before = sessions;
        sessions.edit(3).title = QStringLiteral("changed");
        sessions.move(3, 0);
        sessions.remove(5);
        QCOMPARE(before[3].title, QStringLiteral("3"));
        QCOMPARE(titlesOf(sessions).mid(0, 6).join(u' '), QStringLiteral("changed 0 1 2 4 6"));
        QCOMPARE(&before[7], &sessions[6]); // still shared
        sessions.move(0, 2);
        QCOMPARE(titlesOf(sessions).mid(0, 3).join(u' '), QStringLiteral("0 1 changed"));
    }

    // What is in the place of the file, and what becomes of it: nothing is ever lost.
    void unreadableFilesAreSetAside_data()
    {
        QTest::addColumn<QByteArray>("contents"); // null: made by the test
        QTest::addColumn<QString>("problem");
        QTest::addColumn<bool>("kept");
        const QString json = QStringLiteral("not valid JSON (");
        QTest::newRow("0 bytes") << QByteArray("")
                                 << json + QStringLiteral("line 1, column 1: the text is empty") << false;
        QTest::newRow("NULs") << QByteArray(4096, '\0') << json << true;
        QTest::newRow("cut off") << QByteArray("[\n  {\n    \"id\": \"") << json + QStringLiteral("line 3")
                                 << true;
        QTest::newRow("wrong type") << QByteArray("[1]")
                                    << QStringLiteral("[0]: expected an object, found a number") << true;
        QTest::newRow("no array") << QByteArray("{}") << QStringLiteral("expected an array, found an object")
                                  << true;
        QTest::newRow("folder") << QByteArray() << QStringLiteral("is a folder, not a file.") << true;
        QTest::newRow("pipe") << QByteArray() << QStringLiteral("is not a regular file.") << true;
        QTest::newRow("dangling link") << QByteArray() << QStringLiteral("could not be opened: ") << true;
        QTest::newRow("link to a full device")
            << QByteArray() << QStringLiteral("is not a regular file.") << true;
        QTest::newRow("link to a broken file") << QByteArray("[1,") << json << true;
        QTest::newRow("no permission") << QByteArray("[]") << QStringLiteral("could not be opened: ") << true;
    }
    void unreadableFilesAreSetAside()
    {
        QFETCH(QByteArray, contents);
        QFETCH(QString, problem);
        QFETCH(bool, kept);
        const QByteArray row = QTest::currentDataTag();
        const QTemporaryDir scratch;
        QVERIFY(::chmod(qPrintable(scratch.path()), 0777) == 0);
        const QString file = SessionStore::fileIn(scratch.path());
        if (row == "folder")
            QDir().mkpath(file + QStringLiteral("/inside"));
        else if (row == "pipe")
            QCOMPARE(::mkfifo(qPrintable(file), 0600), 0);
        else if (row == "dangling link")
            QVERIFY(QFile::link(QStringLiteral("/nonexistent/sessions.json"), file));
        else if (row == "link to a full device")
            QVERIFY(QFile::link(QStringLiteral("/dev/full"), file));
        else
            writeFile(row == "link to a broken file" ? scratch.filePath(QStringLiteral("other.json")) : file,
                      contents);
        if (row == "link to a broken file")
            QVERIFY(QFile::link(scratch.filePath(QStringLiteral("other.json")), file));
        if (row == "no permission")
            QVERIFY(::chmod(qPrintable(file), 0) == 0);

        const AsNobody nobody(row == "no permission");
        SessionStore store(scratch.path());
        const QString said = failureOf([&store] { store.load(); });
        QVERIFY2(said.contains(file) && said.contains(problem), qPrintable(said));
        const std::optional<SetAside> aside = store.save(newSessions);
        QCOMPARE(aside.has_value(), kept);
        if (aside) {
            QCOMPARE(aside->reason, SetAside::Reason::Unreadable);
            QVERIFY2(aside->path.contains(QStringLiteral(".unreadable-")), qPrintable(aside->path));
            const QFileInfo info(aside->path);
            QVERIFY(info.exists() || info.isSymLink());
            if (contents.size() > 2)
                QCOMPARE(contentsOf(aside->path), contents);
        }
        QVERIFY(!store.save(newSessions));
        QVERIFY(SessionStore(scratch.path()).load() == newSessions);
        QCOMPARE(namesIn(scratch.path()).size(), (kept ? 2 : 1) + (row == "link to a broken file" ? 1 : 0));
    }

    void whatOthersWroteIsKept()
    {
        const QTemporaryDir scratch;
        const QString file = SessionStore::fileIn(scratch.path());
        SessionStore store(scratch.path());
        store.save(oldSessions);
        const QByteArray foreign = contentsOf(file) + "\n";
        writeFile(file, foreign);
        // A save that fails keeps nothing aside.
        SessionList broken = newSessions;
        broken.edit(0).temperature = std::numeric_limits<double>::quiet_NaN();
        QVERIFY(!failureOf([&] { store.save(broken); }).isEmpty());
        QCOMPARE(namesIn(scratch.path()).size(), 1);
        const std::optional<SetAside> aside = store.save(newSessions);
        QVERIFY(aside);
        QCOMPARE(aside->reason, SetAside::Reason::Changed);
        QCOMPARE(contentsOf(aside->path), foreign);
        QVERIFY(aside->text().contains(aside->path));
        // As long as before, and from a past that the clock was set back to: a second name is found for it.
        QFile again(file);
        QVERIFY(again.open(QIODevice::ReadWrite) && again.write("{") == 1 && again.flush());
        QVERIFY(
            again.setFileTime(QDateTime::fromSecsSinceEpoch(1'000'000), QFileDevice::FileModificationTime));
        const std::optional<SetAside> second = store.save(newSessions);
        QVERIFY(second && second->path != aside->path && contentsOf(second->path).startsWith('{'));
        QCOMPARE(contentsOf(aside->path), foreign);
        QVERIFY(!store.save(oldSessions));
        QVERIFY(SessionStore(scratch.path()).save(newSessions)); // one that has read nothing
    }

    void whatCannotBeKeptIsNotReplaced_data()
    {
        QTest::addColumn<mode_t>("folderMode");
        QTest::addColumn<mode_t>("fileMode");
        QTest::newRow("read-only folder") << mode_t(0555) << mode_t(0644);
        QTest::newRow("broken, of another user, who alone may rename it") << mode_t(01777) << mode_t(0644);
        QTest::newRow("unreadable, of another user") << mode_t(01777) << mode_t(0600);
    }
    void whatCannotBeKeptIsNotReplaced()
    {
        QFETCH(mode_t, folderMode);
        QFETCH(mode_t, fileMode);
        if (folderMode == 01777 && ::geteuid() != 0)
            QSKIP("there is no other user");
        const QTemporaryDir scratch;
        const QString file = SessionStore::fileIn(scratch.path());
        writeFile(file, "[}");
        SessionStore store(scratch.path());
        QVERIFY(::chmod(qPrintable(scratch.path()), folderMode) == 0 &&
                ::chmod(qPrintable(file), fileMode) == 0);
        {
            const AsNobody nobody;
            QVERIFY(!failureOf([&store] { store.load(); }).isEmpty());
            for (int save = 0; save < 2; ++save) { // every one says so
                const QString said = failureOf([&store] { store.save(newSessions); });
                QVERIFY2(said.contains(file) && said.contains(QStringLiteral("could not be")),
                         qPrintable(said));
            }
        }
        QCOMPARE(contentsOf(file), QByteArray("[}"));
        QCOMPARE(namesIn(scratch.path()).size(), 1);
        QVERIFY(::chmod(qPrintable(scratch.path()), 0700) == 0);
        QVERIFY(store.save(newSessions));
    }

    void linkToAFileStays()
    {
        const QTemporaryDir scratch;
        const QString real = scratch.filePath(QStringLiteral("elsewhere/s.json"));
        const QString folder = scratch.filePath(QStringLiteral("data"));
        writeFile(real, "[]");
        QDir().mkpath(folder);
        QVERIFY(QFile::link(real, SessionStore::fileIn(folder)));
        SessionStore store(folder);
        store.load();
        QVERIFY(!store.save(newSessions));
        QVERIFY(QFileInfo(SessionStore::fileIn(folder)).isSymLink());
        QVERIFY(contentsOf(real).contains("new"));
        QCOMPARE(namesIn(folder).size() + namesIn(QFileInfo(real).path()).size(), 2);
    }

    void failedSavesHarmNothing_data()
    {
        QTest::addColumn<QString>("problem");
        QTest::newRow("file size") << QStringLiteral("could not be saved: File too large");
        QTest::newRow("full disk") << QStringLiteral("could not be saved: No space left on device");
        QTest::newRow("read-only folder") << QStringLiteral("could not be saved: Permission denied");
        QTest::newRow("not finite") << QStringLiteral("A number that is not finite cannot be saved");
        QTest::newRow("year 10000") << QStringLiteral(
            "A date outside the years 0000 to 9999 cannot be saved.");
    }
    void failedSavesHarmNothing()
    {
        QFETCH(QString, problem);
        const QByteArray row = QTest::currentDataTag();
        const QTemporaryDir scratch;
        const QString folder = scratch.filePath(QStringLiteral("data"));
        QDir().mkpath(folder);
        std::optional<SmallDisk> disk;
        if (row == "full disk" && !disk.emplace(folder).isThere())
            QSKIP("no file system can be mounted");
        SessionStore store(folder);
        store.save(oldSessions);
        SessionList failing = newSessions;
        if (row == "not finite")
            failing.edit(0).temperature = std::numeric_limits<double>::infinity();
        if (row == "year 10000")
            failing.edit(0).messages[0].createdAt += std::chrono::days(366 * 8000);
        if (row == "read-only folder")
            QVERIFY(::chmod(qPrintable(folder), 0555) == 0 && ::chmod(qPrintable(scratch.path()), 0755) == 0);
        {
            const std::optional<FileSizeLimit> limit =
                row == "file size" ? std::optional<FileSizeLimit>(std::in_place, 50'000) : std::nullopt;
            const AsNobody nobody(row == "read-only folder");
            const QString said = failureOf([&] { store.save(failing); });
            QVERIFY2(said.contains(problem), qPrintable(said));
            QVERIFY2(!problem.startsWith(QLatin1String("could")) ||
                         said.contains(SessionStore::fileIn(folder)),
                     qPrintable(said));
        }
        QVERIFY(SessionStore(folder).load() == oldSessions);
        QCOMPARE(namesIn(folder).size(), 1);
        QVERIFY(::chmod(qPrintable(folder), 0700) == 0);
        const SessionList smaller{session(QStringLiteral("smaller"))};
        QVERIFY(!store.save(smaller));
        QVERIFY(SessionStore(folder).load() == smaller);
        QCOMPARE(namesIn(folder).size(), 1);
    }

    // Reading in parts must find exactly what reading the whole finds.
    void damagedFilesNeverLoadDifferently()
    {
        const QTemporaryDir scratch;
        const QString path = SessionStore::fileIn(scratch.path());
        SessionStore(scratch.path()).save(manySessions());
        const QByteArray good = contentsOf(path);
        QVERIFY(good.size() > 600'000);
        QRandomGenerator random(20261121);
        int loaded = 0;
        for (int round = 0; round < 60; ++round) {
            QByteArray damaged = good;
            const auto at = random.bounded(good.size());
            switch (round % 4) {
            case 0:
                damaged.truncate(at);
                break;
            case 1:
                damaged[at] = char(random.bounded(256));
                break;
            case 2: // a cut where none belongs
                damaged.insert(damaged.indexOf('\n', at), "\n  },\n  {");
                break;
            default: // an element less or more
                damaged.remove(damaged.indexOf("\n  },\n  {", at / 2), 3);
            }
            writeFile(path, damaged);
            std::optional<SessionList> whole;
            const QString problem = failureOf([&] {
                whole = SessionList(DataFile(path).load(listOf(decodeChatSession)).value());
                whole->sort();
            });
            std::optional<SessionList> inParts;
            QCOMPARE(failureOf([&] { inParts = SessionStore(scratch.path()).load(); }), problem);
            QVERIFY(inParts == whole);
            QVERIFY(round % 4 != 0 || !whole);
            loaded += whole ? 1 : 0;
        }
        QVERIFY(loaded > 2);
    }

    void otherWritersFilesLoad_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("count"); // -1: refused
        const QByteArray& one = oneSession;
        QTest::newRow("none") << QByteArray("[ ]") << 0;
        QTest::newRow("compact") << QByteArray('[' + one + ',' + one + "]\n\n") << 2;
        QTest::newRow("comma at the end") << QByteArray('[' + one + ",]") << -1;
        QTest::newRow("more behind the end") << QByteArray('[' + one + "][]") << -1;
        QTest::newRow("byte order mark") << QByteArray("\xEF\xBB\xBF[]") << -1;
        QTest::newRow("UTF-16") << QByteArray("\xFF\xFE[\0]\0", 6) << -1;
        QTest::newRow("not UTF-8") << QByteArray("[\"\xC0\xAF\"]") << -1;
        QTest::newRow("deep") << QByteArray(100'000, '[') << -1;
        QTest::newRow("NaN") << QByteArray(one).replace(":1,", ":NaN,").prepend('[').append(']') << -1;
        QTest::newRow("huge number") << QByteArray(one).replace(":1,", ":1e999,").prepend('[').append(']')
                                     << -1;
    }
    void otherWritersFilesLoad()
    {
        QFETCH(QByteArray, text);
        QFETCH(int, count);
        const QTemporaryDir scratch;
        writeFile(SessionStore::fileIn(scratch.path()), text);
        int loaded = -1;
        const QString problem = failureOf([&] { loaded = int(SessionStore(scratch.path()).load().size()); });
        QCOMPARE(loaded, count);
        QCOMPARE(problem.isEmpty(), count >= 0);
    }
};

QTEST_GUILESS_MAIN(SessionStoreTest)
#include "SessionStoreTest.moc"
