#include "engine/ConversationTitle.h"
#include "engine/PullProgress.h"
#include "engine/Stage.h"
#include "engine/TurnBuffers.h"
#include "store/LibraryStore.h"

using namespace varnel;
using namespace varnel::test;
using namespace std::chrono_literals;

class AppModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aTurnStreamsIntoTheConversation()
    {
        Stage stage;
        QCOMPARE(stage.session().title, QStringLiteral("New conversation"));
        stage.send(QStringLiteral("  What is the capital of France, and since when, and why not Lyon?\n"));
        QCOMPARE(stage.session().title, QStringLiteral("What is the capital of France, and since when,"));
        QVERIFY(stage.model->draft().isEmpty());
        QVERIFY(stage.model->isStreaming());
        stage.begin("{\"message\":{\"thinking\":\"hm\"}}\n" + line("Par"));
        // The first piece shows at once; what comes within the pace waits for the end.
        QVERIFY(waitUntil([&] { return stage.session().messages.back().thinking == QLatin1String("hm"); }));
        stage.chats.back()->sendChunk(line("is") + "{\"message\":{\"thinking\":\"late\"}}\n" + doneLine);
        QVERIFY(stage.waitForEnd());
        QCOMPARE(stage.session().messages.size(), 2U);
        QCOMPARE(stage.lastText(), QStringLiteral("Paris"));
        QCOMPARE(stage.session().messages.back().thinking, QStringLiteral("hm"));
        QVERIFY(stage.session().messages.back().duration.has_value());
        QVERIFY(stage.model->statusMessage().isEmpty());

        stage.send(QStringLiteral("again"));
        QVERIFY(stage.chats.back()->body().contains("\"content\":\"Paris\""));
        stage.begin(line("ok") + doneLine);
        QVERIFY(stage.waitForEnd());
        QCOMPARE(stage.session().messages.size(), 4U);
    }

    void aFailureCanBeTriedAgainOrEdited()
    {
        Stage stage;
        stage.send(QStringLiteral("one"));
        stage.chats.back()->reply(404, "application/json", "{\"error\":\"model 'x' not found\"}");
        QVERIFY(stage.waitForEnd());
        QCOMPARE(stage.model->failure()->text, QStringLiteral("model 'x' not found"));
        stage.model->tryAgain();
        QVERIFY(waitUntil([&] { return stage.chats.size() == 2; }));
        QVERIFY(!stage.model->failure());
        QCOMPARE(stage.chats[1]->body(), stage.chats[0]->body());
        stage.begin(line("half") + "{\"error\":\"out of memory\"}\n");
        QVERIFY(stage.waitForEnd());
        QCOMPARE(stage.model->failure()->text, QStringLiteral("out of memory"));
        stage.model->setDraft(QStringLiteral("typed"));
        stage.model->editFailed();
        QCOMPARE(stage.model->draft(), QStringLiteral("one\n\ntyped"));
        QVERIFY(stage.session().messages.empty());
    }

    void conversationsKeepTheirDraftsAndTheSelectionIsAlwaysOne()
    {
        Stage stage;
        AppModel& model = *stage.model;
        const QUuid first = model.selection();
        stage.send(QStringLiteral("one"));
        model.setDraft(QStringLiteral("left here"));
        model.newConversation();
        const QUuid second = model.selection();
        QVERIFY(second != first);
        QVERIFY(model.draft().isEmpty());
        model.newConversation(); // an empty one is enough
        QCOMPARE(model.sessions().size(), 2U);
        model.select(QUuid::createUuid());
        QCOMPARE(model.selection(), second);
        model.togglePinned(first);
        QCOMPARE(model.sessions().front().id, first);
        model.select(first);
        QCOMPARE(model.draft(), QStringLiteral("left here"));
        model.rename(first, QStringLiteral(" a\nb "));
        QCOMPARE(model.selectedTitle(), QStringLiteral("a b"));
        model.remove(first); // while its reply runs
        QCOMPARE(model.selection(), second);
        QVERIFY(stage.waitForEnd());
        model.remove(second);
        QCOMPARE(model.sessions().size(), 1U);
        QVERIFY(model.selectedSession());
    }

    void theServerIsCheckedAndNewerChecksReplaceOlderOnes()
    {
        Stage stage;
        QCOMPARE(stage.model->connectionReport(), QStringLiteral("Not tested"));
        QCOMPARE(stage.model->linkState(), LinkState::Unknown);
        stage.model->checkConnection();
        stage.model->checkConnection();
        QCOMPARE(stage.model->linkState(), LinkState::Connecting);
        QVERIFY(waitUntil([&] { return stage.model->linkState() == LinkState::Connected; }));
        QCOMPARE(stage.model->connectionReport(), QStringLiteral("Reachable · 0.24.0 · 2 models"));
        QCOMPARE(stage.model->connectionDetail(),
                 QStringLiteral("Connected to 127.0.0.1. Reachable · 0.24.0 · 2 models"));
        QCOMPARE(stage.model->statusMessage(), QStringLiteral("Connected to 127.0.0.1 · 2 models"));
        QCOMPARE(stage.model->installedModels().size(), 2U);
        QVERIFY(waitUntil([&] { return stage.server.openConnections() == 0; })); // none is kept

        stage.server.stopListening();
        ConnectionSettings tunnel;
        tunnel.mode = ConnectionMode::SshTunnel;
        tunnel.sshHost = QStringLiteral("gpu-box");
        tunnel.localPort = 1;
        ModelProfile profile(stage.clock);
        profile.preferences.setConnection(tunnel);
        AppModel other(profile.services());
        other.checkConnection();
        QVERIFY(waitUntil([&] { return other.linkState() == LinkState::Offline; }));
        QCOMPARE(other.statusMessage(),
                 QStringLiteral("Not connected to gpu-box. Connect opens the SSH tunnel."));
    }

    void whatIsSaidAtTheStartIsSaidAgainAfterTheFirstCheck()
    {
        Stage stage;
        stage.model.reset();
        for (const char* const name : {"sessions.json", "library.json"}) {
            QFile file(stage.profile.dataFolder() + QLatin1Char('/') + QLatin1String(name));
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write("[}") == 2);
        }
        stage.start();
        stage.model->checkAtStart();
        const auto says = [&](const char* words) {
            return stage.model->statusMessage().contains(QLatin1String(words));
        };
        QVERIFY(says("sessions.json") && says("library.json"));
        bool isRepeated = false;
        connect(stage.model.get(), &AppModel::statusMessageChanged, this, [&] {
            isRepeated |= stage.model->linkState() == LinkState::Connected && says("sessions.json") &&
                          says("library.json");
        });
        QVERIFY(waitUntil([&] { return isRepeated; }));
        const auto logged = [&](const char* words) {
            return stage.profile.logged().join(QLatin1Char('\n')).contains(QLatin1String(words));
        };
        QVERIFY(logged("sessions.json") && logged("library.json"));
        QVERIFY(waitUntil([&] { return logged("sessions.unreadable-"); })); // which is said too, at its time
        stage.model->checkConnection();
        QVERIFY(waitUntil([&] { return says("Connected to 127.0.0.1"); }));
    }

    void aModelThatGoesAwayMidTurnLeavesNothingBehind()
    {
        Stage stage;
        stage.send(QStringLiteral("one"));
        stage.begin(line("half"));
        stage.model->checkConnection();
        stage.model.reset();
        QVERIFY(waitUntil([&] { return stage.server.openConnections() == 0; }));
    }

    void refreshesArePacedAndLateThinkingIsDropped()
    {
        const auto at = [](int milliseconds) {
            return std::chrono::steady_clock::time_point(milliseconds * 1ms);
        };
        TurnBuffers buffers;
        const auto thinking = [](const char* text) {
            return ChatDelta{ChatDelta::Kind::Thinking, QLatin1String(text)};
        };
        const auto reply = [](const char* text) {
            return ChatDelta{ChatDelta::Kind::Reply, QLatin1String(text)};
        };
        QVERIFY(buffers.take(thinking("a"), at(1000)));
        QVERIFY(!buffers.take(thinking("b"), at(1400)));
        QVERIFY(buffers.take(reply("c"), at(1401)));
        QVERIFY(!buffers.take(thinking("late"), at(5000)));
        QVERIFY(buffers.take(reply("d"), at(5000)));
        QCOMPARE(buffers.thinking() + buffers.reply(), QStringLiteral("abcd"));
    }

    // Both wait for the disk on other threads, and say how it went afterwards.
    void filesOfAReplyAndTheLibraryAreSavedBehind()
    {
        Stage stage;
        const QString folder = stage.profile.folder.filePath(QStringLiteral("site"));
        const QString path = folder + QStringLiteral("/a.txt");
        const auto contents = [&path] {
            QFile file(path);
            return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        };
        QVERIFY(QDir().mkpath(folder));
        QFile old(path);
        QVERIFY(old.open(QIODevice::WriteOnly) && old.write("old") == 3);
        old.close();
        stage.model->setProjectPath(folder);
        stage.send(QStringLiteral("write"));
        stage.begin(line("```path:a.txt\\nnew\\n```\\n```path:b.txt\\n```\\n") + doneLine);
        QVERIFY(stage.waitForEnd());
        stage.model->writeProjectFiles(stage.session().messages.back().id, {QStringLiteral("a.txt")});
        QVERIFY(waitUntil([&] { return stage.model->canRestoreProjectFiles(); }));
        QCOMPARE(contents(), "new\n");
        QCOMPARE(stage.model->statusMessage(), QStringLiteral("Wrote 1 file in site"));
        QVERIFY(stage.profile.logged().contains(QStringLiteral("project write ") + folder));
        stage.model->restoreProjectFiles();
        QVERIFY(waitUntil([&] { return contents() == "old"; }));
        stage.model->writeProjectFiles(stage.session().messages.back().id, {QStringLiteral("a.txt")});

        stage.model->addLink(QStringLiteral("t"), QStringLiteral("u"), {}, {});
        stage.model.reset();
        QCOMPARE(LibraryStore(stage.profile.dataFolder()).items().size(), 1);
    }

    void aPullOfImpossibleSizeIsSaidInAll()
    {
        constexpr qint64 huge = std::numeric_limits<qint64>::max();
        const auto at = [](int seconds) { return std::chrono::steady_clock::time_point(seconds * 1s); };
        const auto said = [&](qint64 first, qint64 second) {
            PullProgress progress(QStringLiteral("m"));
            progress.take({.status = {}, .error = {}, .completed = first, .total = huge}, at(0));
            progress.take({.status = {}, .error = {}, .completed = second, .total = huge}, at(1));
            return progress.text();
        };
        QVERIFY(said(0, 1).endsWith(QStringLiteral(" · 1 bytes/s")));
        QVERIFY(said(0, huge / 2).endsWith(QStringLiteral(" left")));
    }

    void theModelForAKindOfWorkIsChosen()
    {
        practice::HttpServer server([](const Exchange& exchange) {
            const bool isList = exchange->path() == "/api/tags";
            exchange->reply(200, "application/json",
                            isList ? R"({"models":[{"name":"llama3.1:70b"},{"name":"qwen2.5-coder:7b"}]})"
                                   : R"({"version":"0.24.0","models":[]})");
        });
        server.listen();
        const SystemClock clock;
        ModelProfile profile(clock);
        profile.connectTo(server.url());
        AppModel model(profile.services());
        const QString before = model.selectedModel();
        model.chooseWorkContext(WorkContext::Coding);
        QCOMPARE(model.statusMessage(), QStringLiteral("No models are installed on this host."));
        QCOMPARE(model.selectedModel(), before);
        model.checkConnection();
        QVERIFY(waitUntil([&] { return model.installedModels().size() == 2; }));
        model.chooseWorkContext(WorkContext::Coding);
        QCOMPARE(model.statusMessage(), QStringLiteral("Coding · qwen2.5-coder:7b"));
        QCOMPARE(model.selectedModel(), QStringLiteral("qwen2.5-coder:7b"));
        model.chooseWorkContext(WorkContext::Vision);
        QCOMPARE(model.statusMessage(), QStringLiteral("No vision model is installed. Using llama3.1:70b."));
        QCOMPARE(model.selectedModel(), QStringLiteral("llama3.1:70b"));
        QCOMPARE(model.workContext(), WorkContext::Vision);
        QCOMPARE(profile.preferences.workContext(), WorkContext::Vision);
    }

    void aReplyThatNeverBeganIsNothingToAModel()
    {
        Stage stage;
        stage.send(QStringLiteral("one"));
        stage.start();
        stage.send(QStringLiteral("two"));
        QVERIFY(!stage.chats.back()->body().contains("assistant"));
    }

    void whatExceedsTheContextIsSaid()
    {
        Stage stage;
        stage.model->changeSettings([](ChatSession& session) { session.contextLength = 100; });
        QVERIFY(stage.model->contextWarning().isEmpty());
        stage.model->setDraft(QString(400, u'x'));
        QVERIFY(stage.model->contextWarning().isEmpty());
        stage.model->setDraft(QString(405, u'x'));
        QVERIFY(stage.model->contextWarning().contains(QChar(0x2248)));
    }

    void titlesAreCutAtAWord_data()
    {
        QTest::addColumn<QString>("prompt");
        QTest::addColumn<QString>("title");
        const QString family =
            QString::fromUtf8("\xf0\x9f\x91\xa9\xe2\x80\x8d\xf0\x9f\x91\xa9\xe2\x80\x8d\xf0\x9f\x91\xa6");
        QTest::newRow("short") << QStringLiteral(" hi\n there ") << QStringLiteral("hi there");
        QTest::newRow("exactly") << QString(48, QLatin1Char('x')) << QString(48, QLatin1Char('x'));
        QTest::newRow("one word") << QString(60, QLatin1Char('x')) << QString(48, QLatin1Char('x'));
        QTest::newRow("word ends there")
            << QString(48, QLatin1Char('x')) + QStringLiteral(" y") << QString(48, QLatin1Char('x'));
        QTest::newRow("inside a word") << QString(40, QLatin1Char('x')) + QStringLiteral(" and more words")
                                       << QString(40, QLatin1Char('x')) + QStringLiteral(" and");
        QTest::newRow("clusters") << family.repeated(50) << family.repeated(48);
    }
    void titlesAreCutAtAWord()
    {
        QFETCH(QString, prompt);
        QTEST(titleFromPrompt(prompt), "title");
    }
};

QTEST_GUILESS_MAIN(AppModelTest)
#include "AppModelTest.moc"
