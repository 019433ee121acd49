#include "engine/ConversationExport.h"
#include "engine/Stage.h"
#include "practice_host/PracticeHost.h"
#include "support/ManualClock.h"
#include "websearch/TestNetwork.h"

using namespace varnel;
using namespace varnel::test;
using namespace std::chrono_literals;

namespace {

QString text(const char* words)
{
    return QString::fromUtf8(words);
}

QByteArray contentsOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void write(const QString& path, const QByteArray& contents)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(contents);
}

void talk(Stage& stage, const char* prompt, const QByteArray& reply)
{
    stage.send(text(prompt));
    stage.begin(line(reply) + doneLine);
    QVERIFY(stage.waitForEnd());
}

bool waitForStatus(const Stage& stage, const QString& beginning)
{
    const bool came = waitUntil([&] { return stage.model->statusMessage().startsWith(beginning); }, 5s);
    if (!came)
        qWarning("the status is %s", qPrintable(stage.model->statusMessage()));
    return came;
}

} // namespace

/// What the model does with files, pages, lists and the models of a server.
class AppModelFilesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void conversationsAndRepliesAreSavedAndReadBack()
    {
        Stage stage;
        AppModel& model = *stage.model;
        const auto path = [&](const char* name) { return stage.profile.folder.filePath(text(name)); };
        talk(stage, "one", "**first**");
        const ChatSession original = stage.session();
        write(path("reply.md"), "older");
        write(path("reply.md.saving"), "mine");
        const auto permissions = QFile::permissions(path("reply.md"));
        model.saveReply(original.id, original.messages[1].id, path("reply.md"));
        QVERIFY(waitForStatus(stage, text("Saved ") + path("reply.md")));
        QCOMPARE(contentsOf(path("reply.md")), QByteArray("**first**\n"));
        QCOMPARE(contentsOf(path("reply.md.saving")), QByteArray("mine"));
        QCOMPARE(QFile::permissions(path("reply.md")), permissions);
        model.saveTranscript(path("all.md"));
        QVERIFY(waitForStatus(stage, text("Saved ") + path("all.md")));
        QVERIFY(contentsOf(path("all.md")).startsWith("# one\n"));
        model.exportConversation(original.id, path("all.json"), ConversationForm::Json);
        QVERIFY(waitForStatus(stage, text("Saved ") + path("all.json")));
        model.importConversation(path("all.json"));
        QVERIFY(waitForStatus(stage, text("Imported one")));
        QCOMPARE(model.sessions().size(), 2U);
        QVERIFY(model.selection() != original.id);
        QCOMPARE(stage.contents(), QStringList({text("one"), text("**first**")}));

        model.importConversation(path("reply.md"));
        QVERIFY(waitForStatus(stage, path("reply.md") + text(": ")));
        model.importConversation(path("none.json"));
        QVERIFY(waitForStatus(stage, text("There is no file ")));
        model.saveTranscript(path("no/such/folder.md"));
        QVERIFY(waitForStatus(stage, path("no/such/folder.md")));
        QCOMPARE(model.sessions().size(), 2U);
    }

    void aTranscriptNamesWhatWasAttachedAndNotWhere()
    {
        Stage stage;
        stage.model->chooseModel(text("llava"));
        const QString photo = stage.profile.folder.filePath(text("photo.png"));
        write(photo, "x");
        stage.model->importFiles({QUrl::fromLocalFile(photo)}, {}, true);
        QVERIFY(waitUntil([&] { return !stage.model->attachmentIDs().empty(); }));
        talk(stage, "look", "seen");
        const QString file = stage.profile.folder.filePath(text("all.md"));
        stage.model->saveTranscript(file);
        QVERIFY(waitForStatus(stage, text("Saved ")));
        const QByteArray saved = contentsOf(file);
        QVERIFY(saved.contains("Attached:\n\n- photo\n"));
        QVERIFY2(!saved.contains(stage.profile.dataFolder().toUtf8()), saved.constData());
    }

    void anImportThatFailsIsToldBeforeItEnds()
    {
        Stage stage;
        std::vector<QUuid> failed;
        connect(stage.model.get(), &AppState::importFailed, this, [&](const QUuid& session) {
            if (stage.model->isImporting())
                failed.push_back(session);
        });
        const QUrl gone = QUrl::fromLocalFile(stage.profile.folder.filePath(text("gone.txt")));
        stage.model->importFiles({gone, gone}, {}, true);
        QVERIFY(waitUntil([&] { return !stage.model->isImporting(); }));
        QCOMPARE(failed, std::vector<QUuid>(2, stage.model->selection()));
    }

    void aPageIsReadIntoTheDraftOfItsConversation()
    {
        TestNetwork network;
        practice::HttpServer site([](const Exchange& exchange) {
            if (exchange->path() == "/page")
                exchange->reply(200, "text/html", "<html><title>T</title><p>Words</p></html>");
            else
                exchange->reply(404, "text/html", "no");
        });
        site.listen();
        Stage stage;
        stage.pages = &network;
        stage.start();
        const QUuid first = stage.model->selection();
        stage.model->setDraft(text("see"));
        const QString url = QStringLiteral("http://page.test:%1/page").arg(site.port());
        stage.model->readPage(url + u' ');
        stage.model->addConversation(stage.session()); // another is selected meanwhile
        QVERIFY(waitForStatus(stage, text("Reading ")));
        QVERIFY(waitUntil([&] { return stage.model->statusMessage().isEmpty(); }));
        stage.model->select(first);
        QVERIFY2(stage.model->draft().startsWith(text("see\n\n") + url + text("\n\nT\n\nT Words")),
                 qPrintable(stage.model->draft()));
        const QString before = stage.model->draft();
        stage.model->readPage(QStringLiteral("http://page.test:%1/").arg(site.port()));
        QVERIFY(waitForStatus(stage, text("Could not read that page (HTTP 404).")));
        stage.model->readPage(text("http://127.0.0.1/"));
        QVERIFY(waitForStatus(stage, text("That URL is not a public http or https page.")));
        network.hosts.insert(text("slow.test"), {});
        stage.model->readPage(text("http://slow.test/"));
        stage.model->stopReadingPage();
        QVERIFY(waitForStatus(stage, text("Stopped.")));
        QCOMPARE(stage.model->draft(), before);
    }

    void theListKeepsItsOrderAndItsSelection()
    {
        Stage stage;
        AppModel& model = *stage.model;
        bool valid = true;
        for (const auto changed : {&AppState::sessionsChanged, &AppState::selectionChanged})
            connect(&model, changed, this, [&] { valid = valid && model.selectedSession(); });
        talk(stage, "one", "first");
        const QUuid one = model.selection();
        model.newConversation();
        talk(stage, "two", "second");
        const QUuid two = model.selection();
        model.duplicate(one);
        QCOMPARE(model.selectedTitle(), text("Copy of one"));
        model.remove(model.selection());
        model.undoRemove();
        QCOMPARE(model.selectedTitle(), text("Copy of one"));
        model.remove(model.selection());
        model.togglePinned(one);
        QCOMPARE(model.sessions().front().id, one);
        model.rename(one, text("  renamed\n"));
        model.select(two);
        model.remove(two);
        QCOMPARE(model.selection(), one);
        model.remove(one);
        QCOMPARE(model.sessions().size(), 1U);
        model.undoRemove();
        QCOMPARE(model.sessions().size(), 1U);
        QVERIFY(valid);
        stage.start();
        QCOMPARE(stage.model->selectedTitle(), text("renamed"));
        QVERIFY(stage.model->sessions().front().pinned);
    }

    void eachRemovedConversationComesBackForItsOwnTime()
    {
        ManualClock clock;
        Stage stage;
        stage.time = &clock;
        stage.start();
        AppModel& model = *stage.model;
        const auto addTitled = [&](const char* title) {
            ChatSession session = model.newSettings();
            session.title = text(title);
            model.addConversation(session);
            return session.id;
        };
        const QUuid b = addTitled("b");
        model.remove(addTitled("c"));
        clock.advance(6s);
        model.remove(addTitled("d"));
        model.remove(b);
        QCOMPARE(model.removedTitle(), text("b"));
        clock.advance(5s);
        QTest::qWait(10);
        model.undoRemove();
        QCOMPARE(model.selectedTitle(), text("b"));
        QCOMPARE(model.removedTitle(), text("d"));
        model.undoRemove();
        QCOMPARE(model.selectedTitle(), text("d"));
        model.undoRemove(); // the time of "c" is over
        QVERIFY(model.removedTitle().isEmpty());
        QCOMPARE(model.sessions().size(), 3U);

        model.addConversation(model.newSettings());
        model.changeSettings([](ChatSession& session) { session.systemPrompt = text("be brief"); });
        model.remove(model.selection());
        model.undoRemove();
        QCOMPARE(stage.session().systemPrompt, text("be brief"));
        model.addConversation(model.newSettings());
        model.remove(model.selection());
        QVERIFY(model.removedTitle().isEmpty());
    }

    void anImportedReplyIsNoConsent()
    {
        Stage stage;
        AppModel& model = *stage.model;
        ChatSession crafted = model.newSettings();
        crafted.title = QString(300, u'x') + text("\nand more");
        crafted.messages.push_back({.id = QUuid::createUuid(),
                                    .role = ChatRole::Assistant,
                                    .content = text("hello"),
                                    .thinking = {},
                                    .createdAt = stage.clock.now(),
                                    .backend = text("Claude · m"),
                                    .duration = {}});
        const QString file = stage.profile.folder.filePath(text("crafted.json"));
        write(file, conversationJson(crafted));
        model.importConversation(file);
        QVERIFY(waitForStatus(stage, text("Imported ")));
        QCOMPARE(model.selectedTitle(), QString(200, u'x'));
        QCOMPARE(stage.session().messages.front().backend, text("Imported · Claude · m"));
        model.setPassthroughEnabled(true);
        model.chooseRemoteModel(RemoteProvider::Claude, text("m"));
        QVERIFY(model.needsCloudConfirmation());
    }

    void aSearchQuotesWhatItFound()
    {
        Stage stage;
        talk(stage, "where is the Needle", "in the haystack");
        stage.model->newConversation();
        talk(stage, "other", "straw");
        const auto found = [&](const char* query) {
            stage.model->setSessionQuery(text("interrupted"));
            stage.model->setSessionQuery(text(query));
            QVERIFY(waitUntil([&] { return stage.model->sessionHits().has_value(); }));
        };
        found("needle  WHERE");
        QCOMPARE(stage.model->sessionHits()->size(), 1U);
        const SessionHit hit = stage.model->sessionHits()->front();
        QCOMPARE(hit.snippet.mid(hit.hitStart, hit.hitLength).toLower(), text("where"));
        found("a");
        QCOMPARE(stage.model->sessionHits()->size(), 2U);
        QCOMPARE(stage.model->sessionHits()->front().session, stage.model->sessions().front().id);
        found("nowhere");
        QVERIFY(stage.model->sessionHits()->empty());
        stage.model->setSessionQuery({});
        QVERIFY(!stage.model->sessionHits());
    }

    void modelsAreFoundFetchedAndRemoved()
    {
        practice::PracticeHost host{{.piece = 0ms, .slowStart = 0ms, .slowPiece = 0ms}};
        host.listen();
        Stage stage;
        stage.profile.environment["VARNEL_LIBRARY_BASE"] = host.url().toEncoded();
        stage.profile.connectTo(host.url());
        stage.start();
        AppModel& model = *stage.model;
        QStringList lines;
        connect(&model, &AppState::pullStatusChanged, this, [&] { lines.push_back(model.pullStatus()); });
        const auto search = [&](const char* query) {
            model.setModelQuery(text(query));
            model.searchModels();
        };
        search("  ");
        QCOMPARE(model.pullStatus(), text("Type a model name to search."));
        search(" practice-reader:1.5b ");
        QCOMPARE(model.pullStatus(), text("Searching practice-reader:1.5b"));
        QVERIFY(waitUntil([&] { return model.pullStatus().isEmpty(); }));
        QCOMPARE(model.libraryHits().front().name, text("practice-reader:1.5b"));
        search("zzz");
        QVERIFY(waitUntil([&] { return model.pullStatus() == text("No models matched zzz"); }));

        const QString name = text("practice-reader:1.5b");
        model.pullModel(name);
        model.pullModel(text("another"));
        QCOMPARE(model.pullTarget(), name);
        QVERIFY(waitUntil([&] { return !model.isPulling(); }, 60s));
        QCOMPARE(lines.at(lines.indexOf(text("No models matched zzz")) + 1),
                 text("Pulling practice-reader:1.5b…"));
        QCOMPARE(model.pullStatus(), text("Installed ") + name);
        QCOMPARE(model.statusMessage(), text("Installed ") + name);
        const auto has = [&](const QString& wanted) {
            return std::any_of(model.installedModels().begin(), model.installedModels().end(),
                               [&](const OllamaModel& each) { return each.name == wanted; });
        };
        QVERIFY(has(name));
        model.chooseDefaultModel(u' ' + name);
        QCOMPARE(model.selectedModel(), name);
        QCOMPARE(model.statusMessage(), text("Default model ") + name);
        model.removeModel(name);
        QVERIFY(waitUntil([&] { return !model.isPulling(); }));
        QCOMPARE(model.pullStatus(), text("Removed ") + name);
        QCOMPARE(model.defaultModel(), text("qwen2.5:14b"));
        QVERIFY(!has(name));
        model.removeModel(text("never-there"));
        QVERIFY(waitUntil([&] { return !model.isPulling(); }));
        QVERIFY(model.pullStatus().contains(text("not found")));
        model.pullModel(text("practice-chat:70b"));
        model.stopPull();
        QVERIFY(waitUntil([&] { return !model.isPulling(); }));
        QCOMPARE(model.pullStatus(), text("Stopped."));
    }

    void aSearchDuringAPullLeavesItItsLine()
    {
        practice::PracticeHost library;
        library.listen();
        Stage stage;
        stage.profile.environment["VARNEL_LIBRARY_BASE"] = library.url().toEncoded();
        stage.start();
        AppModel& model = *stage.model;
        model.pullModel(text("a"));
        const QString pulling = model.pullStatus();
        for (const auto& [query, end] : {std::pair("zzz", "No models matched zzz"), {"practice", ""}}) {
            model.setModelQuery(text(query));
            model.searchModels();
            QCOMPARE(model.statusMessage(), text("Searching ") + text(query));
            QVERIFY(waitUntil([&, said = text(end)] { return model.statusMessage() == said; }));
            QCOMPARE(model.pullStatus(), pulling);
            QCOMPARE(model.pullTarget(), text("a"));
        }
        QVERIFY(!model.libraryHits().empty());
    }

    void aBackupIsTakenBack()
    {
        Stage stage;
        talk(stage, "one", "first");
        stage.model->backUp();
        QVERIFY(waitForStatus(stage, text("Backup ")));
        const QString name = stage.model->statusMessage().mid(7);
        stage.model->remove(stage.model->selection());
        stage.model->addLink(text("later"), text("https://a.example"), {}, {});
        stage.model->restoreBackup(text("no such"));
        QVERIFY(waitForStatus(stage, text("There is no backup no such.")));
        stage.model->restoreBackup(name);
        QVERIFY(waitForStatus(stage, text("Restored backup ") + name));
        QCOMPARE(stage.contents(), QStringList({text("one"), text("first")}));
        QVERIFY(stage.model->libraryItems().empty());
        stage.start();
        QCOMPARE(stage.contents(), QStringList({text("one"), text("first")}));
    }

    void whatPreferencesNameNeedNotExist()
    {
        Stage stage;
        const QString path = stage.profile.folder.filePath(text("preferences.ini"));
        stage.model.reset();
        stage.profile.preferences.setDefaultModel(text("gone:1b"));
        QByteArray file = contentsOf(path);
        file += "\nvarnel.workContext=astrology\nvarnel.remoteProvider=nobody\n";
        write(path, file);
        Preferences preferences(path);
        AppModel model({.preferences = preferences,
                        .clock = stage.clock,
                        .secrets = stage.profile.secrets,
                        .log = stage.profile.log,
                        .environment = stage.profile.services().environment,
                        .location = stage.profile.services().location});
        QVERIFY(!model.workContext());
        model.setPassthroughEnabled(true);
        model.newConversation();
        QCOMPARE(model.selectedTitle(), text("New conversation"));
    }
};

QTEST_GUILESS_MAIN(AppModelFilesTest)
#include "AppModelFilesTest.moc"
