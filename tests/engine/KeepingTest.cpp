#include "engine/Situation.h"
#include "store/Backups.h"
#include "store/StoreFixtures.h"

using namespace varnel;
using namespace varnel::test;
using namespace std::chrono_literals;

namespace {

/// The system's time, which tells of each time it is asked for.
class WatchedClock final : public Clock
{
public:
    Instant now() const override
    {
        if (onAsked)
            onAsked();
        return m_clock.now();
    }
    std::chrono::steady_clock::time_point steadyNow() const override { return m_clock.steadyNow(); }
    Task<void> sleepFor(std::chrono::milliseconds duration, std::stop_token stop) const override
    {
        return m_clock.sleepFor(duration, std::move(stop));
    }

    std::function<void()> onAsked;

private:
    SystemClock m_clock;
};

/// What goes wrong with a file of the data folder, and what is said of it.
struct Mishap
{
    const char* name;
    void (*play)(Stage& stage, const QString& folder);
    QStringList said;
};

std::vector<Mishap> mishaps()
{
    return {
        {"a failed save, and the next one",
         [](Stage& stage, const QString& folder) {
             QVERIFY(waitUntil([&] { return QFileInfo::exists(SessionStore::fileIn(folder)); }));
             const QString obstacle = SessionStore::fileIn(folder) + text(".saving");
             QVERIFY(QDir().mkpath(obstacle + text("/x")));
             stage.model->setSearch(SearchSource::Ollama);
             QVERIFY(waitUntil([&] { return !stage.profile.logged().isEmpty(); }));
             QVERIFY(QDir(obstacle).removeRecursively());
             stage.model->rename(stage.model->selection(), text("kept"));
             QVERIFY(waitUntil([&] { return contentsOf(SessionStore::fileIn(folder)).contains("kept"); }));
         },
         {text("FOLDER/sessions.json could not be saved: *")}},
        {"files that cannot be read",
         [](Stage& stage, const QString& folder) {
             stage.model.reset();
             writeFile(SessionStore::fileIn(folder), "[}");
             writeFile(LibraryStore::indexIn(folder), "{}");
             stage.start();
             QVERIFY(waitUntil([&] { return stage.profile.logged().size() >= 3; }));
             stage.model->addLink(text("t"), text("u"), {}, {});
         },
         {text("FOLDER/sessions.json cannot be read. not valid JSON *"),
          text("FOLDER/library.json cannot be read. *"),
          text(
              "FOLDER/sessions.json could not be read. What it held is kept as FOLDER/sessions.unreadable-*"),
          text(
              "FOLDER/library.json could not be read. What it held is kept as FOLDER/library.unreadable-*")}},
        {"another program writes",
         [](Stage& stage, const QString& folder) {
             stage.model->rename(stage.model->selection(), text("mine"));
             QVERIFY(waitUntil([&] { return contentsOf(SessionStore::fileIn(folder)).contains("mine"); }));
             writeFile(SessionStore::fileIn(folder), "[]");
             stage.model->rename(stage.model->selection(), text("again"));
         },
         {text("FOLDER/sessions.json was changed by another program. What that wrote is kept as "
               "FOLDER/sessions.changed-*")}},
        {"text without its conversation",
         [](Stage& stage, const QString& folder) {
             stage.model.reset();
             RecoveryFile(folder).keep(
                 {.session = QUuid::createUuid(), .prompt = {}, .message = message(text("lost"))});
             stage.start();
         },
         {text("Text that was kept belongs to a conversation that is not there. It is in "
               "FOLDER/recovery.unreadable-*")}},
    };
}

} // namespace

