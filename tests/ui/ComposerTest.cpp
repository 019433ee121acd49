#include "ui/ComposerFixture.h"
#include "ui/QuietTest.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>
#include <QQuickItem>
#include <QSignalSpy>
#include <QTest>

using namespace varnel;
using namespace varnel::test;
using namespace std::chrono_literals;

namespace {

QImage smallPicture()
{
    QImage picture(8, 8, QImage::Format_RGB32);
    picture.fill(Qt::red);
    return picture;
}

QByteArray contentsOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArrayLiteral("(none)");
}

} // namespace

class ComposerTest : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void whatIsDroppedBecomesAnAttachment()
    {
        ComposerFixture fixture;
        QMimeData files;
        files.setUrls({fixture.file(QStringLiteral("plan.txt"), "one"),
                       fixture.file(QStringLiteral("b.pdf"), "two"),
                       QUrl::fromLocalFile(fixture.profile.folder.filePath(QStringLiteral("missing.txt")))});
        QVERIFY(fixture.drop(files));
        QVERIFY(fixture.attached(2));
        QCOMPARE(fixture.app.libraryItems().size(), 2U);
        QVERIFY(fixture.app.statusMessage().contains(QStringLiteral("missing.txt")));
        QMimeData link;
        link.setUrls({QUrl(QStringLiteral("https://example.org/page?q=1"))});
        QVERIFY(fixture.drop(link));
        QCOMPARE(fixture.app.libraryItems().front().kind, LibraryKind::Link);
        QCOMPARE(fixture.app.attachmentIDs().size(), 3U);
        QMimeData words;
        words.setText(QStringLiteral("words"));
        QVERIFY(fixture.drop(words));
        QCOMPARE(fixture.app.draft(), QStringLiteral("words"));

        // Over the library things are kept, not attached.
        fixture.press(Qt::Key_L, Qt::ControlModifier);
        QMimeData more;
        more.setUrls({fixture.file(QStringLiteral("c.txt"), "three")});
        QVERIFY(waitUntil([&] { return fixture.window->activeFocusItem()->inherits("QQuickTextField"); }));
        QVERIFY(fixture.drop(more));
        QVERIFY(waitUntil([&] { return fixture.app.libraryItems().size() == 4; }));
        QCOMPARE(fixture.app.attachmentIDs().size(), 3U);
    }

    void whatIsPastedGoesWhereItBelongs()
    {
        ComposerFixture fixture;
        QClipboard* const clipboard = QGuiApplication::clipboard();
        clipboard->setText(QStringLiteral("short"));
        fixture.press(Qt::Key_V, Qt::ControlModifier);
        QCOMPARE(fixture.app.draft(), QStringLiteral("short"));

        clipboard->setImage(smallPicture());
        fixture.press(Qt::Key_V, Qt::ControlModifier);
        QVERIFY(fixture.attached(1));
        QCOMPARE(fixture.app.libraryItems().front().kind, LibraryKind::Image);
        QCOMPARE(QImage(fixture.profile.dataFolder() + QLatin1Char('/') +
                        *fixture.app.libraryItems().front().relativePath)
                     .pixelColor(1, 1),
                 QColor(Qt::red));
        // The model cannot see, and the chip says why.
        const QModelIndex chip = fixture.chips().index(0);
        QVERIFY(fixture.chips()
                    .data(chip, AttachmentListModel::ReasonRole)
                    .toString()
                    .contains(QStringLiteral("cannot read")));
        fixture.app.chooseModel(QStringLiteral("practice-vision:11b"));
        QCOMPARE(fixture.chips().data(fixture.chips().index(0), AttachmentListModel::ReasonRole).toString(),
                 QString());

        const QString text = QStringLiteral("a line of many\n").repeated(20'000);
        clipboard->setText(text);
        fixture.press(Qt::Key_V, Qt::ControlModifier);
        QVERIFY(fixture.attached(2));
        QCOMPARE(fixture.app.draft(), QStringLiteral("short"));
        QVERIFY(fixture.chips().data(fixture.chips().index(1), AttachmentListModel::PastedRole).toBool());
        fixture.chips().showInText(1);
        QVERIFY(waitUntil([&] { return fixture.app.draft() == QStringLiteral("short\n\n") + text; }));
        QCOMPARE(fixture.app.attachmentIDs().size(), 1U);
        fixture.chips().remove(0);
        QCOMPARE(fixture.app.attachmentIDs().size(), 0U);
        QVERIFY(fixture.app.libraryItems().back().isLive());
    }

    void aPromptWaitsForWhatIsStillBeingCopied()
    {
        ComposerFixture fixture;
        QGuiApplication::clipboard()->setText(QStringLiteral("0123456789").repeated(1001));
        fixture.type(QStringLiteral("read"));
        fixture.press(Qt::Key_V, Qt::ControlModifier);
        fixture.press(Qt::Key_Return);
        QVERIFY(waitUntil([&] { return !fixture.app.selectedSession()->messages.empty(); }));
        QVERIFY(fixture.app.selectedSession()->messages.front().content.contains(
            QStringLiteral("0123456789").repeated(1001)));
        QCOMPARE(fixture.app.attachmentIDs().size(), 0U);
        QVERIFY(waitUntil([&] { return !fixture.app.isBusy(); }));
    }

    void aPromptIsNotSentWithoutWhatCouldNotBeCopied()
    {
        ComposerFixture fixture;
        fixture.type(QStringLiteral("read"));
        fixture.app.importFiles(
            {QUrl::fromLocalFile(fixture.profile.folder.filePath(QStringLiteral("missing.txt")))}, {}, true);
        fixture.press(Qt::Key_Return);
        QVERIFY(waitUntil([&] { return !fixture.app.isImporting(); }));
        QVERIFY(fixture.app.selectedSession()->messages.empty() && !fixture.app.isBusy());
        QCOMPARE(fixture.app.draft(), QStringLiteral("read"));
        QVERIFY(fixture.composer().statusLine().contains(QStringLiteral("missing.txt")));
    }

    void aPromptWaitsWithItsConversation()
    {
        ComposerFixture fixture;
        const QUuid first = fixture.app.selection();
        QVERIFY(fixture.say(QStringLiteral("one")));
        QGuiApplication::clipboard()->setText(QStringLiteral("0123456789").repeated(1001));
        fixture.type(QStringLiteral("read"));
        fixture.press(Qt::Key_V, Qt::ControlModifier);
        fixture.press(Qt::Key_Return);
        if (!fixture.app.isImporting())
            QSKIP("the text was copied before the prompt was sent");
        fixture.app.newConversation();
        QVERIFY(waitUntil([&] { return !fixture.app.isImporting(); }));
        QVERIFY(!fixture.app.isBusy());
        QCOMPARE(fixture.app.session(first)->messages.size(), 2U);
        fixture.app.select(first);
        QVERIFY(waitUntil([&] { return fixture.app.session(first)->messages.size() == 4; }));
        QVERIFY(fixture.app.session(first)->messages[2].content.contains(QStringLiteral("0123456789")));
        QVERIFY(waitUntil([&] { return !fixture.app.isBusy(); }));
    }

    void anEarlierPromptTakesTextsAndNothingElse()
    {
        ComposerFixture fixture;
        QVERIFY(fixture.begin(QStringLiteral("first")));
        fixture.edit().begin(QUuid(fixture.app.selectedSession()->messages[0].id));
        const QString text = QStringLiteral("0123456789").repeated(1001);
        QGuiApplication::clipboard()->setText(text);
        fixture.press(Qt::Key_V, Qt::ControlModifier);
        QCOMPARE(fixture.composer().text(), QStringLiteral("first") + text);
        QCOMPARE(fixture.composer().statusLine(), QString());
        QGuiApplication::clipboard()->setImage(smallPicture());
        fixture.press(Qt::Key_V, Qt::ControlModifier);
        const QString refusal = fixture.composer().statusLine();
        QVERIFY(!refusal.isEmpty());
        fixture.composer().remark({});
        QMimeData files;
        files.setUrls({fixture.file(QStringLiteral("plan.txt"), "one")});
        QVERIFY(fixture.drop(files));
        QCOMPARE(fixture.composer().statusLine(), refusal);
        fixture.composer().remark({});
        fixture.part<Intake>("Intake").readPage(QStringLiteral("https://example.org"));
        QCOMPARE(fixture.composer().statusLine(), refusal);
        QVERIFY(!fixture.app.isImporting() && !fixture.app.isReadingPage());
        QCOMPARE(fixture.app.libraryItems().size(), 0U);
        QCOMPARE(fixture.app.draft(), QString());
    }

    void anEarlierPromptIsEditedWhileTheDraftWaits()
    {
        ComposerFixture fixture;
        QVERIFY(fixture.begin(QStringLiteral("first")));
        QVERIFY(fixture.say(QStringLiteral("second")));
        fixture.type(QStringLiteral("draft"));
        const auto messages = [&]() -> const std::vector<ChatMessage>& {
            return fixture.app.selectedSession()->messages;
        };
        fixture.edit().begin(QUuid(messages()[1].id)); // a reply is not edited
        QVERIFY(!fixture.edit().active());
        fixture.edit().begin(QUuid(messages()[0].id));
        QCOMPARE(fixture.composer().text(), QStringLiteral("first"));
        QCOMPARE(fixture.edit().sendLabel(), QStringLiteral("Send again (removes 3 later messages)"));
        fixture.type(QStringLiteral("!"));
        fixture.press(Qt::Key_Escape);
        QVERIFY(!fixture.edit().active());
        QCOMPARE(fixture.composer().text(), QStringLiteral("draft"));
        QCOMPARE(messages().front().content, QStringLiteral("first"));

        fixture.edit().begin(QUuid(messages()[0].id));
        fixture.type(QStringLiteral("?"));
        fixture.press(Qt::Key_Return);
        QVERIFY(waitUntil([&] { return !fixture.app.isBusy() && messages().size() == 2; }));
        QCOMPARE(messages().front().content, QStringLiteral("first?"));
        QVERIFY(!fixture.edit().active());
        QCOMPARE(fixture.composer().text(), QStringLiteral("draft"));

        fixture.app.setDraft({});
        fixture.press(Qt::Key_Up);
        QVERIFY(fixture.edit().active());
        fixture.type(QStringLiteral("..."));
        const QUuid before = fixture.app.selection();
        fixture.edit().fork();
        QVERIFY(fixture.app.selection() != before);
        QCOMPARE(fixture.app.draft(), QStringLiteral("first?..."));
        QCOMPARE(fixture.app.session(before)->messages.size(), 2U);
    }

    void aProviderIsAskedAboutOnce()
    {
        ComposerFixture fixture;
        fixture.app.setPassthroughEnabled(true);
        fixture.app.chooseRemoteModel(RemoteProvider::Claude, {});
        fixture.type(QStringLiteral("hello"));
        fixture.press(Qt::Key_Return);
        QVERIFY(fixture.composer().asksCloud());
        QCOMPARE(fixture.composer().cloudName(), QStringLiteral("Claude"));
        fixture.composer().refuseCloud();
        QCOMPARE(fixture.app.draft(), QStringLiteral("hello"));
        fixture.composer().send();
        QVERIFY(fixture.composer().asksCloud());
        fixture.app.chooseModel(QStringLiteral("practice-chat:70b")); // there is nothing to ask any more
        QVERIFY(!fixture.composer().asksCloud());
        fixture.app.chooseRemoteModel(RemoteProvider::Claude, {});
        fixture.composer().send();
        fixture.composer().agreeToCloud();
        QVERIFY(waitUntil([&] { return fixture.app.statusMessage().contains(QStringLiteral("API key")); }));
        fixture.composer().send();
        QVERIFY(!fixture.composer().asksCloud());
        QVERIFY(waitUntil([&] { return !fixture.app.isBusy(); }));
    }

    void aPromptThatWaitedTakesNoKeyboardAndEndsWithTheProgram()
    {
        ComposerFixture fixture;
        const QSignalSpy asked(&fixture.composer(), &ComposerState::cloudAsked);
        fixture.app.setPassthroughEnabled(true);
        fixture.app.chooseRemoteModel(RemoteProvider::Claude, {});
        const auto sendWithFile = [&] {
            fixture.app.setDraft(QStringLiteral("hello"));
            fixture.app.importContents([] { return QByteArray("x"); }, QStringLiteral("a.txt"), {}, true);
            fixture.composer().send();
        };
        sendWithFile();
        QVERIFY(waitUntil([&] { return fixture.composer().asksCloud(); }));
        QCOMPARE(asked.count(), 0);
        fixture.type(QStringLiteral("!"));
        QCOMPARE(fixture.app.draft(), QStringLiteral("hello!"));
        fixture.press(Qt::Key_Return);
        QCOMPARE(asked.count(), 1);

        fixture.app.chooseModel(QStringLiteral("practice-chat:70b"));
        sendWithFile();
        fixture.app.shutDown();
        QVERIFY(!fixture.app.isImporting() && !fixture.app.isBusy());
        QCOMPARE(fixture.app.draft(), QStringLiteral("hello"));
    }

    void askingOnceMoreAsksAboutTheProviderToo()
    {
        ComposerFixture fixture;
        QVERIFY(fixture.say(QStringLiteral("hello")));
        fixture.app.setPassthroughEnabled(true);
        fixture.app.chooseRemoteModel(RemoteProvider::Claude, {});
        fixture.feed().act({}, QStringLiteral("regenerate"));
        QVERIFY(fixture.composer().asksCloud() && !fixture.app.isBusy());
        fixture.composer().refuseCloud();
        QCOMPARE(fixture.app.selectedSession()->messages.size(), 2U);
        fixture.feed().act({}, QStringLiteral("regenerate"));
        fixture.composer().agreeToCloud();
        QVERIFY(waitUntil([&] { return fixture.app.statusMessage().contains(QStringLiteral("API key")); }));
    }

    void thePickerOffersWhatCanAnswer()
    {
        ComposerFixture fixture;
        fixture.profile.environment.insert("OPENAI_API_KEY", "key");
        fixture.app.setPassthroughEnabled(true);
        fixture.app.setDisabledProviderModels(
            {providerModelEntry(RemoteProvider::OpenAi, QStringLiteral("gpt-4.1"))});
        auto& models = fixture.part<ModelListModel>("ModelListModel");
        models.look();
        QVERIFY(waitUntil([&] { return models.count() > 0; }));
        QStringList names;
        for (int row = 0; row < models.count(); ++row)
            names.append(models.data(models.index(row), ModelListModel::NameRole).toString());
        QCOMPARE(names, (QStringList{QStringLiteral("gpt-4.1-mini"), QStringLiteral("gpt-4o"),
                                     QStringLiteral("gpt-4o-mini")}));
        models.choose(1);
        QCOMPARE(fixture.app.selectedModel(), QStringLiteral("gpt-4o"));
        QCOMPARE(models.currentRow(), 1);
        fixture.app.setPassthroughEnabled(false);
        QCOMPARE(models.count(), 0);
    }

    void settingsStayInTheirRange()
    {
        ComposerFixture fixture;
        auto& settings = fixture.part<ConversationSettings>("ConversationSettings");
        settings.setTemperature(7);
        QCOMPARE(settings.temperature(), 2.0);
        settings.setContextLength(1);
        QCOMPARE(settings.contextLength(), 512);
        for (const char* const time : {"5m", "1h30m", "0", "-1m", "1.5h"})
            QVERIFY2(settings.setKeepAlive(QString::fromLatin1(time)), time);
        for (const char* const time : {"", "5", "-1", "for ever", "5m ago"})
            QVERIFY2(!settings.setKeepAlive(QString::fromLatin1(time)), time);
        QCOMPARE(settings.keepAlive(), QStringLiteral("1.5h"));
        QVERIFY(!settings.temperatureIsUsual());
        settings.resetTemperature();
        settings.resetContextLength();
        settings.resetKeepAlive();
        QCOMPARE(fixture.app.selectedSession()->contextLength, fixture.app.newSettings().contextLength);
        QVERIFY(settings.temperatureIsUsual() && settings.keepAliveIsUsual());
    }

    void enterCanBeLeftToNewLines()
    {
        ComposerFixture fixture;
        fixture.composer().setSendsWithControl(true);
        fixture.type(QStringLiteral("a"));
        fixture.press(Qt::Key_Return);
        QCOMPARE(fixture.app.draft(), QStringLiteral("a\n"));
        fixture.press(Qt::Key_Return, Qt::ControlModifier);
        QVERIFY(waitUntil([&] { return !fixture.app.selectedSession()->messages.empty(); }));
        QVERIFY(waitUntil([&] { return !fixture.app.isBusy(); }));
    }

    void projectFilesAreSeenBeforeTheyAreWritten()
    {
        ComposerFixture fixture;
        const QTemporaryDir project;
        const auto path = [&](const char* name) { return project.filePath(QString::fromLatin1(name)); };
        QVERIFY(QDir(project.path()).mkdir(QStringLiteral("src")));
        fixture.file(QStringLiteral("unused"), {});
        QFile old(path("src/a.txt"));
        QVERIFY(old.open(QIODevice::WriteOnly) && old.write("one\ntwo\n") == 8);
        old.close();
        ChatSession session = fixture.app.newSettings();
        session.projectPath = project.path();
        const QUuid reply = QUuid::createUuid();
        session.messages.push_back({.id = reply,
                                    .role = ChatRole::Assistant,
                                    .content = QStringLiteral("```path:src/a.txt\none\n2\n```\n"
                                                              "```path:new.txt\nnew\n```\n"
                                                              "```path:.git/hooks/pre-commit\nrm\n```\n"),
                                    .thinking = {},
                                    .createdAt = fixture.clock.now(),
                                    .backend = {},
                                    .duration = {}});
        fixture.app.addConversation(session);
        ProjectPreview& preview = fixture.preview();
        preview.show(reply);
        QVERIFY(waitUntil([&] { return preview.rowCount() == 3; }));
        QCOMPARE(preview.tickedCount(), 2);
        QVERIFY(!preview.data(preview.index(2), ProjectPreview::TickedRole).toBool());
        QCOMPARE(preview.diff()->rowCount(), 3); // one, -two, +2
        preview.setTicked(1, false);

        QVERIFY(old.open(QIODevice::WriteOnly) && old.write("three\n") == 6);
        old.close();
        preview.write();
        QVERIFY(waitUntil([&] { return !preview.notice().isEmpty(); }));
        QCOMPARE(contentsOf(path("src/a.txt")), QByteArray("three\n"));
        preview.show(reply, QStringLiteral("new.txt")); // as its own button in the reply asks
        QVERIFY(waitUntil([&] { return preview.currentRow() == 1; }));
        preview.setTicked(1, false);
        QVERIFY(!preview.offersRestore());
        preview.write();
        QVERIFY(waitUntil([&] { return preview.offersRestore(); }));
        QCOMPARE(contentsOf(path("src/a.txt")), QByteArray("one\n2\n"));
        QVERIFY(!QFileInfo::exists(path("new.txt")) && !QFileInfo::exists(path(".git")));
        preview.restore();
        QVERIFY(!preview.offersRestore());
        QVERIFY(waitUntil([&] { return contentsOf(path("src/a.txt")) == "three\n"; }));
        QVERIFY(!preview.canRestore());
    }
};

QTEST_MAIN(ComposerTest)
#include "ComposerTest.moc"
