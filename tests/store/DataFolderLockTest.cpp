#include "store/DataFolderLock.h"
#include "store/InstanceChannel.h"
#include "store/RuntimeFolder.h"
#include "support/Await.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace varnel;
using namespace varnel::test;
using namespace std::chrono_literals;

class DataFolderLockTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_runtime.path())); }

    void oneHoldsAFolder()
    {
        const QTemporaryDir data;
        const QTemporaryDir other;
        const QString link = data.filePath(QStringLiteral("link"));
        QVERIFY(QFile::link(data.path(), link));
        {
            const std::optional<DataFolderLock> first = DataFolderLock::take(data.path());
            QVERIFY(first);
            QVERIFY(!DataFolderLock::take(data.path() + QLatin1Char('/')));
            QVERIFY(!DataFolderLock::take(link));
            QVERIFY(DataFolderLock::take(other.path()));
        }
        QVERIFY(DataFolderLock::take(link));
        QCOMPARE(QDir(data.path()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::Hidden).size(),
                 1);
    }

    void killedHolderLeavesNothing()
    {
        const QTemporaryDir data;
        int ends[2];
        QCOMPARE(::pipe(ends), 0);
        const pid_t child = ::fork();
        if (child == 0) {
            const std::optional<DataFolderLock> lock = DataFolderLock::take(data.path());
            const char byte = lock ? '1' : '0';
            if (::write(ends[1], &byte, 1) == 1)
                ::pause();
            ::_exit(1);
        }
        char byte = 0;
        QCOMPARE(::read(ends[0], &byte, 1), 1);
        QCOMPARE(byte, '1');
        QVERIFY(!DataFolderLock::take(data.path()));
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        QVERIFY(DataFolderLock::take(data.path()));
        ::close(ends[0]);
        ::close(ends[1]);
    }

    void secondAsksTheFirst()
    {
        const QTemporaryDir data;
        QVERIFY(!InstanceChannel::askToRaise(data.path(), {}));
        QList<QByteArray> raised;
        for (int life = 0; life < 2; ++life) {
            const InstanceChannel channel(data.path(),
                                          [&raised](const QByteArray& token) { raised.append(token); });
            QVERIFY(InstanceChannel::askToRaise(data.path(), "token-1"));
            QVERIFY(InstanceChannel::askToRaise(data.path(), "not\na token"));
            QVERIFY(InstanceChannel::askToRaise(data.path(), QByteArray(100'000, 'x')));
            QVERIFY(waitUntil([&] { return raised.size() == 3 * (life + 1); }));
        }
        QCOMPARE(raised.mid(3), QList<QByteArray>({"token-1", "", ""}));
        QVERIFY(!InstanceChannel::askToRaise(data.path(), {}));
        // One that was killed leaves its socket behind.
        QFile left(runtimePath(data.path(), QStringLiteral(".socket")));
        QVERIFY(left.open(QIODevice::WriteOnly));
        QVERIFY(!InstanceChannel::askToRaise(data.path(), {}));
        const InstanceChannel channel(data.path(), [](const QByteArray&) {});
        QVERIFY(InstanceChannel::askToRaise(data.path(), {}));
    }

    // One that is ending still holds the folder but shows no window any more.
    void whoComesWhileTheFirstEndsGoesOnInItsPlace()
    {
        const QTemporaryDir data;
        std::array<int, 2> told{};
        std::array<int, 2> asked{};
        QVERIFY(::pipe(told.data()) == 0 && ::pipe(asked.data()) == 0);
        char byte = '1';
        const pid_t child = ::fork();
        if (child == 0) {
            const std::optional<DataFolderLock> lock = DataFolderLock::take(data.path());
            auto channel = std::make_unique<InstanceChannel>(data.path(), [](const QByteArray&) {});
            bool isWell = ::write(told[1], &byte, 1) == 1 && ::read(asked[0], &byte, 1) == 1;
            channel.reset();
            isWell = isWell && ::write(told[1], &byte, 1) == 1;
            ::usleep(300'000);
            ::_exit(isWell ? 0 : 1);
        }
        QCOMPARE(::read(told[0], &byte, 1), 1);
        QCOMPARE(takeOrRaise(data.path(), {}, 0ms).other, OtherInstance::Raised);
        QCOMPARE(::write(asked[1], &byte, 1), 1);
        QCOMPARE(::read(told[0], &byte, 1), 1);
        QCOMPARE(takeOrRaise(data.path(), {}, 0ms).other, OtherInstance::Silent);
        const InstanceStart start = takeOrRaise(data.path(), {}, 10s);
        QVERIFY(start.other == OtherInstance::None && start.lock);
        int status = -1;
        QVERIFY(::waitpid(child, &status, 0) == child && status == 0);
        for (const int end : {told[0], told[1], asked[0], asked[1]})
            ::close(end);
    }

    void runtimeFolderIsPrivate()
    {
        const QString folder = m_runtime.filePath(QStringLiteral("varnel"));
        runtimeFolder();
        QVERIFY(::chmod(qPrintable(folder), 0777) == 0);
        QCOMPARE(runtimeFolder(), folder);
        struct stat status{};
        QCOMPARE(::stat(qPrintable(folder), &status), 0);
        QCOMPARE(status.st_mode & 0777U, 0700U);
        QVERIFY(QDir(folder).removeRecursively());
        QVERIFY(QFile::link(QDir::tempPath(), folder));
        QVERIFY_THROWS_EXCEPTION(Error, runtimeFolder());
        QVERIFY(QFile::remove(folder));
    }

    void longPathsGoElsewhere()
    {
        const QString deep = m_runtime.filePath(QString(80, u'd'));
        QVERIFY(QDir().mkpath(deep));
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(deep));
        qputenv("TMPDIR", QFile::encodeName(m_runtime.path()));
        QCOMPARE(runtimeFolder(), m_runtime.filePath(QStringLiteral("varnel-%1").arg(::getuid())));
        qunsetenv("TMPDIR");
    }

private:
    QTemporaryDir m_runtime;
};

QTEST_GUILESS_MAIN(DataFolderLockTest)
#include "DataFolderLockTest.moc"
