#include "practice_host/PracticeHost.h"
#include "practice/RawClient.h"
#include "practice_host/ChatScript.h"
#include "practice_host/ReplyTexts.h"
#include "support/Await.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QTest>

using namespace varnel;
using namespace varnel::practice;
using namespace varnel::test;
using namespace std::chrono_literals;

namespace {

QJsonObject parsed(const QByteArray& text)
{
    return QJsonDocument::fromJson(text).object();
}

QByteArray chatBody(const QByteArray& model, const QByteArray& more = {}, const QByteArray& messages = {})
{
    return R"({"model":")" + model + R"(","messages":[{"role":"user","content":"Good morning"})" + messages +
           "]" + more + "}";
}

/// A further message of the user, behind a comma.
QByteArray userMessage(const QByteArray& content, const QByteArray& images = {})
{
    return ",{\"role\":\"user\",\"content\":\"" + content + "\",\"images\":[" + images + "]}";
}

/// What all lines carry under that key of their message.
QString textOf(const RawReply& reply, const QString& key = QStringLiteral("content"))
{
    QString text;
    for (const QByteArray& line : reply.lines())
        text += parsed(line).value(u"message").toObject().value(key).toString();
    return text;
}

} // namespace

class PracticeHostTest : public QObject
{
    Q_OBJECT

    PracticeHost m_host{{.piece = 0ms, .slowStart = 20ms, .slowPiece = 1ms}};

    RawReply ask(const QByteArray& method, const QByteArray& target, const QByteArray& body = {},
                 const QByteArray& headers = {})
    {
        RawClient client(m_host.port());
        client.request(method, target, body, headers);
        return client.reply();
    }
    QStringList installed()
    {
        QStringList names;
        const QJsonArray models = parsed(ask("GET", "/api/tags").body).value(u"models").toArray();
        for (const auto& model : models)
            names.append(model.toObject().value(u"name").toString());
        return names;
    }

private Q_SLOTS:
    void initTestCase() { m_host.listen(); }

    void endpointsAnswer_data()
    {
        QTest::addColumn<QByteArray>("request");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("part");
        const auto row = [](const char* request, const char* body, int status, const char* part) {
            QTest::addRow("%s %s", request, body)
                << QByteArray(request) << QByteArray(body) << status << QByteArray(part);
        };
        row("GET /", "", 200, "practice host");
        row("GET /api/version", "", 200, "\"version\":\"");
        row("GET /api/tags", "", 200, "\"parameter_size\":\"70.6B\"");
        row("GET //api/tags", "", 307, "");
        row("GET /api/other", "", 404, "404 page not found");
        row("GET /api/chat", "", 405, "405 method not allowed");
        row("POST /api/chat", "{\"model\":", 400, "{\"error\":\"");
        row("POST /api/chat", R"({"messages":[]})", 400, "{\"error\":\"model: ");
        row("POST /api/chat", R"({"model":"practice-none"})", 404,
            "{\"error\":\"model 'practice-none' not found, try pulling it first\"}");
        row("POST /api/chat", R"({"model":"practice-vision","tools":[{}]})", 400, "does not support tools");
        row("POST /api/chat",
            R"({"model":"practice-tools","messages":[{"role":"assistant","tool_calls":[{"function":{"arguments":"{}"}}]}]})",
            400, "messages[0].tool_calls[0].function.arguments");
        row("POST /api/chat", R"({"model":"practice-html"})", 502, "<html>");
        row("POST /api/chat", R"({"model":"practice-busy"})", 503,
            "{\"error\":\"server busy, please try again\"}");
        row("POST /api/chat", R"({"model":"practice-error","stream":false})", 500, "{\"error\":\"");
        row("DELETE /api/delete", R"({"model":"none"})", 404, "{\"error\":\"model 'none' not found\"}");
        row("POST /api/pull", R"({"name":"practice-none"})", 200, "{\"error\":\"pull model manifest");
        row("POST /api/web_search", R"({"query":"x"})", 401, "{\"error\":\"unauthorized\"}");
    }
    void endpointsAnswer()
    {
        QFETCH(QByteArray, request);
        QFETCH(QByteArray, body);
        const qsizetype blank = request.indexOf(' ');
        const RawReply reply = ask(request.first(blank), request.sliced(blank + 1), body);
        QTEST(reply.status, "status");
        QFETCH(QByteArray, part);
        QVERIFY2(reply.body.contains(part), reply.body);
        QVERIFY(reply.complete);
    }

