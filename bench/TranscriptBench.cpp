// The transcript: opening 10,000 messages, scrolling through them, and following a reply at 200 pieces a
// second in an empty and in a long conversation. Drawn by the software scene graph, as on a computer without
// a GPU.

#include "Measure.h"

#include "ui/transcript/SampleConversation.h"
#include "ui/transcript/TranscriptView.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QGuiApplication>
#include <QQuickWindow>
#include <QTimer>
#include <QWheelEvent>

#include <random>

using namespace varnel;

namespace {

constexpr QSize viewSize(1140, 900);
constexpr int messageCount = 10000;
constexpr int messageLength = 2000;

double processCpu()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1e3 +
           static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e3;
}

/// A window with a transcript that tells how long its frames take.
class Stage
{
public:
    Stage()
    {
        window.resize(viewSize);
        view.setSize(viewSize);
        view.setModel(&model);
        QObject::connect(&window, &QQuickWindow::afterAnimating, &window, [this] { m_frame.start(); });
        QObject::connect(&window, &QQuickWindow::frameSwapped, &window,
                         [this] { m_took = static_cast<double>(m_frame.nsecsElapsed()) / 1e6; });
        window.show();
        waitForFrame();
    }

    /// Milliseconds that laying out and drawing the next frame takes.
    double waitForFrame()
    {
        QEventLoop loop;
        const auto connection =
            QObject::connect(&window, &QQuickWindow::frameSwapped, &loop, &QEventLoop::quit);
        QTimer::singleShot(2000, &loop, &QEventLoop::quit);
        loop.exec();
        QObject::disconnect(connection);
        return m_took;
    }

    /// The longest of the frames that a reader's doing causes, with the work of the event itself.
    template <typename Deed>
    double worstFrame(int count, Deed deed)
    {
        double worst = 0;
        for (int i = 0; i < count; ++i) {
            const double started = bench::now();
            deed(i);
            const double handling = bench::now() - started;
            worst = std::max(worst, handling + waitForFrame());
        }
        return worst;
    }

    void wheel(int notches)
    {
        const QPointF point(500, 400);
        QWheelEvent event(point, window.mapToGlobal(point), {}, {0, notches * 120}, Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&window, &event);
    }

    void turn(int milliseconds)
    {
        QEventLoop loop;
        QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
        loop.exec();
    }

    TranscriptModel model;
    QQuickWindow window;
    TranscriptView view{window.contentItem()};

private:
    QElapsedTimer m_frame;
    double m_took = 0;
};

/// The share of a core that a reply of 200 pieces of five characters a second takes, in percent.
/// @param before what the reply holds already.
double streamingShare(Stage& stage, const QString& before = {})
{
    const QString source = test::sampleConversation()[1].content.repeated(5);
    TranscriptMessage message = test::reply(QStringLiteral("streamed"), before);
    message.streaming = true;
    stage.model.appendMessage(message);
    stage.view.jumpToLatest();
    stage.turn(500);
    constexpr double seconds = 8;
    const double cpu = processCpu();
    const double started = bench::now();
    int piece = 0;
    QEventLoop loop;
    QTimer pace;
    pace.setTimerType(Qt::PreciseTimer);
    QObject::connect(&pace, &QTimer::timeout, &loop, [&] {
        // A late timer makes up for the pieces it missed.
        for (; piece < (bench::now() - started) / 5; ++piece) {
            message.content += source.mid(piece * 5, 5);
            stage.model.updateMessage(message);
        }
        if (bench::now() > started + seconds * 1000)
            loop.quit();
    });
    pace.start(5);
    loop.exec();
    return 100 * (processCpu() - cpu) / (bench::now() - started);
}

/// Turns until every height is measured; the processor time it took, in milliseconds.
double measureAll(Stage& stage)
{
    const double cpu = processCpu();
    const double limit = bench::now() + 300000;
    qint64 total = -1;
    while (total != stage.view.document().total() && bench::now() < limit) {
        total = stage.view.document().total();
        stage.turn(1000);
    }
    return processCpu() - cpu;
}

/// Replies into a conversation without much else; the share of a core with two messages before, in percent.
double measureShort()
{
    Stage stage;
    const auto reportShare = [](const char* name, double share) {
        bench::report(name, share, "% of a core", "< 10");
        return share;
    };
    reportShare("transcript: 200 pieces/s, empty", streamingShare(stage));
    // A view that is full from the start: what a longer conversation is compared with.
    stage.model.setMessages(test::longConversation(2, messageLength));
    const double share = reportShare("transcript: 200 pieces/s, two messages", streamingShare(stage));
    const QString source = test::sampleConversation()[1].content + QStringLiteral("\n\n");
    stage.model.setMessages({});
    reportShare("transcript: 200 pieces/s, after 500 kB", streamingShare(stage, source.repeated(200)));
    stage.model.setMessages({});
    const QString code = QStringLiteral("```c\n") + QStringLiteral("int a = 1;\n").repeated(45000);
    reportShare("transcript: 200 pieces/s, in 500 kB of code", streamingShare(stage, code));
    stage.window.hide();
    return share;
}

/// @param shortShare what streaming into a short conversation takes.
void measureLong(double shortShare)
{
    std::vector<TranscriptMessage> messages = test::longConversation(messageCount, messageLength);
    double characters = 0;
    for (const TranscriptMessage& message : messages)
        characters += static_cast<double>(message.content.size());
    bench::report("transcript: characters", characters / 1e6, "M", "");
    Stage stage;
    const double started = bench::now();
    stage.model.setMessages(std::move(messages));
    stage.waitForFrame();
    bench::report("transcript: open 10,000 messages", bench::now() - started, "ms", "< 1000");

    const double wheelFrame = stage.worstFrame(600, [&](int) { stage.wheel(3); });
    bench::report("transcript: worst frame, wheel", wheelFrame, "ms", "< 50");
    std::mt19937 random(7);
    const double jumpFrame = stage.worstFrame(200, [&](int) {
        Q_EMIT stage.view.scrollBar().moved(static_cast<double>(random() % 10000) / 10000.0);
    });
    bench::report("transcript: worst frame, jumps", jumpFrame, "ms", "< 50");

    bench::report("transcript: measuring everything", measureAll(stage), "ms", "");
    stage.view.jumpToLatest();
    const double share = streamingShare(stage);
    bench::report("transcript: 200 pieces/s, 10,000 messages", share, "% of a core", "< 10");
    bench::report("transcript: 200 pieces/s, 10,000 over two", share / shortShare, "x", "<= 1.2");
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QUICK_BACKEND", "software");
    if (!qEnvironmentVariableIsSet("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    measureLong(measureShort());
    return 0;
}
