#include "practice_host/HttpServer.h"
#include "support/Await.h"
#include "support/ProgramRun.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

using namespace varnel::test;
using varnel::practice::HttpExchange;
using varnel::practice::HttpServer;

namespace {

using Exchange = std::shared_ptr<HttpExchange>;

const QByteArray usage = "varnel ctl tags\nvarnel ctl chat <model> <prompt>\n";

QByteArray line(const QByteArray& content, bool done = false)
{
    return R"({"model":"m","message":{"role":"assistant","content":")" + content + R"("},"done":)" +
           (done ? "true" : "false") + "}\n";
}

QByteArray pseudoTerminalOutput(int master)
{
    QByteArray text;
    char buffer[4096];
    for (ssize_t count = 0; (count = ::read(master, buffer, sizeof buffer)) > 0;)
        text.append(buffer, count);
    return text;
}

} // namespace

class CtlTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void usageGoesToStandardOutput()
    {
        for (const QStringList& arguments : {QStringList{}, QStringList{QStringLiteral("Tags")}}) {
            ProgramRun run;
            QCOMPARE(run.run(QStringList{QStringLiteral("ctl")} + arguments), 1);
            QCOMPARE(run.output(), usage);
            QCOMPARE(run.errors(), "");
        }
    }

    void tagsAreListedInTheServersOrder()
    {
        QByteArray target;
        HttpServer server([&](const Exchange& exchange) {
            target = exchange->method() + ' ' + exchange->target();
            exchange->reply(
                200, "application/json",
                R"({"models":[{"name":"b:1","size":1,"x":[]},{"name":"a\u001b","details":null}]})");
        });
        server.listen();
        ProgramRun run;
        run.setVariable("LC_ALL", QStringLiteral("C"));
        run.setVariable("VARNEL_OLLAMA_URL", server.url().toString() + QStringLiteral("/prefix/"));
        QCOMPARE(run.run({QStringLiteral("ctl"), QStringLiteral("tags")}), 0);
        QCOMPARE(run.output(), "b:1\na\x1b\n");
        QCOMPARE(run.errors(), "");
        QCOMPARE(target, "GET /prefix/api/tags");
    }

    void chatSendsOneExactRequest_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("model");
        QTest::addColumn<QString>("prompt");
        const QString ready = QStringLiteral("Reply with the single word ready.");
        QTest::newRow("nothing") << QStringList{} << QStringLiteral("qwen2.5:14b") << ready;
        QTest::newRow("model") << QStringList{QStringLiteral("llama3")} << QStringLiteral("llama3") << ready;
        QTest::newRow("words") << QStringList{QStringLiteral("llama3"), QStringLiteral("say"),
                                              QStringLiteral("h\"i é")}
                               << QStringLiteral("llama3") << QStringLiteral("say h\"i é");
        QTest::newRow("empty word") << QStringList{QStringLiteral("llama3"), QString()}
                                    << QStringLiteral("llama3") << ready;
    }
    void chatSendsOneExactRequest()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, model);
        QFETCH(QString, prompt);
        QByteArray head;
        QJsonObject body;
        HttpServer server([&](const Exchange& exchange) {
            head = exchange->method() + ' ' + exchange->target() + ' ' + exchange->header("Content-Type");
            body = QJsonDocument::fromJson(exchange->body()).object();
            exchange->reply(200, "application/x-ndjson", line("ok", true));
        });
        server.listen();
        ProgramRun run;
        run.setVariable("VARNEL_OLLAMA_URL", server.url().toString());
        QCOMPARE(run.run(QStringList{QStringLiteral("ctl"), QStringLiteral("chat")} + arguments), 0);
        QCOMPARE(run.output(), "ok\n");
        QCOMPARE(head, "POST /api/chat application/json");
        const QJsonObject expected{
            {QStringLiteral("model"), model},
            {QStringLiteral("messages"),
             QJsonArray{QJsonObject{{QStringLiteral("role"), QStringLiteral("user")},
                                    {QStringLiteral("content"), prompt}}}},
            {QStringLiteral("stream"), true},
            {QStringLiteral("options"), QJsonObject{{QStringLiteral("temperature"), 0.2},
                                                    {QStringLiteral("num_ctx"), 2048},
                                                    {QStringLiteral("num_predict"), 32}}},
            {QStringLiteral("keep_alive"), QStringLiteral("5m")},
        };
        QCOMPARE(body, expected);
        QCOMPARE(server.acceptedConnections(), 1);
    }

    void replyIsVisiblePieceByPiece()
    {
        Exchange open;
        HttpServer server([&](const Exchange& exchange) {
            open = exchange;
            exchange->beginReply(200, {{"Content-Type", "application/x-ndjson"}});
            exchange->sendChunk(R"({"message":{"thinking":"hm\u0000"}})"
                                "\r\n");
        });
        server.listen();
        ProgramRun run;
        run.setVariable("VARNEL_OLLAMA_URL", server.url().toString());
        run.start({QStringLiteral("ctl"), QStringLiteral("chat"), QStringLiteral("m")});
        QVERIFY(waitUntil([&] { return run.output() == QByteArrayView("hm\0", 3); }));
        open->sendChunk(line("\\u001b[31m"));
        QVERIFY(waitUntil([&] { return run.output().endsWith("\x1b[31m"); }));
        open->sendChunk(line(" end", true));
        QVERIFY(run.wait());
        QCOMPARE(run.output(), QByteArray("hm\0\x1b[31m end\n", 13));
        QCOMPARE(run.errors(), "");
    }

    void failuresAreOneTextAndStatusOne_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QByteArray>("output");
        QTest::addColumn<QByteArray>("errors");
        QTest::newRow("JSON") << 404 << QByteArray(R"({"error":"model 'm' not found"})") << QByteArray()
                              << QByteArray("model 'm' not found\n");
        QTest::newRow("HTML") << 502 << QByteArray("<h1>Bad</h1>") << QByteArray()
                              << QByteArray("Ollama is not reachable. <h1>Bad</h1>\n");
        QTest::newRow("binary") << 500 << QByteArray("\xff\xfe") << QByteArray()
                                << QByteArray("Ollama is not reachable. HTTP 500\n");
        QTest::newRow("after text") << 200 << line("partly") + R"({"error":" out of memory\n"})"
                                    << QByteArray("partly") << QByteArray("out of memory\n");
        QTest::newRow("no text") << 200 << line("", true) << QByteArray()
                                 << QByteArray("The model finished without a reply.\n");
        QTest::newRow("garbage") << 200 << QByteArray("<html>") << QByteArray()
                                 << QByteArray("The connection closed before the model finished.\n");
    }
    void failuresAreOneTextAndStatusOne()
    {
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        HttpServer server([&](const Exchange& exchange) { exchange->reply(status, "text/plain", body); });
        server.listen();
        ProgramRun run;
        run.setVariable("VARNEL_OLLAMA_URL", server.url().toString());
        QCOMPARE(run.run({QStringLiteral("ctl"), QStringLiteral("chat"), QStringLiteral("m"),
                          QStringLiteral("p")}),
                 1);
        QTEST(run.output(), "output");
        QTEST(run.errors(), "errors");
    }

    void savedConnectionIsUsedUnlessTheVariableIsAUrl()
    {
        HttpServer server([](const Exchange& exchange) {
            exchange->reply(200, "application/json", R"({"models":[{"name":"saved"}]})");
        });
        server.listen();
        const QByteArray connection = QByteArray(R"({'mode':'%','sshHost':'','sshUser':'','localPort':%,)"
                                                 R"('remoteBind':'','directURL':' %'})")
                                          .replace('\'', "\\\"");
        const auto preferences = [&](const QByteArray& mode, const QByteArray& port, const QByteArray& url) {
            QByteArray text = connection;
            for (const QByteArray& value : {mode, port, url})
                text.replace(text.indexOf('%'), 1, value);
            return "[General]\nvarnel.connection=\"" + text + "\"\n";
        };
        ProgramRun run;
        const QStringList tags{QStringLiteral("ctl"), QStringLiteral("tags")};
        run.setPreferences(preferences("direct", "1", server.url().toEncoded()));
        for (const char* const value : {"", "not a url", "ftp://x", "http://", " "}) {
            run.setVariable("VARNEL_OLLAMA_URL", QString::fromLatin1(value));
            QCOMPARE(run.run(tags), 0);
            QCOMPARE(run.output(), "saved\n");
            QCOMPARE(run.errors(), "");
        }
        run.setPreferences(preferences("sshTunnel", QByteArray::number(server.port()), "x"));
        QCOMPARE(run.run(tags), 0);

        run.setPreferences(preferences("sshTunnel", "70000", "x"));
        QCOMPARE(run.run(tags), 1);
        QCOMPARE(run.errors(),
                 "Ollama is not reachable. Could not connect to 127.0.0.1 port 65535: Connection refused.\n");

        // What cannot be read is said, because the command then talks to another host than the user set.
        run.setVariable("VARNEL_OLLAMA_URL", server.url().toString());
        run.setPreferences(QByteArray("\0\x01garbage\xff", 10));
        QCOMPARE(run.run(tags), 0);
        QCOMPARE(run.errors(), "");
        run.setVariable("VARNEL_OLLAMA_URL", QString());
        run.setPreferences(preferences("sideways", "1", "x"));
        run.run(tags);
        QVERIFY2(run.errors().contains("mode: unknown value \"sideways\""), run.errors().constData());
    }

    void interruptEndsItAtOnceAndClosesTheConnection()
    {
        Exchange open;
        HttpServer server([&](const Exchange& exchange) { open = exchange; });
        server.listen();
        ProgramRun run;
        run.setVariable("VARNEL_OLLAMA_URL", server.url().toString());
        run.start({QStringLiteral("ctl"), QStringLiteral("chat"), QStringLiteral("m")});
        QVERIFY(waitUntil([&] { return open != nullptr; }));
        ::kill(static_cast<pid_t>(run.process().processId()), SIGINT);
        QVERIFY(run.wait());
        QVERIFY(waitUntil([&] { return server.openConnections() == 0; }));
        QCOMPARE(run.errors(), "");
    }

    void outputThatTakesNothingIsReported()
    {
        HttpServer server(
            [](const Exchange& exchange) { exchange->reply(200, "application/json", line("text", true)); });
        server.listen();
        ProgramRun run;
        run.setVariable("VARNEL_OLLAMA_URL", server.url().toString());
        run.process().setStandardOutputFile(QStringLiteral("/dev/full"));
        QCOMPARE(run.run({QStringLiteral("ctl"), QStringLiteral("chat"), QStringLiteral("m")}), 1);
        QCOMPARE(run.errors(), "The output could not be written: No space left on device.\n");
    }

    void goneReaderEndsItThoughTheSignalIsBlocked()
    {
        ProgramRun run;
        run.process().setChildProcessModifier([] {
            sigset_t broken = {};
            sigemptyset(&broken);
            sigaddset(&broken, SIGPIPE);
            sigprocmask(SIG_BLOCK, &broken, nullptr);
            int ends[2] = {};
            if (::pipe(ends) == 0 && ::dup2(ends[1], 1) == 1)
                ::close(ends[0]);
        });
        run.start({QStringLiteral("ctl")});
        QVERIFY(run.wait());
        QCOMPARE(run.process().exitStatus(), QProcess::CrashExit);
        QCOMPARE(run.process().exitCode(), SIGPIPE);
    }

    void closedStreamsAreNotTakenForOthers_data()
    {
        QTest::addColumn<int>("first");
        QTest::newRow("output") << 1;
        QTest::newRow("input and output") << 0;
    }
    void closedStreamsAreNotTakenForOthers()
    {
        QFETCH(const int, first);
        HttpServer server(
            [](const Exchange& exchange) { exchange->reply(200, "application/json", line("text", true)); });
        server.listen();
        ProgramRun run;
        run.setVariable("VARNEL_OLLAMA_URL", server.url().toString());
        run.process().setChildProcessModifier([first] {
            for (int descriptor = first; descriptor <= 1; ++descriptor)
                ::close(descriptor);
        });
        QCOMPARE(run.run({QStringLiteral("ctl"), QStringLiteral("chat"), QStringLiteral("m")}), 1);
        QCOMPARE(run.errors(), "The output could not be written: Bad file descriptor.\n");
    }

    void terminalSeesNoControlCharacters()
    {
        HttpServer server([](const Exchange& exchange) {
            exchange->reply(200, "application/json",
                            line(R"(a\u001b]0;x\u0007\u009b\u007f\rb\r\n\tc)", true));
        });
        server.listen();
        const int master = ::posix_openpt(O_RDWR | O_NOCTTY);
        QVERIFY(master >= 0 && ::grantpt(master) == 0 && ::unlockpt(master) == 0);
        const QByteArray terminal = ::ptsname(master);
        ProgramRun run;
        run.setVariable("VARNEL_OLLAMA_URL", server.url().toString());
        run.process().setChildProcessModifier(
            [terminal] { ::dup2(::open(terminal.constData(), O_RDWR | O_NOCTTY), 1); });
        QCOMPARE(run.run({QStringLiteral("ctl"), QStringLiteral("chat"), QStringLiteral("m")}), 0);
        QCOMPARE(QString::fromUtf8(pseudoTerminalOutput(master)),
                 QStringLiteral(
                     "a\u241b]0;x\u2407\ufffd\u2421\u240db\r\n\tc\r\n")); // the terminal adds its own CR
        ::close(master);
    }

    void otherModes()
    {
        ProgramRun run;
        run.setVariable("VARNEL_ASKPASS", QStringLiteral("1"));
        QCOMPARE(run.run({QStringLiteral("ctl")}), 1); // no service, so no password; never the command line
        QCOMPARE(run.output() + run.errors(), "");

        run.setVariable("VARNEL_ASKPASS", QStringLiteral("01"));
        QCOMPARE(run.run({QStringLiteral("ctl")}), 1);
        QCOMPARE(run.output(), usage);

        QCOMPARE(run.run({QStringLiteral("--foo"), QStringLiteral("ctl"), QStringLiteral("tags")}), 1);
        QCOMPARE(run.output(), "");
        QCOMPARE(run.errors().count('\n'), 1);
        QVERIFY(run.errors().contains("no display"));

        // Nor is there one where nobody answers.
        for (const char* const name : {":987", "unix:987.0", "localhost:987", "none", ":"}) {
            run.setVariable("WAYLAND_DISPLAY", QStringLiteral("nope"));
            run.setVariable("DISPLAY", QString::fromLatin1(name));
            QCOMPARE(run.run({}), 1);
            QCOMPARE(run.errors().count('\n'), 1);
            QVERIFY(run.errors().contains("no display"));
        }

        run.setVariable("XCTestConfigurationFilePath", QString());
        run.start({});
        QVERIFY(!run.wait(std::chrono::milliseconds(300)));
        run.process().terminate();
        QVERIFY(run.wait());
        QCOMPARE(run.output() + run.errors(), "");
    }
};

QTEST_GUILESS_MAIN(CtlTest)
#include "CtlTest.moc"
