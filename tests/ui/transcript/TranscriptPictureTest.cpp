#include "ui/transcript/TranscriptStage.h"

#include <QRandomGenerator>

using namespace varnel;
using namespace varnel::test;
using namespace std::chrono_literals;

namespace {

/// A reply that begins with thoughts and grows by pieces, as a server sends it.
class GrowingReply
{
public:
    GrowingReply(QString source, quint32 seed)
        : m_source(std::move(source))
        , m_random(seed)
        , m_message(reply(QStringLiteral("growing"), {}))
    {
        m_message.streaming = true;
        m_message.waitingSince = TranscriptMessage::TimePoint{};
    }
    /// The message after the next piece, complete after the last one.
    const TranscriptMessage& next()
    {
        if (m_message.thinking.size() < 60) {
            m_message.waitingSince.reset();
            m_message.thinkingSince = TranscriptMessage::TimePoint{};
            m_message.thinking += QStringLiteral("This needs some thought. ");
            return m_message;
        }
        m_message.thinkingTook = 12s;
        m_message.content = m_source.left(m_message.content.size() + m_random.bounded(1, 150));
        m_message.streaming = m_message.content.size() < m_source.size();
        return m_message;
    }
    const TranscriptMessage& message() const { return m_message; }

private:
    QString m_source;
    QRandomGenerator m_random;
    TranscriptMessage m_message;
};

QString endingInCode()
{
    return sampleConversation()[1].content + QStringLiteral("\n\n```c\n") +
           QStringLiteral("int line = 1; // of a block\n").repeated(50) + QStringLiteral("```");
}

/// Compares two pictures and names the first line in which they differ.
bool samePicture(const QImage& shown, const QImage& expected)
{
    if (shown == expected)
        return true;
    for (int y = 0; y < std::min(shown.height(), expected.height()); ++y) {
        if (shown.copy(0, y, shown.width(), 1) != expected.copy(0, y, expected.width(), 1)) {
            qWarning("the pictures differ from line %d on", y);
            break;
        }
    }
    return false;
}

} // namespace

/// What is drawn piece by piece is what would be drawn at once.
class TranscriptPictureTest : public QObject
{
    Q_OBJECT

    /// Draws everything again, as it stands.
    static QImage drawnAnew(TranscriptStage& stage)
    {
        stage.view.update(stage.view.boundingRect().toAlignedRect());
        return stage.picture();
    }

private Q_SLOTS:
    void everyPieceLeavesAWholePicture_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<qreal>("zoom");
        QTest::addColumn<int>("notchesUp"); // the reader has gone up by these
        QTest::newRow("following") << QSize(1000, 700) << 1.0 << 0;
        QTest::newRow("following, large") << QSize(1000, 700) << 1.5 << 0;
        QTest::newRow("following, odd") << QSize(613, 411) << 1.1 << 0;
        QTest::newRow("following, low") << QSize(900, 130) << 1.25 << 0;
        QTest::newRow("reading") << QSize(1000, 700) << 1.0 << 2;
        QTest::newRow("reading, large") << QSize(900, 500) << 1.5 << 1;
    }
    void everyPieceLeavesAWholePicture()
    {
        QFETCH(QSize, size);
        QFETCH(qreal, zoom);
        QFETCH(int, notchesUp);
        TranscriptStyle style;
        style.zoom = zoom;
        TranscriptStage stage({prompt(QStringLiteral("p"), QStringLiteral("How?"))}, size);
        stage.view.setStyle(&style);
        GrowingReply growing(endingInCode(), 11);
        stage.model.appendMessage(growing.message());
        for (int piece = 0; growing.message().streaming; ++piece) {
            stage.model.updateMessage(growing.next());
            stage.view.rowsInView();
            if (notchesUp > 0 && piece % 23 == 22) {
                stage.view.jumpToLatest();
                stage.wheel(notchesUp);
                stage.leave();
            }
            const QImage shown = stage.picture();
            QVERIFY2(samePicture(shown, drawnAnew(stage)), qPrintable(QString::number(piece)));
        }
    }

    void aReplyThatStreamedLooksLikeOneThatWasOpened_data()
    {
        QTest::addColumn<qreal>("zoom");
        QTest::addColumn<int>("disturbance"); // what happens on the way
        QTest::newRow("undisturbed") << 1.0 << 0;
        QTest::newRow("large") << 1.5 << 0;
        QTest::newRow("resized") << 1.0 << 1;
        QTest::newRow("resized, large") << 1.5 << 1;
        QTest::newRow("another conversation and back") << 1.0 << 2;
        QTest::newRow("zoomed") << 1.0 << 3;
        QTest::newRow("read meanwhile") << 1.25 << 4;
    }
    void aReplyThatStreamedLooksLikeOneThatWasOpened()
    {
        QFETCH(qreal, zoom);
        QFETCH(int, disturbance);
        const TranscriptMessage question = prompt(QStringLiteral("p"), QStringLiteral("How?"));
        for (const QString& source : {endingInCode(), sampleConversation()[1].content}) {
            TranscriptStyle style;
            style.zoom = zoom;
            TranscriptStage stage({question});
            stage.view.setStyle(&style);
            GrowingReply growing(source, 5);
            stage.model.appendMessage(growing.message());
            for (int piece = 0; growing.message().streaming; ++piece) {
                stage.model.updateMessage(growing.next());
                if (piece % 3 == 0)
                    stage.picture();
                if (piece % 10 == 9)
                    disturb(stage, style, disturbance, piece, {question, growing.message()});
            }
            style.setProperty("zoom", zoom);
            stage.resize({1000, 700});
            stage.view.jumpToLatest();
            const QImage shown = stage.picture();

            TranscriptStage fresh({question, growing.message()});
            fresh.view.setStyle(&style);
            const QImage opened = fresh.picture();
            QVERIFY(samePicture(shown, opened));
            for (TranscriptDocument* const document : {&stage.view.document(), &fresh.view.document()}) {
                for (std::optional<RowRef> ref = RowRef{}; ref; ref = document->next(*ref))
                    document->layout(*ref);
            }
            QCOMPARE(stage.view.document().total(), fresh.view.document().total());
        }
    }

private:
    static void disturb(TranscriptStage& stage, TranscriptStyle& style, int disturbance, int piece,
                        std::vector<TranscriptMessage> messages)
    {
        const bool odd = piece % 20 == 9;
        switch (disturbance) {
        case 1:
            stage.resize(odd ? QSize(700, 500) : QSize(1000, 700));
            break;
        case 2:
            stage.model.setMessages(longConversation(5, 800));
            stage.picture();
            stage.model.setMessages(std::move(messages));
            break;
        case 3:
            style.setProperty("zoom", odd ? 1.75 : 1.0);
            break;
        case 4:
            stage.wheel(odd ? 3 : -30);
            stage.leave();
            break;
        default:
            break;
        }
        stage.picture();
    }
};

QTEST_MAIN(TranscriptPictureTest)
#include "TranscriptPictureTest.moc"
