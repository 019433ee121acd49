#include "engine/Stage.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <set>

using namespace varnel;
using namespace varnel::test;
using namespace std::chrono_literals;

namespace {

QString text(const char* words)
{
    return QString::fromUtf8(words);
}

/// Asks and lets the model answer.
void talk(Stage& stage, const char* prompt, const QByteArray& reply)
{
    stage.send(text(prompt));
    stage.begin(line(reply) + doneLine);
    QVERIFY(stage.waitForEnd());
}

void answer(Stage& stage, std::size_t chat, const QByteArray& reply)
{
    QVERIFY(stage.waitForChats(chat));
    stage.begin(line(reply) + doneLine);
    QVERIFY(stage.waitForEnd());
}

QUuid messageAt(const Stage& stage, std::size_t index)
{
    return stage.session().messages.at(index).id;
}

QJsonObject lastMessage(const Exchange& chat)
{
    return QJsonDocument::fromJson(chat->body()).object().value(u"messages").toArray().last().toObject();
}

/// Puts files into the library of the model, attached to the next message.
void importFile(Stage& stage, const char* name, const QByteArray& contents)
{
    QFile file(stage.profile.folder.filePath(text(name)));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(contents);
    file.close();
    const std::size_t before = stage.model->attachmentIDs().size();
    stage.model->importFiles({QUrl::fromLocalFile(file.fileName())}, {}, true);
    QVERIFY(waitUntil([&] { return stage.model->attachmentIDs().size() > before; }));
}

const QByteArray picture = QByteArray::fromBase64("iVBORw0KGgo=");

} // namespace