    void modelsAreListedAsRealHostsListThem()
    {
        const QJsonArray models = parsed(ask("GET", "/api/tags").body).value(u"models").toArray();
        QCOMPARE(models.size(), 18);
        for (const auto& model : models) {
            QVERIFY(model[u"name"].toString().startsWith(QLatin1String("practice-")));
            QCOMPARE(model[u"model"], model[u"name"]);
            QVERIFY(model[u"size"].toInteger() > 0);
            QCOMPARE(model[u"digest"].toString().size(), 64);
            QVERIFY(!model[u"details"][u"quantization_level"].toString().isEmpty());
        }
    }

    void repliesAreStreamedToTheirEnd_data()
    {
        QTest::addColumn<QString>("part");
        QTest::newRow("practice-chat") << "> Good morning";
        QTest::newRow("practice-thinking:14b") << "> Good morning";
        QTest::newRow("practice-markdown") << "|:--------|";
        QTest::newRow("practice-code") << "```python\n";
        QTest::newRow("practice-project") << "```path:greeter/words.py\ndef";
        QTest::newRow("practice-tools") << "No tools were offered";
        QTest::newRow("practice-long") << "## Section 12";
        QTest::newRow("practice-vision") << "No image arrived";
        QTest::newRow("practice-slow") << "> Good morning";
        QTest::newRow("practice-flood:500") << "flood";
    }
    void repliesAreStreamedToTheirEnd()
    {
        const RawReply reply = ask("POST", "/api/chat", chatBody(QTest::currentDataTag()));
        QCOMPARE(reply.status, 200);
        QCOMPARE(reply.headers.value("content-type"), "application/x-ndjson");
        QVERIFY(reply.complete);
        const QList<QByteArray> lines = reply.lines();
        QCOMPARE(lines.size(), reply.chunks.size());
        for (const QByteArray& line : lines) {
            QCOMPARE(parsed(line).value(u"model").toString(), QLatin1String(QTest::currentDataTag()));
            QCOMPARE(parsed(line).value(u"done"), QJsonValue(&line == &lines.last()));
        }
        QCOMPARE(parsed(lines.last()).value(u"done_reason").toString(), QStringLiteral("stop"));
        QCOMPARE(parsed(lines.last()).value(u"eval_count").toInteger(), lines.size() - 1);
        QFETCH(QString, part);
        QVERIFY2(textOf(reply).contains(part), reply.body);
        QVERIFY(textOf(reply).contains(practiceNote()));
        const bool thinks = QByteArray(QTest::currentDataTag()).contains("thinking");
        QCOMPARE(!textOf(reply, QStringLiteral("thinking")).isEmpty(), thinks);
        const QJsonArray loaded = parsed(ask("GET", "/api/ps").body).value(u"models").toArray();
        QCOMPARE(loaded.size(), 1);
        QVERIFY(
            QString::fromLatin1(QTest::currentDataTag()).startsWith(baseName(loaded[0][u"name"].toString())));
    }

    void aLimitOfPiecesEndsTheReply_data()
    {
        QTest::addColumn<QByteArray>("options");
        QTest::newRow("streamed") << QByteArray(R"(,"options":{"num_predict":2})");
        QTest::newRow("whole") << QByteArray(R"(,"options":{"num_predict":2},"stream":false)");
    }
    void aLimitOfPiecesEndsTheReply()
    {
        QFETCH(QByteArray, options);
        const RawReply reply = ask("POST", "/api/chat", chatBody("practice-chat", options));
        QCOMPARE(textOf(reply), QStringLiteral("This is "));
        QCOMPARE(parsed(reply.lines().last()).value(u"done_reason").toString(), QStringLiteral("length"));
    }

    void toolsAreAskedForAndTheirResultsUsed()
    {
        const QByteArray tools = R"(,"stream":false,"tools":[{"type":"function"}])";
        const auto call = [this, &tools](const QByteArray& messages) {
            const RawReply reply = ask("POST", "/api/chat", chatBody("practice-tools", tools, messages));
            return parsed(reply.body).value(u"message");
        };
        const QJsonValue search = call({})[u"tool_calls"][0][u"function"];
        QCOMPARE(search[u"name"].toString(), QStringLiteral("web_search"));
        QCOMPARE(search[u"arguments"][u"query"].toString(), QStringLiteral("Good morning"));
        const QJsonValue fetch =
            call(userMessage("Read https://example.org/a please"))[u"tool_calls"][0][u"function"];
        QCOMPARE(fetch[u"arguments"][u"url"].toString(), QStringLiteral("https://example.org/a"));
        const QJsonValue answer =
            call(R"(,{"role":"assistant","content":""},{"role":"tool","content":"found it"})");
        QVERIFY(answer[u"content"].toString().contains(QLatin1String("found it")));
        QVERIFY(answer[u"tool_calls"].isUndefined());
    }

