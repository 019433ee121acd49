#include "support/Await.h"
#include "ui/transcript/TranscriptStage.h"

#include <QSignalSpy>

using namespace varnel;
using namespace varnel::test;

namespace {

/// Looks for a text and waits until all was looked through.
bool find(TranscriptView& view, const QString& text)
{
    view.setFindText(text);
    return waitUntil([&view] { return !view.isFinding(); });
}

} // namespace

/// Finding in the conversation that is shown.
class TranscriptFindTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whatIsShownIsFound_data()
    {
        QTest::addColumn<QString>("markdown");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("count");
        QTest::newRow("any case") << "One one ONE" << "one" << 3;
        QTest::newRow("through markup") << "a **bold** word" << "A bold word" << 1;
        QTest::newRow("not the markup") << "a **bold** [word](https://example.org)" << "example" << 0;
        QTest::newRow("an entity as it is shown") << "salt &amp; pepper" << "salt & pepper" << 1;
        QTest::newRow("an escape as it is shown") << "2 \\* 3" << "2 * 3" << 1;
        QTest::newRow("code") << "```\nint main()\n```" << "main()" << 1;
        QTest::newRow("a table") << "| a | b |\n|---|---|\n| cell | cell |" << "cell" << 2;
        QTest::newRow("one does not begin within another") << "aaaa" << "aa" << 2;
        QTest::newRow("letters of no case") << QStringLiteral("日本語 日本") << QStringLiteral("日本") << 2;
        QTest::newRow("nothing") << "words" << "" << 0;
    }
    void whatIsShownIsFound()
    {
        QFETCH(QString, markdown);
        QFETCH(QString, text);
        TranscriptStage stage({reply(QStringLiteral("r"), markdown)});
        QVERIFY(find(stage.view, text));
        QTEST(stage.view.findCount(), "count");
    }

    void theWayGoesThroughAllAndAround()
    {
        TranscriptStage stage({prompt(QStringLiteral("p"), QStringLiteral("tree")),
                               reply(QStringLiteral("r"), QStringLiteral("tree tree")),
                               prompt(QStringLiteral("q"), QStringLiteral("stone")),
                               reply(QStringLiteral("s"), QStringLiteral("tree"))});
        QVERIFY(find(stage.view, QStringLiteral("tree")));
        QList<int> numbers;
        for (int step = 0; step < 5; ++step) {
            numbers.append(stage.view.findNumber());
            stage.view.findNext();
        }
        QCOMPARE(numbers, QList<int>({1, 2, 3, 4, 1}));
        stage.view.findPrevious();
        stage.view.findPrevious();
        QCOMPARE(stage.view.findNumber(), 4);
    }

    void aLongConversationIsLookedThroughInParts()
    {
        std::vector<TranscriptMessage> messages = longConversation(10000, 300);
        messages[2].content += QStringLiteral("\n\nneedle");
        messages[7001].content += QStringLiteral("\n\n```\n") + QStringLiteral("x ").repeated(400) +
                                  QStringLiteral("needle\n```\n");
        TranscriptStage stage(messages);
        stage.view.setFindText(QStringLiteral("message"));
        QVERIFY(stage.view.isFinding()); // the first part is over, and the rest has yet to come
        QVERIFY(find(stage.view, QStringLiteral("needle")));
        QCOMPARE(stage.view.findCount(), 2);
        // From the end, which was shown, the search goes on at the beginning.
        QCOMPARE(stage.view.findNumber(), 1);
        for (int step = 0; step < 2; ++step) {
            const auto rows = stage.view.rowsInView();
            const bool isShown = std::any_of(rows.begin(), rows.end(), [&](const PlacedRow& placed) {
                return stage.view.document().row(placed.ref).plainText().contains(QStringLiteral("needle"));
            });
            QVERIFY(isShown);
            QVERIFY(!stage.view.isFollowing());
            stage.view.findNext();
        }
    }

    void matchesAreMarkedAndTheMarksGo()
    {
        TranscriptStage stage({reply(QStringLiteral("r"), QStringLiteral("Some words, and more words."))});
        stage.leave();
        const QImage plain = stage.picture();
        QVERIFY(find(stage.view, QStringLiteral("words")));
        const QImage first = stage.picture();
        QVERIFY(first != plain);
        stage.view.findNext();
        QVERIFY(stage.picture() != first); // another one has the outline
        stage.view.setFindText({});
        QCOMPARE(stage.picture(), plain);
    }

    void aReplyThatGrowsIsCountedOn()
    {
        TranscriptMessage growing = reply(QStringLiteral("r"), QStringLiteral("tide"));
        growing.streaming = true;
        TranscriptStage stage({prompt(QStringLiteral("p"), QStringLiteral("tide")), growing});
        QVERIFY(find(stage.view, QStringLiteral("tide")));
        stage.view.findNext();
        growing.content += QStringLiteral(" and tide\n\nand **tide**");
        stage.model.updateMessage(growing);
        stage.model.appendMessage(prompt(QStringLiteral("q"), QStringLiteral("high tide")));
        QVERIFY(waitUntil([&] { return stage.view.findCount() == 5; }));
        QCOMPARE(stage.view.findNumber(), 2); // the reader's place stays
        stage.model.removeFrom(1);
        QVERIFY(waitUntil([&] { return stage.view.findCount() == 1; }));
        QCOMPARE(stage.view.findNumber(), 0);
        stage.view.findNext();
        QCOMPARE(stage.view.findNumber(), 1);
        stage.model.setMessages({reply(QStringLiteral("x"), QStringLiteral("tide table"))});
        QVERIFY(waitUntil([&] { return stage.view.findCount() == 1 && !stage.view.isFinding(); }));
    }

    void whatWasThoughtIsFoundWhileItIsOpen()
    {
        TranscriptMessage message = reply(QStringLiteral("r"), QStringLiteral("An answer"));
        message.thinking = QStringLiteral("a secret thought");
        TranscriptStage stage({message});
        QVERIFY(find(stage.view, QStringLiteral("secret")));
        QCOMPARE(stage.view.findCount(), 0);
        stage.view.activate(stage.view.targetsInView().front());
        QVERIFY(waitUntil([&] { return stage.view.findCount() == 1; }));
    }

    void aJumpStaysAtItsMessage()
    {
        std::vector<TranscriptMessage> messages = longConversation(200, 400);
        messages[150].content = QStringLiteral("lighthouse\n\n").repeated(40);
        messages[21].content = QStringLiteral("[see](https://lighthouse.example)");
        TranscriptStage stage(messages);
        const auto first = [&] { return stage.view.rowsInView().front().ref.message; };
        stage.view.showMatch(messages[21].id, QStringLiteral("lighthouse"));
        QVERIFY(waitUntil([&] { return !stage.view.isFinding(); }));
        QCOMPARE(first(), 21); // it stands in the address only, which is not shown
        stage.view.showMatch(messages[150].id, QStringLiteral("lighthouse"));
        QVERIFY(waitUntil([&] { return !stage.view.isFinding(); }));
        QCOMPARE(stage.view.findNumber(), 1);
        QVERIFY(first() >= 149);
    }
};

QTEST_MAIN(TranscriptFindTest)
#include "TranscriptFindTest.moc"