/// What the model says of the files it keeps, and what it never lets go of.
class KeepingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void mishapsAreShownAndLogged_data()
    {
        QTest::addColumn<std::size_t>("number");
        const std::vector<Mishap> all = mishaps();
        for (std::size_t number = 0; number < all.size(); ++number)
            QTest::newRow(all[number].name) << number;
    }
    void mishapsAreShownAndLogged()
    {
        QFETCH(std::size_t, number);
        Mishap mishap = mishaps().at(number);
        Stage stage;
        const QString folder = stage.profile.dataFolder();
        mishap.play(stage, folder);
        mishap.said.replaceInStrings(text("FOLDER"), folder);
        QVERIFY(waitUntil([&] { return stage.profile.logged().size() >= mishap.said.size(); }));
        QVERIFY(matches(stage.profile.logged(), mishap.said, {}));
        const QString last = stage.profile.logged().constLast();
        QVERIFY(stage.model->statusMessage().endsWith(last) || stage.trace.entries.contains(last));
    }

    void aPromptThatCannotBeSavedIsNotSent()
    {
        Stage stage;
        const QDir blocked(stage.profile.dataFolder() + text("/recovery.json.saving/x"));
        QVERIFY(QDir().mkpath(blocked.path()));
        stage.model->setDraft(text("one"));
        stage.model->send();
        QVERIFY(stage.waitForEnd());
        QVERIFY(stage.chats.empty());
        QVERIFY(stage.model->failure() && stage.model->failure()->text.contains(text("recovery.json")));
        QCOMPARE(stage.session().messages.size(), 1U);
        QVERIFY(QDir().rmpath(blocked.path()));
        stage.model->tryAgain();
        QVERIFY(waitUntil([&] { return stage.chats.size() == 1; }));
        stage.begin(line("ok") + doneLine);
        QVERIFY(stage.waitForEnd());
        QCOMPARE(stage.lastText(), text("ok"));
    }

    void aRestoreLosesNothingThatChangesMeanwhile()
    {
        WatchedClock clock;
        Stage stage;
        stage.time = &clock;
        stage.start();
        AppModel& model = *stage.model;
        const QUuid id = model.selection();
        model.rename(id, text("old"));
        model.backUp();
        QVERIFY(waitUntil([&] { return model.statusMessage().startsWith(text("Backup ")); }));
        const QString name = model.statusMessage().mid(7);
        // The last time it is asked for the time, the safety backup is about to be made.
        int left = 2;
        bool isBusy = false;
        clock.onAsked = [&] {
            if (isBusy || left == 0)
                return;
            const QString title = text("change %1").arg(left--);
            QMetaObject::invokeMethod(
                &model,
                [&, title] {
                    isBusy = true;
                    model.rename(id, title);
                    model.addLink(title, text("u"), {}, {});
                    isBusy = false;
                },
                Qt::QueuedConnection);
        };
        model.restoreBackup(name);
        QVERIFY(waitUntil([&] { return model.statusMessage() == text("Restored backup ") + name; }));
        QCOMPARE(left, 0);
        QCOMPARE(model.selectedTitle(), text("old"));
        QVERIFY(model.libraryItems().empty());
        const QString safety = listBackups(stage.profile.dataFolder()).front().folder;
        QCOMPARE(titlesOf(SessionStore(safety).load()), QStringList(text("change 1")));
        QCOMPARE(LibraryStore(safety).items().size(), 2U);
    }

    void oneBackupAtATime()
    {
        Stage stage;
        const QString refused = text("A backup is still being made or restored.");
        stage.model->backUp();
        stage.model->backUp();
        QCOMPARE(stage.model->statusMessage(), refused);
        stage.model->restoreBackup(text("x"));
        QVERIFY(waitUntil([&] { return stage.model->statusMessage().startsWith(text("Backup ")); }));
        QCOMPARE(stage.trace.entries.size(), 2); // refused once and once more, then made
        QCOMPARE(listBackups(stage.profile.dataFolder()).size(), 1U);
    }

    void whatIsTakenBackIsAlwaysOnTheDisk()
    {
        Stage stage;
        const QString folder = stage.profile.dataFolder();
        stage.send(text("precious"));
        stage.chats.back()->reply(500, "application/json", "{\"error\":\"no\"}");
        QVERIFY(stage.waitForEnd());
        stage.model->editFailed();
        QVERIFY(waitUntil([&] { return contentsOf(SessionStore::fileIn(folder)).contains("[]"); }));
        QVERIFY(contentsOf(folder + text("/drafts.json")).contains("precious"));
    }

    void filesAreWrittenBeforeTheProgramEnds()
    {
        Stage stage;
        const QString folder = stage.profile.folder.filePath(text("site"));
        const QString copy = stage.profile.folder.filePath(text("copy.md"));
        QVERIFY(QDir().mkpath(folder));
        stage.model->setProjectPath(folder);
        QByteArray reply;
        for (int i = 0; i < 100; ++i)
            reply += "```path:" + QByteArray::number(i) + ".txt\\nnew\\n```\\n";
        stage.send(text("write"));
        stage.begin(line(reply) + doneLine);
        QVERIFY(stage.waitForEnd());
        stage.model->writeProjectFiles(stage.session().messages.back().id);
        stage.model->saveTranscript(copy);
        stage.model->importContents([] { return QByteArray("x"); }, text("a.txt"), {}, false);
        stage.model->shutDown();
        QCOMPARE(QDir(folder).entryList(QDir::Files).size(), 100);
        QVERIFY(contentsOf(copy).contains("path:99.txt"));
        QCOMPARE(LibraryStore(stage.profile.dataFolder()).items().size(), 1U);
    }

    void overwrittenFilesCanBePutBackUntilTheyAre()
    {
        Stage stage;
        const QString folder = stage.profile.folder.filePath(text("site"));
        const QString away = stage.profile.folder.filePath(text("away"));
        writeFile(folder + text("/a.txt"), "old");
        stage.model->setProjectPath(folder);
        stage.send(text("write"));
        stage.begin(line("```path:a.txt\\nnew\\n```\\n") + doneLine);
        QVERIFY(stage.waitForEnd());
        stage.model->writeProjectFiles(stage.session().messages.back().id);
        QVERIFY(waitUntil([&] { return stage.model->canRestoreProjectFiles(); }));
        QVERIFY(QDir().rename(folder, away));
        stage.model->restoreProjectFiles();
        QVERIFY(waitUntil([&] { return stage.model->statusMessage().startsWith(folder); }));
        QVERIFY(stage.model->canRestoreProjectFiles());
        QVERIFY(QDir().rename(away, folder));
        stage.model->restoreProjectFiles();
        QVERIFY(waitUntil([&] {
            return stage.model->statusMessage() == text("The overwritten files are back as they were.");
        }));
        QCOMPARE(contentsOf(folder + text("/a.txt")), QByteArray("old"));
        QVERIFY(!stage.model->canRestoreProjectFiles());
    }
};

QTEST_GUILESS_MAIN(KeepingTest)
#include "KeepingTest.moc"
