#include "base/SecretStore.h"
#include "engine/TunnelStage.h"
#include "support/Keyring.h"
#include "support/ProgramRun.h"

#include <QDirIterator>
#include <QSaveFile>
#include <QTcpSocket>

using namespace varnel;
using namespace varnel::test;
using namespace std::chrono_literals;

namespace {

QString text(const char* words)
{
    return QString::fromUtf8(words);
}

const QString passwordAccount = text("varnel.ssh.password");

/// A stage on which the server wants the password, and the program is yet to be started.
void askForPassword(TunnelStage& stage, const QString& helper)
{
    stage.client.addHost(text("asks"), stage.server, "PubkeyAuthentication no");
    stage.settings.sshHost = text("asks");
    stage.profile.programs.own = helper;
}

/// Where a part of both secrets is found: in a file of the profile, or in what was said.
QStringList sentinelsIn(const TunnelStage& stage, const QStringList& said)
{
    QStringList found = said.filter(text("sentinel"));
    QDirIterator files(stage.profile.folder.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        if (file.open(QIODevice::ReadOnly) && file.readAll().contains("sentinel"))
            found.push_back(file.fileName());
    }
    return found;
}

} // namespace

/// A login by password, which takes its time, and what is left of the secrets.
class TunnelLoginTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        if (!SshServer::isInstalled() || !keyringInstalled())
            QSKIP("openssh-server or gnome-keyring is not installed");
    }

    void aSlowLoginIsWaitedFor_data()
    {
        QTest::addColumn<QString>("password");
        QTest::addColumn<QString>("status");
        QTest::newRow("a server that hangs for a while") << QString() << text("Connected to gpu-box · *");
        QTest::newRow("a password") << SshServer::password() << text("Connected to asks · *");
        QTest::newRow("a wrong password")
            << text("wrong")
            << text("The tunnel to asks did not stay open. %1@127.0.0.1: Permission denied *");
    }
    void aSlowLoginIsWaitedFor()
    {
        QFETCH(QString, password);
        QFETCH(QString, status);
        TunnelStage stage;
        // Stands in for a keyring that takes its time.
        const QString helper = stage.profile.folder.filePath(text("helper"));
        const QString answer = stage.profile.folder.filePath(text("answer"));
        QFile script(helper);
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write(text("#!/bin/sh\nwhile [ -e \"$0\" ] && ! cat '%1' 2>/dev/null; do sleep 0.1; done\n")
                         .arg(answer)
                         .toUtf8());
        script.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
        script.close();
        if (!password.isEmpty()) {
            stage.profile.secrets->save(passwordAccount, password);
            askForPassword(stage, helper);
            stage.start();
        }
        stage.server.setFrozen(password.isEmpty());
        stage.model->openConnection();
        QVERIFY(waitUntil([&] { return stage.model->tunnelIsUp(); }));
        QTest::qWait(800); // a server that were asked now would have been given up
        QStringList trace{text("<connecting>"), text("Connecting to %1").arg(stage.settings.sshHost)};
        QVERIFY(matches(stage.trace.entries, trace, {}));

        QSaveFile file(answer); // all of it is there at once
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(password.toUtf8() + '\n');
        QVERIFY(file.commit());
        stage.server.setFrozen(false);
        QVERIFY(waitUntil([&] { return stage.model->linkState() != LinkState::Connecting; }, 30s));
        const bool opens = status.startsWith(text("Connected"));
        trace << (opens ? text("<connected>") : text("<offline>"))
              << status.replace(text("%1"), stage.server.user());
        QVERIFY(matches(stage.trace.entries, trace, {}));
        QCOMPARE(stage.model->tunnelIsUp(), opens);
        const QStringList lines =
            opens ? QStringList{text("tunnel started *"), text("probe *"), text("Connected *")}
                  : QStringList{text("tunnel started *"), text("tunnel exited status=255 *")};
        QVERIFY(stage.logged(lines));
    }

    void aPortThatIsTakenDuringALoginIsNotAsked()
    {
        TunnelStage stage;
        stage.server.setFrozen(true);
        stage.model->openConnection();
        QVERIFY(waitUntil([&] { return stage.model->tunnelIsUp(); }));
        QTcpServer taker;
        QVERIFY(taker.listen(QHostAddress::LocalHost, static_cast<quint16>(stage.settings.localPort)));
        stage.server.setFrozen(false);
        QVERIFY(stage.waitFor(LinkState::Offline));
        // Where there is no ::1, it is ssh that says so.
        QVERIFY(stage.model->statusMessage().contains(text("already in use")));
        QVERIFY(!stage.model->tunnelIsUp());
        while (QTcpSocket* const visitor = taker.nextPendingConnection())
            QVERIFY(!visitor->waitForReadyRead(100)); // whoever looks whether it is taken says nothing
    }

    void secretsAreLeftNowhere()
    {
        const QTemporaryDir runtime;
        const EnvironmentVariable runtimeVariable("XDG_RUNTIME_DIR", runtime.path().toUtf8());
        const Keyring keyring;
        systemSecretStore()->save(passwordAccount, SshServer::password());
        std::vector<Exchange> asked;
        practice::HttpServer cloud([&asked](const Exchange& exchange) { asked.push_back(exchange); });
        cloud.listen();
        TunnelStage stage;
        askForPassword(stage, programPath(text("varnel")));
        stage.profile.environment["VARNEL_DEEPSEEK_BASE"] = cloud.url().toEncoded();
        stage.start();
        AppModel& model = *stage.model;
        QStringList said; // beside the status
        connect(&model, &AppState::connectionDetailChanged, &model,
                [&] { said << model.connectionDetail(); });
        connect(&model, &AppState::connectionReportChanged, &model,
                [&] { said << model.connectionReport(); });
        await(model.credentials().saveExactly(passwordAccount, SshServer::password()));
        await(model.credentials().save(text("DEEPSEEK_API_KEY"), text("sentinel-key")));
        model.noteCredentialChange();
        model.openConnection();
        QVERIFY(stage.waitFor(LinkState::Connected));

        model.setPassthroughEnabled(true);
        model.chooseRemoteModel(RemoteProvider::DeepSeek, text("m"));
        for (const int status : {200, 401}) {
            asked.clear();
            model.setDraft(text("one"));
            model.send();
            QVERIFY(waitUntil([&] { return !asked.empty(); }));
            QCOMPARE(asked[0]->header("Authorization"), QByteArray("Bearer sentinel-key"));
            asked[0]->reply(status, "application/json",
                            "{\"choices\":[{\"message\":{\"content\":\"hello\"}}]}");
            QVERIFY(waitUntil([&] { return !model.isBusy(); }));
            QCOMPARE(model.failure().has_value(), status != 200);
        }

        // Every file that there can be, before the running reply is in its conversation.
        model.newConversation();
        model.chooseModel(text("practice-stall:1b"));
        model.setDraft(text("two"));
        model.send();
        model.addLink(text("title"), text("https://127.0.0.1/"), {}, {});
        QVERIFY(waitUntil([&] { return !model.selectedSession()->messages.empty(); }));
        model.setDraft(text("three"));
        for (const char* const name : {"recovery", "sessions", "library", "drafts"}) {
            const QString file = stage.profile.dataFolder() + text("/%1.json").arg(text(name));
            QVERIFY2(waitUntil([&] { return QFile::exists(file); }), name);
        }
        QCOMPARE(sentinelsIn(stage, stage.trace.entries + said), QStringList());

        stage.server.dropConnections();
        QVERIFY(stage.waitFor(LinkState::Offline));
        model.shutDown();
        QVERIFY(stage.profile.logged().join(u'\n').contains(text("chat failed DeepSeek request failed")));
        QVERIFY(stage.trace.entries.join(u'\n').contains(text("DeepSeek request failed")));
        QVERIFY(QFile::exists(stage.profile.folder.filePath(text("preferences.ini"))));
        QCOMPARE(sentinelsIn(stage, stage.trace.entries + said), QStringList());
    }
};

QTEST_GUILESS_MAIN(TunnelLoginTest)
#include "TunnelLoginTest.moc"
