#include "ui/QuietTest.h"
#include "ui/SheetFixture.h"
#include "websearch/TestNetwork.h"

#include <QTest>

using namespace varnel;
using namespace varnel::test;
using namespace std::chrono_literals;

/// What is typed, held and turned goes where it was meant to, whatever lies over the window.
class InputTest : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void aNoteStaysWithItsItem()
    {
        SheetFixture fixture;
        fixture.open();
        for (const char* const title : {"trains", "whales"})
            fixture.app->addLink(QString::fromLatin1(title), QStringLiteral("https://example.org"), {}, {});
        const QUuid whales = fixture.app->libraryItems()[0].id;
        const QUuid trains = fixture.app->libraryItems()[1].id;
        fixture.press(Qt::Key_L, Qt::ControlModifier);
        QVERIFY(fixture.click("whales"));
        QVERIFY(fixture.fill("Note", QStringLiteral("blue")));
        QVERIFY(fixture.click("trains")); // the keyboard stays in the field
        QCOMPARE(fixture.valueOf("Note"), QString());
        QCOMPARE(fixture.app->libraryItem(whales)->note, QStringLiteral("blue"));
        QCOMPARE(fixture.app->libraryItem(trains)->note, QString());

        QVERIFY(fixture.fill("Note", QStringLiteral("steam")));
        fixture.app->attach(whales); // which changes nothing of what is being typed
        QCOMPARE(fixture.valueOf("Note"), QStringLiteral("steam"));
        QVERIFY(fixture.fill("Title", QStringLiteral(" old  trains ")));
        QCOMPARE(fixture.app->libraryItem(trains)->note, QStringLiteral("steam"));
        fixture.window->close();
        QCOMPARE(fixture.app->libraryItem(trains)->title, QStringLiteral("old trains"));
        QCOMPARE(fixture.app->libraryItem(whales)->title, QStringLiteral("whales"));
    }

    void whatIsTypedForAConversationStaysWithIt()
    {
        SheetFixture fixture;
        fixture.open();
        const QUuid trains = fixture.app->selection();
        fixture.app->duplicate(trains);
        const QUuid whales = fixture.app->selection();
        fixture.press(Qt::Key_F2);
        for (const char key : {'s', 'e', 'a'})
            QTest::keyClick(fixture.window, key);
        fixture.app->select(trains); // as an import that ends does
        QTest::keyClick(fixture.window, 'l');
        fixture.press(Qt::Key_Return);
        QCOMPARE(fixture.app->session(whales)->title, QStringLiteral("seal"));
        QVERIFY(fixture.app->selectedTitle() != QStringLiteral("seal"));
        QCOMPARE(fixture.app->draft(), QString());

        QVERIFY(fixture.click("Sampling"));
        QVERIFY(fixture.fill("System prompt", QStringLiteral("steam")));
        fixture.app->select(whales);
        QVERIFY(waitUntil([&] { return fixture.focusName() != QStringLiteral("System prompt"); }));
        QCOMPARE(fixture.app->session(trains)->systemPrompt, QStringLiteral("steam"));
        QCOMPARE(fixture.app->session(whales)->systemPrompt, QString());
        QVERIFY(fixture.click("Sampling"));
        QVERIFY(fixture.fill("System prompt", QStringLiteral("blue")));
        fixture.window->close();
        QCOMPARE(fixture.app->session(whales)->systemPrompt, QStringLiteral("blue"));
    }

    void whatTheAttachMenuOpensHasTheKeyboard()
    {
        SheetFixture fixture;
        fixture.open();
        QVERIFY(fixture.click("Attach"));
        QVERIFY(fixture.click("Read a web page…"));
        QVERIFY(waitUntil([&] { return fixture.focusName() == QStringLiteral("Address of the page"); }));
        fixture.press(Qt::Key_Escape);
        QVERIFY(waitUntil([&] { return fixture.focusName() == QStringLiteral("Message"); }));
        QVERIFY(fixture.click("Attach"));
        QVERIFY(fixture.click("From the library…"));
        QVERIFY(waitUntil([&] { return fixture.focusName() == QStringLiteral("Search the library"); }));
    }

    void thePickerPointsAtTheSameModelWhenOthersGo()
    {
        SheetFixture fixture;
        fixture.open();
        const auto& models = fixture.part<ModelListModel>("ModelListModel");
        QVERIFY(waitUntil([&] { return models.rowCount() > 3; }));
        fixture.press(Qt::Key_M, Qt::ControlModifier | Qt::ShiftModifier);
        QVERIFY(waitUntil([&] { return fixture.focusName() == QStringLiteral("Find a model"); }));
        const int row = models.currentRow() + 2;
        const QString pointed = models.index(row, 0).data(ModelListModel::NameRole).toString();
        fixture.press(Qt::Key_Down);
        fixture.press(Qt::Key_Down);
        const int before = models.rowCount();
        fixture.app->removeModel(models.index(row - 1, 0).data(ModelListModel::NameRole).toString());
        QVERIFY(waitUntil([&] { return models.rowCount() == before - 1; }));
        fixture.press(Qt::Key_Return);
        QCOMPARE(fixture.app->selectedModel(), pointed);
    }

    void theLibraryIsSearchedAndTidied()
    {
        SheetFixture fixture;
        fixture.open();
        auto& library = fixture.part<LibraryListModel>("LibraryListModel");
        QVERIFY(!library.addLink(QStringLiteral("no address"), {}));
        QVERIFY(!library.addLink(QStringLiteral("localhost"), {}));
        QVERIFY(library.addLink(QStringLiteral("http://gpu:8080/doc"), {}));
        fixture.app->removeItemForGood(library.currentId());
        QVERIFY(!library.addLink(QStringLiteral("file:///etc/passwd"), {}));
        for (const char* const address : {"example.org/whales", "https://example.org/trains"})
            QVERIFY(library.addLink(QString::fromLatin1(address), QStringLiteral("Web")));
        library.keepTyped(library.currentIdentifier(), {{QStringLiteral("folder"), QStringLiteral("Web")},
                                                        {QStringLiteral("note"), QStringLiteral("steam")}});
        QCOMPARE(library.folders(), QStringList{QStringLiteral("Web")});
        fixture.app->setLibraryQuery(QStringLiteral("STEAM example"));
        QCOMPARE(library.count(), 1);
        library.moveTo(QStringLiteral("Rails"));
        fixture.app->setLibraryQuery({});
        library.setFolder(QStringLiteral("Rails"));
        QCOMPARE(library.count(), 1);
        library.toggleAttached();
        const QUuid item = library.currentId();
        fixture.app->deleteItem(item); // also off the message, and its folder is no longer one to choose
        QCOMPARE(fixture.app->attachmentIDs().size(), 0U);
        library.setFolder({});
        QCOMPARE(library.count(), 1);
        library.setShowsDeleted(true);
        QCOMPARE(library.currentId(), item);
        QVERIFY(library.currentDeleted());
        fixture.app->restoreItem(item);
        QCOMPARE(library.count(), 0);
        fixture.app->removeItemForGood(item);
        QCOMPARE(library.total(), 1);
    }

    void aDeleteKeyThatIsHeldDeletesOne()
    {
        SheetFixture fixture;
        fixture.open();
        for (const char* const title : {"one", "two", "three"}) {
            ChatSession session = fixture.app->newSettings();
            session.title = QString::fromLatin1(title);
            fixture.app->addConversation(session);
        }
        const std::size_t before = fixture.app->sessions().size();
        for (int i = 0; i < 40 && !fixture.focusName().startsWith(QStringLiteral("three,")); ++i)
            fixture.press(Qt::Key_Tab);
        fixture.press(Qt::Key_Delete);
        for (int i = 0; i < 3; ++i) {
            QKeyEvent held(QEvent::KeyPress, Qt::Key_Delete, Qt::NoModifier, {}, true);
            QCoreApplication::sendEvent(fixture.window, &held);
        }
        QCOMPARE(fixture.app->sessions().size(), before - 1);
    }

    void theSizeChangesUnderASheetToo()
    {
        SheetFixture fixture;
        fixture.open(Qt::Key_Comma);
        QVERIFY(fixture.shows("Settings"));
        const auto& appearance = fixture.part<Appearance>("Appearance");
        fixture.press(Qt::Key_Plus, Qt::ControlModifier);
        QCOMPARE(appearance.zoom(), 1.1);
        const QPointF middle(fixture.window->width() / 2.0, fixture.window->height() / 2.0);
        QWheelEvent turn(middle, fixture.window->mapToGlobal(middle), {}, {0, -120}, Qt::NoButton,
                         Qt::ControlModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(fixture.window, &turn);
        QCOMPARE(appearance.zoom(), 1.0);
        fixture.press(Qt::Key_Slash, Qt::ControlModifier);
        QVERIFY(fixture.shows("Keyboard shortcuts"));
    }

    void arrowsGoFromEntryToEntry()
    {
        SheetFixture fixture;
        fixture.open();
        QVERIFY(fixture.click("Menu"));
        const auto label = [&fixture] {
            QObject* const item = fixture.window->activeFocusItem();
            return item ? item->property("text").toString() : QString();
        };
        QStringList entries;
        for (int i = 0; i < 5; ++i) {
            fixture.press(Qt::Key_Down);
            entries.append(label());
        }
        QCOMPARE(entries.at(1), QStringLiteral("Find in the conversation"));
        QCOMPARE(entries.at(2), QStringLiteral("Export as Markdown…"));
        QVERIFY(!entries.contains(QString()));
        fixture.press(Qt::Key_Up);
        fixture.press(Qt::Key_Up);
        fixture.press(Qt::Key_Up);
        QCOMPARE(label(), entries.at(1));
    }

    void aPageThatIsReadIsStopped_data()
    {
        QTest::addColumn<bool>("byKey");
        QTest::newRow("by Esc") << true;
        QTest::newRow("by its button") << false;
    }
    void aPageThatIsReadIsStopped()
    {
        QFETCH(bool, byKey);
        TestNetwork network;
        network.hosts.insert(QStringLiteral("slow.test"), {});
        SheetFixture fixture;
        fixture.pages = &network;
        fixture.open();
        fixture.app->readPage(QStringLiteral("http://slow.test/"));
        QVERIFY(fixture.app->isReadingPage());
        if (byKey)
            fixture.press(Qt::Key_Escape);
        else
            QVERIFY(fixture.click("Stop reading"));
        QVERIFY(waitUntil([&] { return !fixture.app->isReadingPage(); }));
        QCOMPARE(fixture.app->statusMessage(), QStringLiteral("Stopped."));
    }

    void aLookAtTheServerThatIsShortDoesNotShow()
    {
        SheetFixture fixture;
        fixture.open();
        QVERIFY(waitUntil([&] { return fixture.app->linkState() == LinkState::Connected; }));
        const auto& link = fixture.part<LinkForScreens>("Link");
        fixture.app->checkConnection();
        QCOMPARE(fixture.app->linkState(), LinkState::Connecting);
        QVERIFY(link.connected() && !link.connecting());
        QVERIFY(waitUntil([&] { return fixture.app->linkState() == LinkState::Connected; }));
        QVERIFY(link.connected());
    }
};

QTEST_MAIN(InputTest)
#include "InputTest.moc"
