#include "store/DataFolderLock.h"
#include "store/InstanceChannel.h"
#include "store/RuntimeFolder.h"
#include "support/Await.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <future>
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
        const auto isRaised = [&data](const QByteArray& token) {
            std::future<bool> asked = std::async(std::launch::async, [&data, token] {
                return InstanceChannel::askToRaise(data.path(), token, 5s);
            });
            return waitUntil([&asked] { return asked.wait_for(0s) == std::future_status::ready; }) &&
                   asked.get();
        };
        QVERIFY(!isRaised({}));
        QList<QByteArray> raised;
        for (int life = 0; life < 2; ++life) {
            const InstanceChannel channel(data.path(),
                                          [&raised](const QByteArray& token) { raised.append(token); });
            QVERIFY(isRaised("token-1"));
            QVERIFY(isRaised("not\na token"));
            QVERIFY(isRaised(QByteArray(100'000, 'x')));
            QCOMPARE(raised.size(), 3 * (life + 1));
        }
        QCOMPARE(raised.mid(3), QList<QByteArray>({"token-1", "", ""}));
        QVERIFY(!isRaised({}));
        // One that was killed leaves its socket behind.
        QFile left(runtimePath(data.path(), QStringLiteral(".socket")));
        QVERIFY(left.open(QIODevice::WriteOnly));
        QVERIFY(!isRaised({}));
        const InstanceChannel channel(data.path(), [](const QByteArray&) {});
        QVERIFY(isRaised({}));
    }

    // One that is ending takes no message, and loses one that it has; the folder is free only in the end.
    void whoComesWhileTheFirstEndsGoesOnInItsPlace()
    {
        const QTemporaryDir data;
        std::optional<DataFolderLock> lock = DataFolderLock::take(data.path());
        QCOMPARE(takeOrRaise(data.path(), {}, 0ms).other, OtherInstance::Silent);
        auto channel = std::make_unique<InstanceChannel>(data.path(), [](const QByteArray&) {});
        QCOMPARE(takeOrRaise(data.path(), {}, 1ms).other, OtherInstance::Silent);
        std::future<InstanceStart> second =
            std::async(std::launch::async, [&data] { return takeOrRaise(data.path(), {}, 10s); });
        QCOMPARE(second.wait_for(200ms), std::future_status::timeout);
        channel.reset();
        QCOMPARE(second.wait_for(200ms), std::future_status::timeout);
        lock.reset();
        const InstanceStart start = second.get();
        QVERIFY(start.other == OtherInstance::None && start.lock);
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