/// Asking again, branching off and taking back; what is attached, and what a new start finds.
class TurnEditsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void regeneratingIsUndoneUntilTheNextSend()
    {
        Stage stage;
        talk(stage, "one", "first");
        stage.model->regenerate();
        QVERIFY(stage.model->canUndoEdit() && stage.model->undoesHere());
        const QUuid here = stage.model->selection();
        stage.model->newConversation();
        QVERIFY(stage.model->canUndoEdit() && !stage.model->undoesHere());
        stage.model->select(here);
        answer(stage, 2, "second");
        QCOMPARE(stage.chats[1]->body(), stage.chats[0]->body());
        QCOMPARE(stage.contents(), QStringList({text("one"), text("second")}));
        stage.model->undoEdit();
        QCOMPARE(stage.contents(), QStringList({text("one"), text("first")}));
        QVERIFY(!stage.model->canUndoEdit());
        stage.model->regenerate();
        answer(stage, 3, "third");
        talk(stage, "two", "fourth");
        stage.model->undoEdit();
        QCOMPARE(stage.contents(), QStringList({text("one"), text("third"), text("two"), text("fourth")}));
    }

    void anEditedPromptReplacesWhatFollows()
    {
        Stage stage;
        talk(stage, "one", "first");
        talk(stage, "two", "second");
        stage.model->editAndResend(messageAt(stage, 1), text("not a prompt"));
        QVERIFY(!stage.model->isBusy());
        stage.model->editAndResend(messageAt(stage, 0), text(" uno "));
        answer(stage, 3, "primo");
        QCOMPARE(stage.contents(), QStringList({text("uno"), text("primo")}));
        stage.model->undoEdit();
        QCOMPARE(stage.contents(), QStringList({text("one"), text("first"), text("two"), text("second")}));
        stage.model->setSearch(SearchSource::Brave); // without a key it is refused
        stage.model->editAndResend(messageAt(stage, 0), text("eins"));
        QCOMPARE(stage.contents().size(), 4); // also while that is looked into
        QVERIFY(stage.waitForEnd());
        QCOMPARE(stage.contents().size(), 4);
        QVERIFY(!stage.model->canUndoEdit());
    }

    void aForkGoesOnInAnotherConversation()
    {
        Stage stage;
        talk(stage, "one", "first");
        talk(stage, "two", "second");
        const QUuid original = stage.model->selection();
        stage.model->fork(messageAt(stage, 1));
        QVERIFY(stage.model->selection() != original);
        QCOMPARE(stage.contents(), QStringList({text("one"), text("first")}));
        stage.model->undoEdit();
        QCOMPARE(stage.model->selection(), original);
        QCOMPARE(stage.model->sessions().size(), 1U);
        stage.model->fork(messageAt(stage, 2));
        QCOMPARE(stage.model->draft(), text("two"));
        QCOMPARE(stage.contents().size(), 2);
        QCOMPARE(stage.model->session(original)->messages.size(), 4U);
    }

    void aRefusedRegenerationLeavesTheReply()
    {
        Stage stage;
        talk(stage, "one", "first");
        stage.model->setSearch(SearchSource::Ollama);
        stage.model->regenerate();
        QVERIFY(stage.waitForEnd());
        QCOMPARE(stage.contents(), QStringList({text("one"), text("first")}));
        QCOMPARE(stage.chats.size(), 1U);
    }

    void attachmentsTravelAndAreFoundAgain()
    {
        Stage stage;
        stage.model->chooseModel(text("llava"));
        importFile(stage, "notes.txt", "the notes");
        importFile(stage, "photo.png", picture);
        talk(stage, "look", "seen");
        const QJsonObject sent = lastMessage(stage.chats[0]);
        QVERIFY(sent.value(u"content").toString().startsWith(text("look\n\n[file] notes")));
        QVERIFY(sent.value(u"content").toString().contains(text("the notes")));
        QCOMPARE(sent.value(u"images").toArray(), QJsonArray{QString::fromLatin1(picture.toBase64())});
        QVERIFY(stage.model->attachmentIDs().empty());
        stage.model->regenerate();
        answer(stage, 2, "again");
        QCOMPARE(stage.chats[1]->body(), stage.chats[0]->body());
        stage.model->editAndResend(messageAt(stage, 0), text("stare"));
        answer(stage, 3, "stared");
        QCOMPARE(lastMessage(stage.chats[2]).value(u"images"), sent.value(u"images"));
        QVERIFY(lastMessage(stage.chats[2]).value(u"content").toString().startsWith(text("stare\n\n[file]")));
        stage.model->fork(messageAt(stage, 0));
        QCOMPARE(stage.model->draft(), text("stare"));
        QCOMPARE(stage.model->attachmentIDs().size(), 2U);
    }

    void whatAModelCannotReadIsSaidBefore_data()
    {
        QTest::addColumn<QString>("model");
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("handOff");
        const QString opened = text("Opened a new conversation");
        const QString unread = opened + text(". The current model cannot read this %1. Choose one under Send "
                                             "with.");
        QTest::newRow("image") << text("qwen") << text("photo.png") << unread.arg(text("image"));
        QTest::newRow("PDF") << text("llava") << text("paper.pdf") << unread.arg(text("PDF"));
        QTest::newRow("text") << text("qwen") << text("notes.txt") << opened;
    }
    void whatAModelCannotReadIsSaidBefore()
    {
        QFETCH(QString, model);
        QFETCH(QString, file);
        QFETCH(QString, handOff);
        const bool isText = file.endsWith(text(".txt"));
        Stage stage;
        stage.model->chooseDefaultModel(model);
        stage.model->chooseModel(model);
        importFile(stage, file.toUtf8().constData(), picture);
        stage.model->setDraft(text("look"));
        const std::vector<QUuid> attached = stage.model->attachmentIDs();
        if (!isText) {
            stage.model->send();
            QVERIFY(stage.waitForEnd());
            QVERIFY(stage.model->statusMessage().startsWith(model + text(" cannot read ")));
            QVERIFY(stage.chats.empty());
            QCOMPARE(stage.model->draft(), text("look"));
            QCOMPARE(stage.model->attachmentIDs(), attached);
        }
        stage.model->handOffItem(attached.front());
        QVERIFY(stage.model->draft().startsWith(text("Read the attached ")));
        QCOMPARE(stage.model->attachmentIDs(), attached);
        QCOMPARE(stage.model->statusMessage(), handOff);
    }

    void whatIsTypedWhileAPromptIsMadeReadyStays()
    {
        Stage stage;
        stage.profile.secrets->items[text("OLLAMA_API_KEY")] = "key";
        QSemaphore gate;
        stage.profile.secrets->gate = &gate;
        stage.model->setSearch(SearchSource::Ollama); // its key has to be looked for
        stage.model->setDraft(text("one"));
        stage.model->send();
        QVERIFY(stage.model->isBusy() && !stage.model->isStreaming());
        stage.model->setDraft(text("one and more"));
        gate.release(100);
        QVERIFY(stage.waitForChats(1));
        QCOMPARE(stage.contents().front(), text("one"));
        QCOMPARE(stage.model->draft(), text(" and more"));
    }

    void whatIsChangedWhileAPromptIsMadeReadyIsNotSentElsewhere_data()
    {
        QTest::addColumn<bool>("isSent");
        QTest::newRow("nothing") << true;
        QTest::newRow("the title") << true;
        for (const char* const change : {"provider", "Ollama", "search", "passthrough"})
            QTest::newRow(change) << false;
    }
    void whatIsChangedWhileAPromptIsMadeReadyIsNotSentElsewhere()
    {
        const QByteArray change = QTest::currentDataTag();
        QFETCH(bool, isSent);
        Stage stage;
        for (const char* const name : {"DEEPSEEK", "OPENAI"}) {
            stage.profile.environment[QByteArray("VARNEL_") + name + "_BASE"] =
                stage.server.url().toEncoded();
            stage.profile.environment[QByteArray(name) + "_API_KEY"] = name;
        }
        stage.start();
        AppModel& model = *stage.model;
        QSemaphore gate;
        stage.profile.secrets->gate = &gate;
        model.setPassthroughEnabled(true);
        model.chooseRemoteModel(RemoteProvider::DeepSeek, text("m"));
        model.setDraft(text("one"));
        model.send();
        QVERIFY(model.isBusy() && !model.isStreaming());
        if (change == "the title")
            model.rename(model.selection(), text("other"));
        else if (change == "provider")
            model.chooseRemoteModel(RemoteProvider::OpenAi, text("m"));
        else if (change == "Ollama")
            model.chooseModel(text("a"));
        else if (change == "search")
            model.setSearch(SearchSource::Brave);
        else if (change == "passthrough")
            model.setPassthroughEnabled(false);
        gate.release(100);
        if (isSent) {
            QVERIFY(stage.waitForChats(1));
            QCOMPARE(stage.chats[0]->header("Authorization"), QByteArray("Bearer DEEPSEEK"));
            return;
        }
        QVERIFY(stage.waitForEnd());
        QVERIFY(stage.chats.empty() && stage.contents().isEmpty());
        QCOMPARE(model.draft(), text("one"));
        QCOMPARE(model.statusMessage().startsWith(text("Nothing was sent, because ")),
                 change != "passthrough");
        QCOMPARE(model.statusMessage().startsWith(text("Remote passthrough is off. ")),
                 change == "passthrough");
    }

    void whatAFailedTurnReplacedIsKept_data()
    {
        QTest::addColumn<bool>("edits");
        QTest::addColumn<bool>("triesAgain");
        QTest::newRow("regenerate, try again") << false << true;
        QTest::newRow("regenerate, take back") << false << false;
        QTest::newRow("edit, try again") << true << true;
        QTest::newRow("edit, take back") << true << false;
    }
    void whatAFailedTurnReplacedIsKept()
    {
        QFETCH(bool, edits);
        QFETCH(bool, triesAgain);
        Stage stage;
        talk(stage, "one", "first");
        talk(stage, "two", "second");
        const QStringList before = stage.contents();
        if (edits)
            stage.model->editAndResend(messageAt(stage, 0), text("uno"));
        else
            stage.model->regenerate();
        QVERIFY(stage.waitForChats(3));
        stage.begin(line("half") + "{\"error\":\"out of memory\"}\n");
        QVERIFY(stage.waitForEnd());
        QCOMPARE(stage.lastText(), text("half"));
        if (triesAgain) {
            stage.model->tryAgain();
            answer(stage, 4, "again");
        } else {
            stage.model->editFailed();
            QCOMPARE(stage.model->draft(), edits ? text("uno") : text("two"));
        }
        stage.model->undoEdit();
        QCOMPARE(stage.contents(), before);
    }

    void anUndoGoesWithItsConversation()
    {
        Stage stage;
        talk(stage, "one", "first");
        const QUuid original = stage.model->selection();
        stage.model->regenerate();
        answer(stage, 2, "second");
        QVERIFY(stage.model->canUndoEdit() && !stage.model->undoesFork());
        stage.model->fork(messageAt(stage, 1));
        QVERIFY(stage.model->canUndoEdit() && stage.model->undoesFork());
        stage.model->remove(original);
        QVERIFY(!stage.model->canUndoEdit() && !stage.model->undoesFork());
        stage.model->undoEdit();
        QCOMPARE(stage.model->sessions().size(), 1U);
        QCOMPARE(stage.contents(), QStringList({text("one"), text("second")}));
    }

    void attachmentsOfOneTitleAreTwo()
    {
        Stage stage;
        QVERIFY(QDir(stage.profile.folder.path()).mkdir(text("other")));
        importFile(stage, "notes.txt", "some");
        importFile(stage, "other/notes.txt", "others");
        const auto attached = [&] {
            const std::vector<QUuid> items = stage.model->attachmentIDs();
            return std::set<QUuid>(items.begin(), items.end());
        };
        const std::set<QUuid> before = attached();
        talk(stage, "look", "seen");
        stage.model->fork(messageAt(stage, 0));
        QCOMPARE(attached(), before);
    }

    void aNewStartFindsEverything()
    {
        Stage stage;
        talk(stage, "one", "first");
        const QUuid first = stage.model->selection();
        stage.model->newConversation();
        stage.model->setDraft(text("left here"));
        importFile(stage, "notes.txt", "n");
        const std::vector<QUuid> attached = stage.model->attachmentIDs();
        const QUuid second = stage.model->selection();
        stage.model->select(first);
        stage.send(text("two"));
        stage.begin(line("half"));
        QVERIFY(stage.waitForText(text("half")));
        stage.chats.back()->sendChunk(line(" and more"));
        QTest::qWait(50); // sooner than it is shown
        stage.start();
        QCOMPARE(stage.model->selection(), first); // the one that changed last is the first
        QCOMPARE(stage.lastText(), text("half and more"));
        QVERIFY(!stage.session().messages.back().duration);
        stage.model->select(second);
        QCOMPARE(stage.model->draft(), text("left here"));
        QCOMPARE(stage.model->attachmentIDs(), attached);
        stage.model->select(first);
        stage.model->regenerate();
        QVERIFY(stage.waitForChats(3));
        QCOMPARE(stage.chats[2]->body(), stage.chats[1]->body());
    }

    void aClockThatJumpsChangesNoTurn()
    {
        class JumpingClock final : public Clock
        {
        public:
            Instant now() const override { return m_now -= 1h; }
            std::chrono::steady_clock::time_point steadyNow() const override { return m_real.steadyNow(); }
            Task<void> sleepFor(std::chrono::milliseconds duration, std::stop_token stop) const override
            {
                return m_real.sleepFor(duration, std::move(stop));
            }

        private:
            mutable Instant m_now = *fromIso8601("2026-03-18T12:00:00Z");
            SystemClock m_real;
        } const jumping;
        Stage stage;
        stage.time = &jumping;
        stage.start();
        talk(stage, "one", "first");
        const double duration = stage.session().messages.back().duration.value_or(-1);
        QVERIFY(duration >= 0 && duration < 10);
        stage.model->newConversation();
        QCOMPARE(stage.model->sessions().size(), 2U);
        QVERIFY(stage.model->selectedIsEmpty());
    }
};

QTEST_GUILESS_MAIN(TurnEditsTest)
#include "TurnEditsTest.moc"
