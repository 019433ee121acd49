#include "support/Await.h"
#include "ui/transcript/TranscriptStage.h"

#include <QRandomGenerator>

using namespace varnel;
using namespace varnel::test;

namespace {

struct Stage : TranscriptStage
{
    explicit Stage(std::vector<TranscriptMessage> messages)
        : TranscriptStage(std::move(messages))
    {
        settle();
    }
    void settle()
    {
        view.rowsInView();
        QTest::qWait(60);
    }
};

/// Where each line of text in view stands: what must not move.
QMap<RowRef, qreal> standing(TranscriptView& view)
{
    QMap<RowRef, qreal> places;
    for (const PlacedRow& placed : view.rowsInView()) {
        if (!placed.isSticky)
            places.insert(placed.ref, placed.y);
    }
    return places;
}

/// The rows in view at both times stand where they stood.
bool stillStands(const QMap<RowRef, qreal>& before, TranscriptView& view)
{
    const auto now = standing(view);
    int shared = 0;
    for (auto place = before.begin(); place != before.end(); ++place) {
        if (!now.contains(place.key()))
            continue;
        ++shared;
        if (now[place.key()] != place.value()) {
            qWarning() << "row" << place.key().message << place.key().row << "moved from" << place.value()
                       << "to" << now[place.key()];
            return false;
        }
    }
    return shared > 0;
}

TranscriptMessage growing(const QString& text)
{
    TranscriptMessage message = reply(QStringLiteral("growing"), text);
    message.streaming = true;
    return message;
}

} // namespace

class TranscriptScrollTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void heightsAgreeWithAPlainSum()
    {
        QRandomGenerator random(7);
        HeightIndex index;
        std::vector<int> plain;
        for (int step = 0; step < 3000; ++step) {
            const int choice = random.bounded(10);
            if (choice < 6 || plain.empty()) {
                plain.push_back(random.bounded(0, 90));
                index.append(plain.back());
            } else if (choice < 9) {
                const int row = random.bounded(static_cast<int>(plain.size()));
                plain[static_cast<std::size_t>(row)] = random.bounded(0, 500);
                index.setHeight(row, plain[static_cast<std::size_t>(row)]);
            } else if (random.bounded(20) == 0) {
                plain.resize(plain.size() / 2);
                index.truncate(static_cast<int>(plain.size()));
            }
        }
        qint64 sum = 0;
        for (int row = 0; row < index.count(); ++row) {
            QCOMPARE(index.offsetOf(row), sum);
            const int height = plain[static_cast<std::size_t>(row)];
            if (height > 0) {
                QCOMPARE(index.rowAt(sum), row);
                QCOMPARE(index.rowAt(sum + height - 1), row);
            }
            sum += height;
        }
        QCOMPARE(index.total(), sum);
        QCOMPARE(index.rowAt(-5), 0);
        QCOMPARE(index.rowAt(sum + 5), index.count() - 1);
    }

    void heightsThatCountAsKnownAreRight_data()
    {
        QTest::addColumn<qreal>("zoom");
        QTest::addColumn<qreal>("ratio");
        QTest::newRow("plain") << 1.0 << 1.0;
        QTest::newRow("zoomed") << 1.1 << 1.0;
        QTest::newRow("fractional scaling") << 0.9 << 1.25;
    }
    void heightsThatCountAsKnownAreRight()
    {
        QFETCH(qreal, zoom);
        QFETCH(qreal, ratio);
        TranscriptModel model;
        TranscriptStyle style;
        style.zoom = zoom;
        model.setMessages(sampleConversation());
        TranscriptDocument document(model, style);
        document.setGeometry(1000, ratio);
        int known = 0;
        for (std::optional<RowRef> ref = RowRef{}; ref; ref = document.next(*ref)) {
            if (!document.isMeasured(*ref))
                continue;
            ++known;
            const int height = document.heightOf(*ref);
            document.layout(*ref);
            QCOMPARE(document.heightOf(*ref), height);
        }
        QVERIFY(known > 10);
    }

    void readingUpwardsMovesTextByExactlyWhatTheWheelSays()
    {
        // Thousands of rows that nobody measured yet come into view from above, with heights that were
        // guessed.
        Stage stage(longConversation(400, 3000));
        for (int step = 0; step < 300; ++step) {
            const auto before = standing(stage.view);
            stage.wheel(1);
            const auto now = standing(stage.view);
            for (auto place = before.begin(); place != before.end(); ++place) {
                if (now.contains(place.key()))
                    QCOMPARE(now[place.key()], place.value() + 72);
            }
            if (step % 20 == 0) {
                stage.leave();
                const QImage picture = stage.picture();
                stage.wheel(1);
                stage.leave();
                const QImage moved = stage.picture();
                // A header that stays at the top goes its own way.
                const int height = picture.height() - 72 - 48;
                QCOMPARE(moved.copy(0, 48 + 72, moved.width(), height),
                         picture.copy(0, 48, picture.width(), height));
            }
        }
        QVERIFY(!stage.view.isFollowing());
    }

    void detachedTextStandsStillWhateverArrives()
    {
        Stage stage(longConversation(300, 2000));
        stage.model.appendMessage(growing({}));
        stage.settle();
        stage.wheel(3);
        stage.settle();
        const auto before = standing(stage.view);
        const QImage picture = stage.picture();
        QString text;
        const QString source = sampleConversation()[1].content;
        for (qsizetype at = 0; at < source.size(); at += 37) {
            text += source.mid(at, 37);
            stage.model.updateMessage(growing(text));
            QVERIFY(stillStands(before, stage.view));
            QCOMPARE(stage.picture(), picture);
        }
        stage.model.updateMessage(reply(QStringLiteral("growing"), text));
        // Measuring in idle time corrects heights above and below.
        const qint64 total = stage.view.document().total();
        QVERIFY(waitUntil([&] { return stage.view.document().total() != total; }));
        QTest::qWait(300);
        QVERIFY(stillStands(before, stage.view));
        QVERIFY(!stage.view.isFollowing());
        QCOMPARE(stage.view.unseenBelow(), 1);
        QCOMPARE(stage.picture(), picture);
    }

    void whatAReaderDoesLetsGoAtOnce_data()
    {
        QTest::addColumn<int>("deed");
        QTest::newRow("wheel up") << 0;
        QTest::newRow("page up") << 1;
        QTest::newRow("selecting") << 2;
        QTest::newRow("scroll bar") << 3;
    }
    void whatAReaderDoesLetsGoAtOnce()
    {
        QFETCH(int, deed);
        Stage stage(longConversation(20, 1500));
        QVERIFY(stage.view.isFollowing());
        const QPoint inText(300, 420);
        if (deed == 0) {
            stage.wheel(1);
        } else if (deed == 1) {
            stage.view.forceActiveFocus();
            QTest::keyClick(&stage.window, Qt::Key_PageUp);
        } else if (deed == 2) {
            QTest::mousePress(&stage.window, Qt::LeftButton, {}, inText);
            QTest::mouseMove(&stage.window, inText + QPoint(150, 50));
            QTest::mouseRelease(&stage.window, Qt::LeftButton, {}, inText + QPoint(150, 50));
            QVERIFY(stage.view.hasSelection());
        } else {
            const QPoint thumb =
                stage.view.scrollBar().mapToScene(stage.view.scrollBar().thumb().center()).toPoint();
            QTest::mousePress(&stage.window, Qt::LeftButton, {}, thumb);
            QTest::mouseMove(&stage.window, thumb - QPoint(0, 200));
            QTest::mouseRelease(&stage.window, Qt::LeftButton, {}, thumb - QPoint(0, 200));
        }
        QVERIFY(!stage.view.isFollowing());
        const auto before = standing(stage.view);
        stage.model.appendMessage(growing(QStringLiteral("more and more\n\n").repeated(20)));
        stage.settle();
        QVERIFY(stillStands(before, stage.view));
        stage.view.jumpToLatest();
        QVERIFY(stage.view.isFollowing());
        QCOMPARE(stage.view.unseenBelow(), 0);
    }

    void reachingTheEndTakesHoldAgain()
    {
        Stage stage(longConversation(20, 1500));
        stage.wheel(2);
        QVERIFY(!stage.view.isFollowing());
        stage.wheel(-1);
        QVERIFY(!stage.view.isFollowing());
        stage.wheel(-1);
        QVERIFY(stage.view.isFollowing());
        stage.model.appendMessage(reply(QStringLiteral("new"), QStringLiteral("line\n\n").repeated(40)));
        stage.settle();
        const RowRef last = stage.view.rowsInView().back().ref;
        QCOMPARE(last.message, stage.model.count() - 1);
        QCOMPARE(last.row, stage.view.document().rowCount(last.message) - 1);
    }

    void openingThoughtsAndWrappingCodeKeepTheirPlace()
    {
        Stage stage(sampleConversation());
        Q_EMIT stage.view.scrollBar().moved(0.0);
        stage.settle();
        for (const TargetKind kind : {TargetKind::Thinking, TargetKind::WrapCode}) {
            std::optional<TargetRef> found;
            for (int page = 0; page < 20 && !found; ++page) {
                for (const TargetRef target : stage.view.targetsInView()) {
                    if (stage.view.targetAt(target)->kind == kind)
                        found = target;
                }
                if (!found)
                    stage.wheel(-2);
            }
            QVERIFY(found);
            for (int press = 0; press < 2; ++press) {
                const qreal y = standing(stage.view).value(found->row);
                stage.view.activate(*found);
                QCOMPARE(standing(stage.view).value(found->row), y);
            }
        }
    }

    void anotherWidthAndBackKeepsTheReadersPlace()
    {
        Stage stage(longConversation(200, 2500));
        stage.wheel(40);
        const RowRef first = stage.view.rowsInView().front().ref;
        const qint64 total = stage.view.document().total();
        stage.view.setSize({600, 700});
        QCOMPARE(stage.view.rowsInView().front().ref, first);
        stage.view.setSize({1000, 700});
        QCOMPARE(stage.view.rowsInView().front().ref, first);
        QCOMPARE(stage.view.document().total(), total); // what was measured at this width is known still
    }

    void onlyWhatIsOpenIsLaidOutAgain()
    {
        Stage stage({});
        QString text;
        stage.model.appendMessage(growing(text));
        for (int i = 0; i < 30; ++i) {
            text += QStringLiteral("Paragraph %1 of the reply.\n\n").arg(i);
            stage.model.updateMessage(growing(text));
            stage.view.rowsInView();
        }
        const RowLayout* const finished = &stage.view.document().layout({0, 20});
        text += QStringLiteral("And the open one");
        stage.model.updateMessage(growing(text));
        stage.view.rowsInView();
        QCOMPARE(&stage.view.document().layout({0, 20}), finished);
        QCOMPARE(stage.view.document().row({0, 30}).text.text, QStringLiteral("And the open one"));
    }

    void modelsAndStylesMayGoBeforeTheView()
    {
        Stage stage(sampleConversation());
        {
            TranscriptModel other;
            TranscriptStyle style;
            style.useTheme(true);
            stage.view.setModel(&other);
            stage.view.setStyle(&style);
            other.setMessages(longConversation(5, 500));
            other.removeFrom(2);
            stage.settle();
            QCOMPARE(stage.view.document().messageCount(), 2);
            style.setProperty("zoom", 1.5);
            stage.settle();
        }
        stage.settle();
        QVERIFY(stage.view.rowsInView().empty());
    }
};

QTEST_MAIN(TranscriptScrollTest)
#include "TranscriptScrollTest.moc"
