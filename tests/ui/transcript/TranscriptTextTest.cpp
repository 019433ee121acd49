#include "support/Await.h"
#include "ui/transcript/CodeHighlighter.h"
#include "ui/transcript/TranscriptStage.h"

#include <QAccessible>
#include <QClipboard>
#include <QDir>
#include <QGuiApplication>
#include <QMimeData>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>

#include <array>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace varnel;
using namespace varnel::test;

namespace {

struct Stage : QObject, TranscriptStage
{
    ulong lastPress = 0; ///< when a button was pressed twice

    explicit Stage(std::vector<TranscriptMessage> messages)
        : TranscriptStage(std::move(messages))
    {}
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::MouseButtonDblClick)
            lastPress = static_cast<QMouseEvent*>(event)->timestamp();
        return false;
    }
    QString selectAll(int message)
    {
        TranscriptSelection selection;
        selection.selectMessage(view.document(), message);
        return selectedText(view.document(), selection).plain;
    }
    std::optional<TargetRef> target(TargetKind kind)
    {
        for (const TargetRef ref : view.targetsInView()) {
            if (view.targetAt(ref)->kind == kind)
                return ref;
        }
        return std::nullopt;
    }
    QPoint placeOf(TargetRef ref)
    {
        const qint64 top =
            view.document().topOf(ref.row) - view.document().topOf(view.rowsInView().front().ref);
        const QPointF centre = view.targetAt(ref)->rects.front().center();
        return (centre + QPointF(0, view.rowsInView().front().y + static_cast<qreal>(top))).toPoint();
    }
};

int openDescriptors()
{
    return static_cast<int>(
        QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::AllEntries | QDir::System).size());
}

/// Tells whether anybody opened something in a folder, however briefly.
class OpenWatch
{
public:
    explicit OpenWatch(const QString& folder)
        : m_watch(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
    {
        if (inotify_add_watch(m_watch, qPrintable(folder), IN_OPEN) < 0)
            qFatal("the folder cannot be watched");
    }
    OpenWatch(const OpenWatch&) = delete;
    OpenWatch& operator=(const OpenWatch&) = delete;
    OpenWatch(OpenWatch&&) = delete;
    OpenWatch& operator=(OpenWatch&&) = delete;
    ~OpenWatch() { close(m_watch); }

    bool sawOne() const
    {
        std::array<char, 4096> events{};
        return read(m_watch, events.data(), events.size()) > 0;
    }

private:
    int m_watch;
};

/// Replies that try to have `url` and `file` opened, and others made to be slow.
std::vector<TranscriptMessage> hostileMessages(const QString& url, const QString& file)
{
    const QString images = QStringLiteral("![i](%1) ![r][ref] <img src=\"%1\"> ![f](file://%2) ![p](%2)\n\n"
                                          "|![t](%1)|\n|-|\n|<img src='%1'>|\n\n> - # ![h](%1)\n\n"
                                          "<style>@import url(%1)</style><link href=\"%1\">\n\n[ref]: %1\n");
    const auto message = [](const char* id, const QString& text) { return reply(QLatin1String(id), text); };
    std::vector<TranscriptMessage> messages{
        message("images", images.arg(url, file)),
        message("brackets", QString(100000, QLatin1Char('['))),
        message("quotes", QString(100000, QLatin1Char('>'))),
        message("bidi",
                QStringLiteral("\u202Egnp.exe\u202C \u2066\u2067\u0001\u001B[31m\u009B ").repeated(500)),
        message("word", QString(1000000, QLatin1Char('x'))),
        message("code", QStringLiteral("```js\n") + QString(500000, QLatin1Char('"'))),
        message("table", QStringLiteral("|a").repeated(300) + QStringLiteral("\n") +
                             QStringLiteral("|-").repeated(300) + QStringLiteral("\n") +
                             QStringLiteral("|b").repeated(3000)),
        message("marks", QString::fromUcs4(U"a\u0301\u0302\u0303").repeated(20000)),
    };
    messages.push_back(prompt(QStringLiteral("prompt"), images.arg(url, file)));
    return messages;
}

} // namespace

class TranscriptTextTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void copiedTextReadsLikeTheReply_data()
    {
        QTest::addColumn<QString>("markdown");
        QTest::addColumn<QString>("plain");
        QTest::newRow("paragraphs") << "One *two*.\n\nThree" << "One two.\n\nThree";
        QTest::newRow("list") << "- a\n- b\n  1. c\n\nd" << "• a\n• b\n  1. c\n\nd";
        QTest::newRow("tasks") << "- [x] a\n- [ ] b" << "☑ a\n☐ b";
        QTest::newRow("code") << "```c\nint a;\n\n\tint b;\n```\nend" << "int a;\n\n\tint b;\n\nend";
        QTest::newRow("table") << "|a|b|\n|-|-|\n|c||" << "a\tb\nc\t";
        const QString line = QStringLiteral("0123456789").repeated(700);
        QTest::newRow("over-long line")
            << QStringLiteral("```\n%1\nb\n```").arg(line) << line + QStringLiteral("\nb");
        const QString words = QStringLiteral("word ").repeated(4000) + QStringLiteral("end");
        QTest::newRow("over-long paragraph") << words << words;
        QTest::newRow("many lines") << QStringLiteral("```\n%1```").arg(QStringLiteral("x\n").repeated(100))
                                    << QStringLiteral("x\n").repeated(99) + QLatin1Char('x');
    }
    void copiedTextReadsLikeTheReply()
    {
        QFETCH(QString, markdown);
        QFETCH(QString, plain);
        Stage stage({reply(QStringLiteral("r"), markdown)});
        QCOMPARE(stage.selectAll(0), plain);
    }

    void promptsAreCopiedAsTyped()
    {
        const QString typed =
            QStringLiteral("line *one*\n\n  ```two") + QStringLiteral("\nmore").repeated(3000);
        Stage stage({prompt(QStringLiteral("p"), typed)});
        QCOMPARE(stage.selectAll(0), typed);
    }

    void theClipboardGetsTextAndHarmlessHtml()
    {
        Stage stage({reply(QStringLiteral("r"), QStringLiteral("A **b** <img src=x> [l](https://e.org) "
                                                               "[m](javascript:x)\n\n```\n<b>\n```"))});
        stage.view.forceActiveFocus();
        QTest::keyClick(&stage.window, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(&stage.window, Qt::Key_C, Qt::ControlModifier);
        const QMimeData* const data = QGuiApplication::clipboard()->mimeData();
        QCOMPARE(data->text(), QStringLiteral("A b <img src=x> l m\n\n<b>"));
        QVERIFY(data->html().contains(QStringLiteral("<strong>b</strong> &lt;img")));
        QVERIFY(data->html().contains(QStringLiteral("https://e.org")));
        QVERIFY(!data->html().contains(QStringLiteral("javascript")));
        QVERIFY(data->html().contains(QStringLiteral("<pre><code>&lt;b&gt;</code></pre>")));
    }

    void aSelectionStaysWhileTheReplyGrows()
    {
        TranscriptMessage message =
            reply(QStringLiteral("r"), QStringLiteral("First words here.\n\nSecond words"));
        message.streaming = true;
        Stage stage({message});
        const QPoint start(150, 36);
        QTest::mousePress(&stage.window, Qt::LeftButton, {}, start);
        QTest::mouseMove(&stage.window, QPoint(190, 72));
        QTest::mouseRelease(&stage.window, Qt::LeftButton, {}, QPoint(190, 72));
        const QString selected = stage.view.selectedPlainText();
        QVERIFY(selected.contains(QStringLiteral("here.\n\nSec")));
        for (int i = 0; i < 20; ++i) {
            message.content += QStringLiteral(" and on\n\nNext %1").arg(i);
            stage.model.updateMessage(message);
            QCOMPARE(stage.view.selectedPlainText(), selected);
        }
    }

    void wordsAndParagraphsAreTakenWhole()
    {
        Stage stage({reply(QStringLiteral("r"), QStringLiteral("First words here.\n\nSecond"))});
        const QPoint point(150 + 50, 36);
        stage.view.installEventFilter(&stage);
        QTest::mouseDClick(&stage.window, Qt::LeftButton, {}, point);
        QCOMPARE(stage.view.selectedPlainText(), QStringLiteral("words"));
        // The test library keeps clicks apart in time; the third is to follow the second.
        QMouseEvent third(QEvent::MouseButtonPress, point, stage.window.mapToGlobal(point), Qt::LeftButton,
                          Qt::LeftButton, {});
        third.setTimestamp(stage.lastPress + 10);
        QCoreApplication::sendEvent(&stage.view, &third);
        QCOMPARE(stage.view.selectedPlainText(), QStringLiteral("First words here."));
    }

    void onlyWebAndMailLinksOpenAndOnlyOnAClick()
    {
        Stage stage(
            {reply(QStringLiteral("r"), QStringLiteral("[a](https://e.org/x) [b](file:///etc/passwd) "
                                                       "[c](javascript:x) ![d](http://e.org/i.png)"))});
        QSignalSpy opened(&stage.view, &TranscriptView::linkActivated);
        const auto targets = stage.view.targetsInView();
        QStringList shown;
        for (std::size_t i = 0; i < 4; ++i) {
            QTest::mouseMove(&stage.window, stage.placeOf(targets[i]));
            shown.append(stage.view.hoveredLink());
            QTest::mouseClick(&stage.window, Qt::LeftButton, {}, stage.placeOf(targets[i]));
        }
        QCOMPARE(shown, QStringList({QStringLiteral("https://e.org/x"), QStringLiteral("file:///etc/passwd"),
                                     QStringLiteral("javascript:x"), QStringLiteral("http://e.org/i.png")}));
        QCOMPARE(opened.size(), 2);
        QCOMPARE(opened[0][0].toUrl(), QUrl(QStringLiteral("https://e.org/x")));
        QCOMPARE(opened[1][0].toUrl(), QUrl(QStringLiteral("http://e.org/i.png")));
    }

    void everythingIsReachedByTheKeyboard()
    {
        Stage stage(
            {reply(QStringLiteral("r"), QStringLiteral("[a](https://e.org)\n\n```File: src/a.c\nx\n```"))});
        QSignalSpy opened(&stage.view, &TranscriptView::linkActivated);
        QSignalSpy writes(&stage.view, &TranscriptView::writeRequested);
        QSignalSpy actions(&stage.view, &TranscriptView::actionRequested);
        stage.view.forceActiveFocus(Qt::TabFocusReason);
        std::vector<TargetKind> visited;
        while (stage.view.attention().focused && visited.size() < 20) {
            visited.push_back(stage.view.targetAt(*stage.view.attention().focused)->kind);
            QTest::keyClick(&stage.window, Qt::Key_Return);
            QTest::keyClick(&stage.window, Qt::Key_Tab);
        }
        using enum TargetKind;
        QCOMPARE(visited, std::vector<TargetKind>(
                              {Link, WriteCode, CopyCode, Action, Action, Action, Action, Action}));
        QCOMPARE(opened.size(), 1);
        QCOMPARE(writes.size(), 1);
        QCOMPARE(writes[0][1].toString(), QStringLiteral("src/a.c"));
        QCOMPARE(actions.size(), 4); // copying is done here
        QCOMPARE(QGuiApplication::clipboard()->text(), stage.model.message(0).content);
    }

    void readersWithoutAScreenFindMessagesAndTheirButtons()
    {
        Stage stage({prompt(QStringLiteral("p"), QStringLiteral("Hello")),
                     reply(QStringLiteral("r"), QStringLiteral("See [a](https://e.org)."))});
        QSignalSpy opened(&stage.view, &TranscriptView::linkActivated);
        QAccessibleInterface* const list = QAccessible::queryAccessibleInterface(&stage.view);
        QVERIFY(list);
        QCOMPARE(list->role(), QAccessible::List);
        QCOMPARE(list->childCount(), 2);
        QAccessibleInterface* const message = list->child(1);
        QCOMPARE(message->text(QAccessible::Name), QStringLiteral("Reply:\nSee a."));
        QCOMPARE(list->indexOfChild(message), 1);
        QAccessibleInterface* const link = message->child(0);
        QCOMPARE(link->role(), QAccessible::Link);
        QCOMPARE(link->text(QAccessible::Name), QStringLiteral("https://e.org"));
        QVERIFY(message->rect().contains(link->rect()));
        QCOMPARE(list->childAt(link->rect().center().x(), link->rect().center().y()), message);
        link->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        QCOMPARE(opened.size(), 1);
        stage.model.setMessages({});
        QVERIFY(!message->isValid());
        QCOMPARE(list->childCount(), 0);
    }

    void aFinishedReplyIsAnnouncedOnce()
    {
        TranscriptMessage message = reply(QStringLiteral("r"), QStringLiteral("One"));
        message.streaming = true;
        Stage stage({message});
        QSignalSpy finished(&stage.view, &TranscriptView::replyFinished);
        message.content += QStringLiteral(" *two*");
        stage.model.updateMessage(message);
        message.streaming = false;
        stage.model.updateMessage(message);
        stage.model.updateMessage(message);
        QCOMPARE(finished.size(), 1);
        QCOMPARE(finished[0][1].toString(), QStringLiteral("One two"));
    }

    void aHostileTranscriptOpensNothing()
    {
        QTemporaryDir folder;
        const QString fifo = folder.filePath(QStringLiteral("fifo"));
        QCOMPARE(mkfifo(qPrintable(fifo), 0600), 0);
        const OpenWatch watch(folder.path());
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost));
        const QString url = QStringLiteral("http://127.0.0.1:%1/x.png").arg(server.serverPort());
        const std::vector<TranscriptMessage> messages = hostileMessages(url, fifo);
        Stage stage({});
        stage.window.grabWindow();
        const int before = openDescriptors();
        stage.model.setMessages(messages);
        for (int page = 0; page < 40; ++page) {
            stage.view.scrollBar().moved(page / 39.0);
            stage.view.rowsInView();
            stage.window.grabWindow();
        }
        // The same as it comes in pieces, each of which is shown, and as it is copied.
        TranscriptMessage streamed = reply(QStringLiteral("streamed"), {});
        streamed.streaming = true;
        stage.model.appendMessage(streamed);
        for (qsizetype size = 1; size <= messages.front().content.size(); size += 3) {
            streamed.content = messages.front().content.left(size);
            stage.model.updateMessage(streamed);
            stage.window.grabWindow();
        }
        QVERIFY(!stage.selectAll(stage.model.count() - 1).isEmpty());
        QTest::qWait(100);
        QVERIFY(!server.hasPendingConnections());
        QVERIFY(!watch.sawOne());
        QCOMPARE(openDescriptors(), before);
        // Both would have noticed.
        QFile image(fifo);
        QVERIFY(image.open(QIODevice::ReadWrite));
        QVERIFY(watch.sawOne());
        QTcpSocket caller;
        caller.connectToHost(QHostAddress::LocalHost, server.serverPort());
        QVERIFY(waitUntil([&] { return server.hasPendingConnections(); }));
    }

    void whatDeceivesIsShown()
    {
        QCOMPARE(harmless(QStringLiteral("a\u202Eb\u0007"), false), QStringLiteral("a\uFFFDb\u2407"));
        QCOMPARE(harmless(QStringLiteral("if (\u2066x\u200B)"), true), QStringLiteral("if (\uFFFDx\uFFFD)"));
        QCOMPARE(harmless(QStringLiteral("שלום \u200Fx\n\ty"), false), QStringLiteral("שלום \u200Fx\n\ty"));
    }

    void codeIsToldApart_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("marks"); // a letter for each character's kind, a dot for none
        QTest::newRow("c") << "cpp" << "int a = f(0x1F); // é \"x\"" << "kkk.....n.####...cccccccc";
        QTest::newRow("escape") << "js" << "x = \"a\\\"b\" + 'c'" << "....ssssss...sss";
        QTest::newRow("block comment") << "c" << "a /* int\nint */ b" << "..cccccc\ncccccc..";
        QTest::newRow("triple quotes") << "py" << "x = '''a\nb''' # c" << "....ssss\nssss.ccc";
        QTest::newRow("shell") << "bash" << "echo $HOME#a # b" << "kkkk.nnnnn...ccc";
        QTest::newRow("json") << "json" << "{\"a\": \"b\", \"c\": true}" << ".nnn..sss..nnn..kkkk.";
        QTest::newRow("markup") << "html" << "<a b=\"c\">d</a>" << "kk.n.sssk.kkkk";
        QTest::newRow("diff") << "diff" << "-a\n+b\n c" << "rr\nii\n..";
        QTest::newRow("sql") << "SQL" << "Select 1 -- x" << "kkkkkk.#.cccc";
        QTest::newRow("unknown") << "klingon" << "int a" << ".....";
    }
    void codeIsToldApart()
    {
        QFETCH(QString, language);
        QFETCH(QString, code);
        QFETCH(QString, marks);
        const CodeHighlighter highlighter(language);
        quint8 state = 0;
        QStringList found;
        for (const QString& line : code.split(QLatin1Char('\n'))) {
            QString drawn(line.size(), QLatin1Char('.'));
            for (const CodeToken& token : highlighter.tokens(line, state)) {
                const QChar mark = QLatin1String("ks#cnir").at(static_cast<qsizetype>(token.kind));
                drawn.replace(token.start, token.length, QString(token.length, mark));
            }
            found.append(drawn);
        }
        QCOMPARE(found.join(QLatin1Char('\n')), marks);
    }

    void theRowOverAReplySaysHowLongItTook()
    {
        using namespace std::chrono_literals;
        const TranscriptMessage::TimePoint start{};
        TranscriptMessage message;
        message.streaming = true;
        message.waitingSince = start;
        QCOMPARE(waitingText(message, start + 900ms), QString());
        QCOMPARE(waitingText(message, start + 1s), QStringLiteral("1 s"));
        message.waitingLabel = QStringLiteral("Loading model");
        QCOMPARE(waitingText(message, start + 75s), QStringLiteral("Loading model… 1 min 15 s"));
        message.thinking = QStringLiteral("hm");
        message.thinkingSince = start;
        QCOMPARE(thinkingText(message, start + 12s), QStringLiteral("Thinking… 12 s"));
        message.thinkingTook = 12s;
        QCOMPARE(thinkingText(message, start + 99s), QStringLiteral("Thought for 12 s"));
    }
};

QTEST_MAIN(TranscriptTextTest)
#include "TranscriptTextTest.moc"
