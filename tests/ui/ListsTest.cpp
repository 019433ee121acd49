#include "ui/ComposerState.h"
#include "ui/ConversationListModel.h"
#include "ui/ModelFixture.h"
#include "ui/ModelListModel.h"
#include "ui/PromptEdit.h"
#include "ui/WindowState.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>
#include <QTimeZone>

using namespace varnel;
using namespace varnel::test;
using namespace std::chrono_literals;

namespace {

QStringList column(const QAbstractItemModel& model, int role)
{
    QStringList values;
    for (int row = 0; row < model.rowCount(); ++row)
        values.append(model.index(row, 0).data(role).toString());
    return values;
}

} // namespace

/// The two lists of the window and what is kept of the window itself.
class ListsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QLocale::setDefault(QLocale::c()); }

    void conversationsStandUnderTheirDay_data()
    {
        QTest::addColumn<QString>("changed");
        QTest::addColumn<bool>("pinned");
        QTest::addColumn<QString>("group");
        QTest::addColumn<QString>("time");
        QTest::newRow("just now") << "2026-03-18T12:00:00" << false << "Today" << "12:00";
        QTest::newRow("after midnight") << "2026-03-18T00:00:00" << false << "Today" << "00:00";
        QTest::newRow("before midnight") << "2026-03-17T23:59:59" << false << "Yesterday" << "23:59";
        QTest::newRow("clock went back") << "2026-03-18T13:00:00" << false << "Today" << "13:00";
        QTest::newRow("two days") << "2026-03-16T09:00:00" << false << "Last 7 days" << "Mon";
        QTest::newRow("six days") << "2026-03-12T09:00:00" << false << "Last 7 days" << "Thu";
        QTest::newRow("seven days") << "2026-03-11T09:00:00" << false << "March" << "11 Mar 2026";
        QTest::newRow("last year") << "2025-12-31T09:00:00" << false << "December 2025" << "31 Dec 2025";
        QTest::newRow("pinned") << "2025-12-31T09:00:00" << true << "Pinned" << "31 Dec 2025";
    }
    void conversationsStandUnderTheirDay()
    {
        QFETCH(QString, changed);
        QFETCH(bool, pinned);
        const QTimeZone zone("Europe/Berlin"); // days are those of the zone, not of UTC
        ChatSession session;
        session.pinned = pinned;
        session.updatedAt =
            Instant(std::chrono::milliseconds(QDateTime(QDate::fromString(changed.left(10), Qt::ISODate),
                                                        QTime::fromString(changed.mid(11)), zone)
                                                  .toMSecsSinceEpoch()));
        const ConversationRow row = rowOf(session, QDateTime(QDate(2026, 3, 18), QTime(12, 0), zone));
        QTEST(row.group, "group");
        QTEST(row.time, "time");
    }

    void previewIsOneBoundedLine_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("preview");
        QTest::newRow("heading") << "# A title\n\nand text" << "A title and text";
        QTest::newRow("list") << "- one\n- two" << "one - two";
        QTest::newRow("bold") << "**Well**, yes" << "Well, yes";
        QTest::newRow("only marks") << "```\n" << "";
        QTest::newRow("long") << QString(5000, QLatin1Char('x')) << QString(160, QLatin1Char('x'));
    }
    void previewIsOneBoundedLine()
    {
        QFETCH(QString, text);
        QTEST(previewOf(text), "preview");
    }

    void rowsFollowTheModelWithoutAReset()
    {
        ModelFixture fixture;
        ConversationListModel list(fixture.app, fixture.clock);
        const QAbstractItemModelTester tester(&list, QAbstractItemModelTester::FailureReportingMode::QtTest);
        const QSignalSpy resets(&list, &QAbstractItemModel::modelReset);
        QSignalSpy moves(&list, &QAbstractItemModel::rowsMoved);
        const auto matches = [&] {
            QStringList titles;
            for (const ChatSession& session : fixture.app.sessions())
                titles.append(session.title);
            return column(list, ConversationListModel::TitleRole) == titles && list.currentRow() >= 0 &&
                   fixture.app.sessions()[static_cast<std::size_t>(list.currentRow())].id ==
                       fixture.app.selection();
        };
        for (const char* const prompt : {"alpha", "beta", "gamma", "delta", "epsilon"}) {
            fixture.clock.advance(1min);
            QVERIFY(fixture.begin(QString::fromLatin1(prompt)));
            QVERIFY(matches());
        }
        moves.clear();
        list.togglePinned(3); // beta goes to the top…
        QVERIFY(matches());
        list.togglePinned(0); // …and back to its place in time, each in one move
        QVERIFY(matches());
        QCOMPARE(moves.count(), 2);

        list.open(4);
        fixture.clock.advance(1min);
        QVERIFY(fixture.say(QStringLiteral("alpha again")));
        QVERIFY(matches());
        QCOMPARE(list.currentRow(), 0);
        list.remove(2);
        QVERIFY(matches());
        fixture.app.undoRemove();
        QVERIFY(matches());
        list.rename(1, QStringLiteral("renamed"));
        QVERIFY(matches());
        list.step(100);
        QCOMPARE(list.currentRow(), list.count() - 1);
        QCOMPARE(resets.count(), 0);
    }

    void searchFindsTitlesAtOnceAndTextsSoon()
    {
        ModelFixture fixture;
        ConversationListModel list(fixture.app, fixture.clock);
        QVERIFY(fixture.begin(QStringLiteral("About whales")));
        QVERIFY(fixture.begin(QStringLiteral("About trains")));
        fixture.app.rename(fixture.app.selection(), QStringLiteral("Rails"));

        fixture.app.setSessionQuery(QStringLiteral("RAIL"));
        QCOMPARE(column(list, ConversationListModel::TitleRole), QStringList{QStringLiteral("Rails")});
        // Its title holds it no more, its message does, in another order and case.
        fixture.app.setSessionQuery(QStringLiteral(" Trains  about"));
        QVERIFY(waitUntil([&] { return list.count() == 1; }));
        QCOMPARE(list.data(list.index(0), ConversationListModel::TitleRole).toString(),
                 QStringLiteral("Rails"));
        fixture.app.setSessionQuery(QStringLiteral("submarine"));
        QCOMPARE(list.count(), 0);
        QCOMPARE(list.currentRow(), -1);
        list.step(1); // nowhere to go
        fixture.app.setSessionQuery(QStringLiteral("  "));
        QCOMPARE(list.count(), 2);
    }

    void manyRowsGoAndComeBackAtOnce()
    {
        ModelFixture fixture;
        for (int i = 0; i < 150; ++i) {
            fixture.app.duplicate(fixture.app.selection());
            fixture.app.rename(fixture.app.selection(), QStringLiteral("number %1").arg(i));
        }
        ConversationListModel list(fixture.app, fixture.clock);
        const QAbstractItemModelTester tester(&list, QAbstractItemModelTester::FailureReportingMode::QtTest);
        const QSignalSpy insertions(&list, &QAbstractItemModel::rowsInserted);
        const QStringList all = column(list, ConversationListModel::TitleRole);
        const int before = list.currentRow();
        const QUuid other = fixture.app.sessions()[100].id;
        fixture.app.setSessionQuery(QStringLiteral("number 149"));
        QCOMPARE(column(list, ConversationListModel::TitleRole), QStringList{QStringLiteral("number 149")});
        fixture.app.rename(other, QStringLiteral("renamed meanwhile"));
        fixture.app.setSessionQuery(QString());
        QStringList expected = all;
        expected[100] = QStringLiteral("renamed meanwhile");
        QCOMPARE(column(list, ConversationListModel::TitleRole), expected);
        QCOMPARE(list.currentRow(), before);
        QVERIFY(insertions.count() <= 2);
    }

    void repliesThatNobodySawAreMarked()
    {
        ModelFixture fixture({.piece = 1ms});
        ConversationListModel list(fixture.app, fixture.clock);
        QVERIFY(fixture.begin(QStringLiteral("one")));
        const QUuid one = fixture.app.selection();
        QVERIFY(fixture.begin(QStringLiteral("two")));
        const auto marks = [&](int role) { return column(list, role).join(QLatin1Char(' ')); };

        fixture.app.setDraft(QStringLiteral("more"));
        fixture.app.send();
        fixture.app.select(one);
        QCOMPARE(marks(ConversationListModel::StreamingRole), QStringLiteral("true false"));
        QVERIFY(waitUntil([&] { return !fixture.app.isStreaming(); }));
        QCOMPARE(marks(ConversationListModel::StreamingRole), QStringLiteral("false false"));
        QCOMPARE(marks(ConversationListModel::UnseenRole), QStringLiteral("true false"));
        list.open(0);
        QCOMPARE(marks(ConversationListModel::UnseenRole), QStringLiteral("false false"));
    }

    void aHitIsOpenedAtItsMessageOnceItIsFound()
    {
        ModelFixture fixture;
        ConversationListModel list(fixture.app, fixture.clock);
        const QSignalSpy hits(&list, &ConversationListModel::hitOpened);
        QVERIFY(fixture.begin(QStringLiteral("The Walrus sleeps")));
        const ChatSession found = *fixture.app.selectedSession();
        QVERIFY(fixture.begin(QStringLiteral("trains")));
        list.openFirstHit(); // nothing is searched
        fixture.app.setSessionQuery(QStringLiteral("walrus"));
        list.openFirstHit(); // pressed before there was an answer
        QVERIFY(waitUntil([&] { return hits.count() == 1; }));
        QCOMPARE(fixture.app.selection(), found.id);
        QCOMPARE(hits[0][1].toString().toLower(), QStringLiteral("walrus"));
        const QUuid message(hits[0][0].toString());
        QVERIFY(std::any_of(found.messages.begin(), found.messages.end(),
                            [&](const ChatMessage& each) { return each.id == message; }));
        fixture.app.setSessionQuery(QStringLiteral("trains"));
        list.openFirstHit();
        for (const char* const query : {"", "walrus"}) // typed before there was an answer
            fixture.app.setSessionQuery(QString::fromLatin1(query));
        QVERIFY(waitUntil([&] { return fixture.app.sessionHits().has_value(); }));
        QCOMPARE(hits.count(), 1);
        fixture.app.setSessionQuery(QString());
        list.open(0);
        QCOMPARE(hits.count(), 1);
    }

    void aHitMayBeginWhatWaitedInItsConversation()
    {
        ModelFixture fixture;
        PromptEdit edit(fixture.app);
        ComposerState composer(fixture.app, edit, {});
        ConversationListModel list(fixture.app, fixture.clock);
        QVERIFY(fixture.begin(QStringLiteral("The Walrus sleeps")));
        const QUuid walrus = fixture.app.selection();
        fixture.app.rename(walrus, QStringLiteral("xyz")); // so that only its text holds the word
        fixture.app.setDraft(QStringLiteral("And now?"));
        fixture.app.importContents([] { return QByteArray("x"); }, QStringLiteral("a.txt"), {}, false);
        composer.send();
        fixture.app.newConversation();
        QVERIFY(waitUntil([&] { return !fixture.app.isImporting(); }));
        fixture.app.setSessionQuery(QStringLiteral("walrus"));
        list.openFirstHit();
        QVERIFY(waitUntil([&] { return fixture.app.session(walrus)->messages.size() == 4; }));
        QVERIFY(waitUntil([&] { return !fixture.app.isBusy(); }));
    }

    void loadedModelsComeFirst()
    {
        ModelFixture fixture;
        ModelListModel models(fixture.app);
        QCOMPARE(models.count(), 0);
        fixture.app.checkConnection();
        QVERIFY(waitUntil([&] { return models.count() == models.installed() && models.count() > 10; }));
        QCOMPARE(models.data(models.index(models.currentRow()), ModelListModel::NameRole).toString(),
                 QStringLiteral("practice-chat:70b"));

        models.setFilter(QStringLiteral(" CODE"));
        QCOMPARE(models.count(), 1);
        models.choose(7);
        models.choose(0);
        QCOMPARE(fixture.app.selectedModel(), QStringLiteral("practice-code:32b"));
        QVERIFY(fixture.say(QStringLiteral("load yourself")));
        models.setFilter(QString());
        fixture.app.refreshRunningModels();
        QVERIFY(waitUntil([&] {
            return models.data(models.index(0), ModelListModel::GroupRole) == QStringLiteral("Loaded");
        }));
        QCOMPARE(models.data(models.index(0), ModelListModel::DetailRole).toString(),
                 QStringLiteral("32.8B · 20.0 GB"));
        QCOMPARE(models.currentRow(), 0);
    }

    void windowStateSurvivesAndForgivesNonsense()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath(QStringLiteral("state/varnel/window.ini"));
        QCOMPARE(loadWindowState(file), WindowState());
        const WindowState state{.geometry = QRect(-40, 60, 1000, 700),
                                .maximized = true,
                                .sidebarWidth = 300,
                                .sidebarShown = false,
                                .scheme = ColourScheme::Dark,
                                .desktopWasDark = true,
                                .zoom = 1.25};
        saveWindowState(file, state);
        QCOMPARE(loadWindowState(file), state);

        QFile broken(file);
        QVERIFY(broken.open(QIODevice::WriteOnly));
        broken.write("[General]\ngeometry=@Rect(0 0 900000000 7)\ncolours=pink\nzoom=big\nsidebarShown=\n");
        broken.close();
        const WindowState mended = loadWindowState(file);
        QCOMPARE(mended.geometry, QRect());
        QCOMPARE(mended.scheme, ColourScheme::System);
        QCOMPARE(mended.zoom, 1.0);
    }
};

QTEST_MAIN(ListsTest)
#include "ListsTest.moc"
