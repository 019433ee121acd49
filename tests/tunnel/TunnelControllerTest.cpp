#include "tunnel/TunnelController.h"
#include "base/Error.h"
#include "providers/VarnelError.h"
#include "support/Keyring.h"
#include "tunnel/TunnelFixture.h"
#include "tunnel/TunnelProcess.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <semaphore>

using namespace varnel;
using namespace varnel::test;
using namespace std::chrono_literals;

namespace {

ConnectionSettings usableSettings()
{
    ConnectionSettings settings;
    settings.sshHost = QStringLiteral("gpu-box");
    settings.sshUser = QStringLiteral("me");
    return settings;
}

std::shared_ptr<MemorySecretStore> storeWithPassword()
{
    auto store = std::make_shared<MemorySecretStore>();
    store->items[QStringLiteral("varnel.ssh.password")] = "secret";
    return store;
}

/// A keyring that waits for its user.
class PromptingStore final : public SecretStore
{
public:
    std::binary_semaphore asked{0};
    std::binary_semaphore answer{0};

protected:
    std::optional<QByteArray> find(const QString&, Unlocking) override
    {
        asked.release();
        answer.acquire();
        return std::nullopt;
    }
    void add(const QString&, const QByteArray&) override {}
    void erase(const QString&) override {}
};

} // namespace

/// The controller with scripts in the place of ssh.
class TunnelControllerTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;

    /// A program that does what the script says.
    QString script(const QByteArray& text)
    {
        const QString path = m_folder.filePath(QStringLiteral("ssh"));
        QFile::remove(path); // one that still runs keeps its text
        QFile::remove(path + QLatin1String(".up"));
        QFile file(path);
        file.open(QIODevice::WriteOnly);
        file.write("#!/bin/sh\n" + text);
        file.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
        return path;
    }