    void imagesAreCounted()
    {
        const QByteArray png = QByteArray("\x89PNG\r\n\x1a\n").append(1500, '\0').toBase64();
        const QByteArray message = userMessage("Look", "\"" + png + "\",\"AAAA\"");
        const QString text = textOf(ask("POST", "/api/chat", chatBody("practice-vision:11b", {}, message)));
        QVERIFY2(
            text.contains(QLatin1String("2 images arrived:\n\n- PNG, 1508 bytes\n- unknown format, 3 bytes")),
            qPrintable(text));
    }

    void pacedLinesCarryTheTimeTheyWereSent()
    {
        const auto now = [] { return std::chrono::steady_clock::now().time_since_epoch() / 1us; };
        const auto before = now();
        const RawReply reply =
            ask("POST", "/api/chat", chatBody("practice-paced:100", R"(,"options":{"num_predict":5})"));
        qint64 last = before;
        for (const QString& stamp : textOf(reply).split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
            QVERIFY(stamp.toLongLong() > last);
            last = stamp.toLongLong();
        }
        QVERIFY(last > before && last <= now());

        const PieceSource pieces =
            chatScript(Behaviour::Paced, {.model = QStringLiteral("practice-paced:20")});
        int count = 0;
        while (pieces())
            ++count;
        QCOMPARE(count, 100); // five seconds of them
    }

    void misbehavioursAreAsNamed_data()
    {
        QTest::addColumn<bool>("complete");
        QTest::addColumn<bool>("lastLineIsWhole");
        QTest::addColumn<RawClient::End>("end");
        using End = RawClient::End;
        QTest::newRow("practice-drop") << false << true << End::Reset;
        QTest::newRow("practice-cut") << false << false << End::Closed;
        QTest::newRow("practice-cut:ended") << true << false << End::Open;
        QTest::newRow("practice-error") << true << true << End::Open;
        QTest::newRow("practice-empty") << true << true << End::Open;
    }
    void misbehavioursAreAsNamed()
    {
        QFETCH(RawClient::End, end);
        RawClient client(m_host.port());
        client.request("POST", "/api/chat", chatBody(QTest::currentDataTag()));
        const RawReply reply = client.reply();
        QCOMPARE(reply.status, 200);
        QTEST(reply.complete, "complete");
        const QJsonObject last = parsed(reply.lines().last());
        QTEST(!last.isEmpty(), "lastLineIsWhole");
        QCOMPARE(last.contains(u"error"), QByteArray(QTest::currentDataTag()).contains("error"));
        if (end != RawClient::End::Open)
            QCOMPARE(client.waitForEnd(), end);
        QVERIFY(waitUntil([this] { return m_host.activeStreams() == 0; }));
    }

    void aClientThatLeavesStopsItsStream_data()
    {
        QTest::addColumn<QByteArray>("target");
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("stalled") << QByteArray("/api/chat") << chatBody("practice-stall");
        QTest::newRow("flooding") << QByteArray("/api/chat") << chatBody("practice-flood:1000000000");
        QTest::newRow("paced") << QByteArray("/api/chat") << chatBody("practice-paced:1000");
    }
    void aClientThatLeavesStopsItsStream()
    {
        QFETCH(QByteArray, target);
        QFETCH(QByteArray, body);
        RawClient client(m_host.port());
        client.request("POST", target, body);
        QVERIFY(waitUntil([&] { return client.received().contains("\"done\":false"); }));
        QCOMPARE(m_host.activeStreams(), 1);
        client.leave();
        QVERIFY(waitUntil([this] { return m_host.activeStreams() == 0; }));
        QVERIFY(waitUntil([this] { return m_host.server().openConnections() == 0; }));
    }

    void pulledModelsAreInstalledUntilTheyAreDeleted()
    {
        const QByteArray body = R"({"name":"practice-reader:7b","stream":true})";
        const RawReply pull = ask("POST", "/api/pull", body);
        const QList<QByteArray> lines = pull.lines();
        QCOMPARE(lines.first(), R"({"status":"pulling manifest"})");
        QVERIFY(!parsed(lines[1]).contains(u"completed"));
        QVERIFY(parsed(lines[1]).value(u"status").toString().startsWith(QLatin1String("pulling ")));
        QCOMPARE(parsed(lines[41]).value(u"completed"), parsed(lines[41]).value(u"total"));
        QCOMPARE(lines.last(), R"({"status":"success"})");
        QCOMPARE(installed().first(), QStringLiteral("practice-reader:7b"));
        QVERIFY(textOf(ask("POST", "/api/chat", chatBody("practice-reader:7b"))).contains(practiceNote()));

        const RawReply removed = ask("DELETE", "/api/delete", R"({"model":"practice-reader:7b"})");
        QCOMPARE(removed.status, 200);
        QVERIFY(removed.body.isEmpty());
        QVERIFY(!installed().contains(QStringLiteral("practice-reader:7b")));
    }

    void theLibraryIsSearched()
    {
        const QByteArray page = ask("GET", "/search?q=READER%3A7b").body;
        QCOMPARE(page.count("<a href=\"/library/"), 1);
        QVERIFY(page.contains("<a href=\"/library/practice-reader\""));
        QVERIFY(page.contains("rounded-md px-2\">1.5b<"));
        QCOMPARE(ask("GET", "/search?q=that+it%27s").body.count("it&#39;s"), 1);
        QCOMPARE(ask("GET", "/search?q=%3Cb%3E").body.count("<li>"), 0);
    }

    void webToolsNeedAKey()
    {
        const QByteArray key = "Authorization: Bearer practice\r\n";
        const RawReply search = ask("POST", "/api/web_search", R"({"query":"tea","max_results":3})", key);
        const QJsonArray results = parsed(search.body).value(u"results").toArray();
        QCOMPARE(results.size(), 3);
        QVERIFY(results[0][u"content"].toString().contains(QLatin1String("tea")));
        QVERIFY(results[0][u"url"].toString().startsWith(QLatin1String("https://")));
        const RawReply fetch = ask("POST", "/api/web_fetch", "{\"url\":\"https://example.org/\"}", key);
        QVERIFY(
            parsed(fetch.body).value(u"content").toString().contains(QLatin1String("https://example.org/")));
    }

    void theProgramChecksItsArguments_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::newRow("help") << QStringList{QStringLiteral("--help")} << 0;
        QTest::newRow("port") << QStringList{QStringLiteral("--port"), QStringLiteral("65536")} << 2;
        QTest::newRow("pace") << QStringList{QStringLiteral("--pace"), QStringLiteral("-1")} << 2;
        QTest::newRow("unknown") << QStringList{QStringLiteral("--what")} << 2;
        QTest::newRow("word") << QStringList{QStringLiteral("what")} << 2;
        QTest::newRow("port in use") << QStringList{QStringLiteral("--port"), QString::number(m_host.port())}
                                     << 1;
    }
    void theProgramChecksItsArguments()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, exitCode);
        QProcess program;
        program.start(qEnvironmentVariable("VARNEL_BIN") + QStringLiteral("/varnel-practice-host"),
                      arguments);
        QVERIFY(program.waitForFinished());
        QCOMPARE(program.exitCode(), exitCode);
        QCOMPARE(program.readAllStandardError().isEmpty(), exitCode == 0);
        QCOMPARE(program.readAllStandardOutput().isEmpty(), exitCode != 0);
    }

    void theProgramSaysWhereItListensAndWhatIsAsked()
    {
        QProcess program;
        program.start(qEnvironmentVariable("VARNEL_BIN") + QStringLiteral("/varnel-practice-host"),
                      {QStringLiteral("--port"), QStringLiteral("0")});
        QVERIFY(waitUntil([&] { return program.canReadLine(); }));
        const QByteArray line = program.readLine();
        const QByteArray start = "Practice host on http://127.0.0.1:";
        QVERIFY2(line.startsWith(start) && line.endsWith(" (scripted replies, no model)\n"), line);
        RawClient client(line.sliced(start.size()).split(' ').first().toUShort());
        client.request("GET", "/api/version?\x1b[1m");
        QCOMPARE(client.reply().status, 200);
        QVERIFY(waitUntil([&] { return program.canReadLine(); }));
        QCOMPARE(program.readLine(), "GET /api/version??[1m (0 bytes)\n");
        program.kill();
        QVERIFY(program.waitForFinished());
    }
};

QTEST_GUILESS_MAIN(PracticeHostTest)
#include "PracticeHostTest.moc"