private Q_SLOTS:
    void cleanup() { QVERIFY(waitUntil(hasNoChildren)); }

    void endsAreReportedOnce_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("output");
        const QString many = QStringLiteral("€\n").repeated(262144); // 1 MiB
        QTest::newRow("at once") << QByteArray("exit 7") << 7 << "";
        QTest::newRow("both outputs") << QByteArray("echo a; echo b >&2; exit 255") << 255 << "a\nb\n";
        QTest::newRow("signal") << QByteArray("kill -9 $$") << 9 << "";
        QTest::newRow("no UTF-8") << QByteArray("printf 'a\\377b'; exit 1") << 1 << "";
        QTest::newRow("megabytes") << QByteArray("yes € | head -c 9000000 >&2; exit 1") << 1 << many;
        QTest::newRow("the pipe is held")
            << QByteArray("echo a; sleep 60 & echo $! >\"$0.pid\"; exit 3") << 3 << "a\n";
        QTest::newRow("the environment is this one's")
            << QByteArray("echo \"$VARNEL_ASKPASS-$MARK-$(ls /proc/self/fd | tr '\\n' ' ')\"") << 0
            << "-m-0 1 2 3 \n";
    }
    void endsAreReportedOnce()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, output);
        const EnvironmentVariable mark("MARK", "m");
        TunnelFixture tunnel(script(text));
        tunnel.start(usableSettings());
        QVERIFY(!await(tunnel.controller.waitUntilStable(60s, {})));
        // What is there when the child is seen to be gone is complete.
        QCOMPARE(tunnel.reports, 1);
        QTEST(tunnel.status, "status");
        QVERIFY(tunnel.output == output);
        QVERIFY(tunnel.controller.output() == output);
        QFile grandchild(m_folder.filePath(QStringLiteral("ssh.pid")));
        if (grandchild.open(QIODevice::ReadOnly)) {
            QCOMPARE(::kill(grandchild.readAll().trimmed().toInt(), SIGKILL), 0); // it was still there
            grandchild.remove();
        }
    }

    void passwordIsAnsweredByTheProgramItself()
    {
        TunnelFixture tunnel(script("echo $SSH_ASKPASS $SSH_ASKPASS_REQUIRE $DISPLAY $VARNEL_ASKPASS $5"),
                             QStringLiteral("/bin/true"), storeWithPassword());
        tunnel.start(usableSettings());
        QVERIFY(tunnel.waitForReport());
        QCOMPARE(tunnel.output, QLatin1String("/bin/true force varnel 1 ServerAliveInterval=30\n"));
    }

    void failedStartsAreTold_data()
    {
        QTest::addColumn<QString>("ssh");
        QTest::addColumn<QString>("own");
        QTest::addColumn<QString>("message");
        QTest::newRow("no ssh") << "/nonexistent/ssh" << "/bin/true"
                                << "/nonexistent/ssh could not be started (";
        for (const char* const own : {"", "/nonexistent/varnel (deleted)"}) {
            QTest::newRow(own) << "/bin/false" << own
                               << "Varnel could not find its own executable to supply the SSH password.";
        }
    }
    void failedStartsAreTold()
    {
        QFETCH(QString, ssh);
        QFETCH(QString, own);
        QFETCH(QString, message);
        TunnelFixture tunnel(ssh, own, storeWithPassword());
        try {
            tunnel.start(usableSettings());
            QFAIL("it started");
        } catch (const VarnelError& error) {
            QVERIFY2(error.message().startsWith(message), qPrintable(error.message()));
        }
        QVERIFY(!tunnel.controller.isRunning());
        QCOMPARE(tunnel.reports, 0);
    }

    void stopComesAtAnyPointOfAStart_data()
    {
        QTest::addColumn<int>("turns");
        for (int turns = 0; turns < 12; ++turns)
            QTest::addRow("after %d turns", turns) << turns;
    }
    void stopComesAtAnyPointOfAStart()
    {
        QFETCH(int, turns);
        TunnelFixture tunnel(script("exec sleep 60"));
        Task<void> start = tunnel.controller.start(usableSettings(), {});
        for (int turn = 0; turn < turns; ++turn)
            QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 1);
        const bool wasStarted = start.isFinished();
        tunnel.controller.stop();
        QVERIFY(!tunnel.controller.isRunning());
        if (wasStarted)
            await(std::move(start));
        else
            QVERIFY_THROWS_EXCEPTION(Cancelled, await(std::move(start)));
        QVERIFY(waitUntil(hasNoChildren));
        QCOMPARE(tunnel.reports, 0);

        std::stop_source source;
        Task<void> stopped = tunnel.controller.start(usableSettings(), source.get_token());
        source.request_stop();
        QVERIFY_THROWS_EXCEPTION(Cancelled, await(std::move(stopped)));
        QVERIFY(!tunnel.controller.isRunning());
    }

    void lockedKeyringHoldsNobodyElseUp()
    {
        const auto store = std::make_shared<PromptingStore>();
        TunnelFixture tunnel(QStringLiteral("/bin/false"), QStringLiteral("/bin/true"), store);
        std::stop_source source;
        Task<void> start = tunnel.controller.start(usableSettings(), source.get_token());
        QVERIFY(waitUntil([&store] { return store->asked.try_acquire(); }));
        source.request_stop();
        QVERIFY_THROWS_EXCEPTION(Cancelled, await(std::move(start)));
        QVERIFY(await(tunnel.worker.run([](const std::stop_token&) { return true; })));
        store->answer.release();
    }

    void newStartIsNotDisturbedByTheOldOne()
    {
        const auto store = std::make_shared<PromptingStore>();
        TunnelFixture tunnel(
            script("trap 'echo old; exit 1' TERM; : >\"$0.up\"; while :; do sleep 0.05; done"),
            QStringLiteral("/bin/true"), store);
        store->answer.release();
        tunnel.start(usableSettings());
        QVERIFY(waitUntil([this] { return QFile::remove(m_folder.filePath(QStringLiteral("ssh.up"))); }));
        const std::shared_ptr<TunnelProcess> old = tunnel.controller.detach();
        old->terminate(); // ends while the next one is being started
        QVERIFY(!tunnel.controller.isRunning());

        Task<void> superseded = tunnel.controller.start(usableSettings(), {});
        store->answer.release();
        while (!tunnel.controller.isRunning())
            QCoreApplication::sendPostedEvents(); // it launches its child, and does not learn that it has
        Task<void> next = tunnel.controller.start(usableSettings(), {});
        QVERIFY_THROWS_EXCEPTION(Cancelled, await(std::move(superseded)));
        QVERIFY(waitUntil(hasNoChildren)); // while the next one still waits for its password
        store->answer.release();
        await(std::move(next));
        QVERIFY(!old->isRunning());
        QVERIFY(tunnel.controller.isRunning());
        QCOMPARE(tunnel.reports, 0);
        QCOMPARE(tunnel.controller.output(), QLatin1String(""));
    }

    void stubbornChildIsKilled()
    {
        TunnelFixture tunnel(script("trap '' TERM; : >\"$0.up\"; while :; do sleep 0.05; done"));
        tunnel.start(usableSettings());
        QVERIFY(waitUntil([this] { return QFile::remove(m_folder.filePath(QStringLiteral("ssh.up"))); }));
        tunnel.controller.stop();
        QVERIFY(waitUntil(hasNoChildren));
        QCOMPARE(tunnel.reports, 0);
    }

    void reportMayEndTheController()
    {
        TunnelFixture services(QStringLiteral("/bin/false"));
        auto controller = std::make_unique<TunnelController>(
            TunnelController::Services{.secrets = services.secrets,
                                       .runner = services.runner,
                                       .worker = services.worker,
                                       .clock = services.clock},
            TunnelController::Programs{.ssh = script("sleep 0.1"), .own = {}});
        controller->setOnExit([&controller](int, const QString&) { controller.reset(); });
        await(controller->start(usableSettings(), {}));
        QVERIFY(waitUntil([&controller] { return !controller; }));
    }
};

QTEST_GUILESS_MAIN(TunnelControllerTest)
#include "TunnelControllerTest.moc"
