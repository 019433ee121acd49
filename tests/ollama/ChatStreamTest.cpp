#include "ollama/ChatStream.h"
#include "ollama/OllamaClient.h"
#include "ollama/OllamaError.h"
#include "ollama/ThinkBlock.h"
#include "practice_host/HttpServer.h"
#include "support/Await.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>
#include <QTimer>

using namespace varnel;
using namespace varnel::test;
using practice::HttpExchange;
using practice::HttpServer;
using namespace std::chrono_literals;

namespace {

using Exchange = std::shared_ptr<HttpExchange>;

/// What a reply came to: its thinking, its text, and the error that ended it, its type before the text.
struct Reply
{
    QString thinking;
    QString text;
    QString end;

    bool operator==(const Reply&) const = default;
};

Task<Reply> readReply(HttpClient& http, QUrl url, std::stop_token stop = {})
{
    const OllamaClient client(std::move(url), http, 5s);
    ChatStream stream = client.chatStream({.model = QStringLiteral("m"),
                                           .systemText = {},
                                           .history = {},
                                           .media = {},
                                           .temperature = 0,
                                           .contextLength = 2048,
                                           .keepAlive = QStringLiteral("5m"),
                                           .predictionLimit = {}},
                                          stop);
    Reply reply;
    try {
        while (const std::optional<ChatDelta> delta = co_await stream.next())
            (delta->kind == ChatDelta::Kind::Thinking ? reply.thinking : reply.text) += delta->text;
    } catch (const OllamaError& error) {
        const QStringList kinds{QStringLiteral("unreachable"), QStringLiteral("api"),
                                QStringLiteral("interrupted")};
        reply.end = kinds.at(static_cast<int>(error.kind())) + QStringLiteral(": ") + error.message();
    } catch (const TransportError& error) {
        reply.end = QStringLiteral("transport");
    }
    co_return reply;
}

/// The reply to what a server sends as whole connections' bytes, in pieces of `pieceSize`.
Reply replyTo(const QByteArray& bytes, qsizetype pieceSize = 1 << 20)
{
    HttpServer server([&](const Exchange& exchange) {
        for (qsizetype at = 0; at < bytes.size(); at += pieceSize) {
            exchange->sendRaw(bytes.mid(at, pieceSize));
            if (pieceSize == 1)
                QCoreApplication::processEvents();
        }
        exchange->close();
    });
    server.listen();
    HttpClient http;
    return await(readReply(http, server.url()));
}

QByteArray chunkedAnswer(const QByteArray& body)
{
    return "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n" + QByteArray::number(body.size(), 16) +
           "\r\n" + body + "\r\n0\r\n\r\n";
}

const QByteArray okUntilClose = "HTTP/1.1 200 OK\r\n\r\n";

Reply interrupted(const QString& thinking = {}, const QString& text = {})
{
    return {thinking, text, QStringLiteral("interrupted: The connection closed before the model finished.")};
}

} // namespace

class ChatStreamTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void linesBecomeDeltasOrErrors_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("thinking");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("end");
        const auto row = [](const char* name, const QByteArray& body, const char* thinking, const char* text,
                            const char* end) {
            QTest::newRow(name) << body << QString::fromUtf8(thinking) << QString::fromUtf8(text)
                                << QString::fromUtf8(end);
        };
        const QByteArray hi = R"({"message":{"content":"hi"}})";
        const QByteArray done = R"({"done":true})";
        const char* const closed = "interrupted: The connection closed before the model finished.";
        row("plain", hi + "\n" + done + "\n", "", "hi", "");
        row("no last line end", hi + "\n" + done, "", "hi", "");
        row("CRLF and blank lines", "\r\n" + hi + "\r\n\r\n" + hi + "\r" + done, "", "hihi", "");
        row("both in a line", R"({"message":{"content":"b","thinking":"a"},"done":true})", "a", "b", "");
        row("only thinking",
            R"({"message":{"thinking":"a"}})"
            "\n" +
                done,
            "a", "", "");
        row("unknown keys", R"({"x":[{}],"message":{"role":"z","y":1,"content":"hi"},"done":false,"n":1e3})",
            "", "hi", "");
        row("nulls",
            R"({"message":{"content":null,"thinking":"a"},"error":null,"done":null})"
            "\n"
            R"({"message":null})",
            "a", "", "");
        row("after done", hi + "\n" + done + "\n" + hi + "\n{\"error\":\"no\"}\n", "", "hi", "");
        row("no done", hi + "\n", "", "hi", "");
        row("surrogate halves",
            R"({"message":{"content":"\ud83d"}})"
            "\n"
            R"({"message":{"content":"x\ude00"}})",
            "", "\xef\xbf\xbdx\xef\xbf\xbd", "");
        row("line separator",
            "{\"message\":{\"content\":\"a\xe2\x80\xa8"
            "b\"}}",
            "",
            "a\xe2\x80\xa8"
            "b",
            "");
        row("empty", "", "", "", closed);
        row("only blank lines", "\n\r\n", "", "", closed);
        row("HTML", "<html>\n", "", "", closed);
        row("cut third line", hi + "\n" + hi + "\n" + hi.left(9), "", "hihi", "");
        row("garbage after text", hi + "\nxyz\n" + hi, "", "hi", "");
        row("wrong type", R"({"message":{"content":1}})", "", "", closed);
        row("array", "[]\n", "", "", closed);
        row("error object", R"({"error":{"message":"x"}})", "", "", closed);
        row("not UTF-8", hi + "\n{\"message\":{\"content\":\"\xff\"}}\n", "", "hi",
            "api: Ollama returned an unreadable reply.");
        row("error", hi + "\n{\"error\":\" out of memory\\n\"}\n" + hi, "", "hi", "api: out of memory");
        row("error behind half a tag",
            R"({"message":{"content":"a<th"}})"
            "\n"
            R"({"error":"x"})",
            "", "a<th", "api: x");
        row("blank error", R"({"error":"  ","message":{"content":"hi"}})", "", "hi", "");
        row("done at once", R"({"message":{"content":""},"done":true})", "", "",
            "api: The model finished without a reply.");
        row("endless line", hi + "\n" + QByteArray(17 * 1024 * 1024, ' '), "", "hi", "");
        row("deep", QByteArray(100'000, '['), "", "", closed);
        row("endless without text",
            hi + ("\n{\"x\":\"" + QByteArray(1024 * 1024, ' ') + "\"}").repeated(17) + "\n" + hi, "", "hi",
            "");
    }
    void linesBecomeDeltasOrErrors()
    {
        QFETCH(QByteArray, body);
        QFETCH(QString, thinking);
        QFETCH(QString, text);
        QFETCH(QString, end);
        const Reply expected{thinking, text, end};
        const Reply reply = replyTo(okUntilClose + body);
        QVERIFY2(reply == expected,
                 qPrintable(reply.thinking + QLatin1Char('|') + reply.text + QLatin1Char('|') + reply.end));
        QVERIFY(replyTo(chunkedAnswer(body)) == expected);
        if (body.size() < 1000)
            QVERIFY(replyTo(chunkedAnswer(body), 1) == expected);
    }

    void aBodyThatCannotBeCutHasNoCutLine()
    {
        const QByteArray body = R"({"message":{"content":"hi"}})"
                                "\n{\"x\":\"\xff\"}";
        QCOMPARE(replyTo(chunkedAnswer(body)).end,
                 QStringLiteral("api: Ollama returned an unreadable reply."));
        QCOMPARE(replyTo(okUntilClose + body).end, QString());
    }

    void reasoningInTheContentIsTakenOut_data()
    {
        QTest::addColumn<QString>("content");
        QTest::addColumn<QString>("thinking");
        QTest::addColumn<QString>("text");
        const auto row = [](const QString& content, const QString& thinking, const QString& text) {
            QTest::newRow(qPrintable(content.left(40))) << content << thinking << text;
        };
        const QString space(200, u'\n');
        row(QStringLiteral("\n<think>\na < b\n</think>\n\nyes\n"), QStringLiteral("a < b\n"),
            QStringLiteral("yes\n"));
        row(QStringLiteral("<think>\n\n</think>\n\nyes"), {}, QStringLiteral("yes"));
        row(QStringLiteral("<think>a</thin</think>b"), QStringLiteral("a</thin"), QStringLiteral("b"));
        row(QStringLiteral("<think>cut off</thi"), QStringLiteral("cut off</thi"), {});
        row(QStringLiteral("<think>a</think>b<think>c</think>"), QStringLiteral("a"),
            QStringLiteral("b<think>c</think>"));
        for (const QString& reply : {QStringLiteral("The tag <think> opens"), QStringLiteral(" <thin"),
                                     QStringLiteral("<thinking>a</thinking>"), QStringLiteral("a</think>b"),
                                     QStringLiteral(" \n"), space + QStringLiteral("<think>a")})
            row(reply, {}, reply);
    }
    void reasoningInTheContentIsTakenOut()
    {
        QFETCH(QString, content);
        QFETCH(QString, thinking);
        QFETCH(QString, text);
        const ThinkBlock::Parts whole = splitThinkBlock(content);
        QCOMPARE(whole.thinking, thinking);
        QCOMPARE(whole.reply, text);
        const auto line = [](const QString& piece) {
            const QJsonObject message{{QStringLiteral("content"), piece}};
            return QJsonDocument(QJsonObject{{QStringLiteral("message"), message}})
                       .toJson(QJsonDocument::Compact) +
                   '\n';
        };
        QByteArray letters;
        for (const QChar letter : std::as_const(content))
            letters += line(letter);
        const Reply expected{thinking, text, {}};
        QVERIFY(replyTo(okUntilClose + letters) == expected);
        for (qsizetype cut = 1; cut < std::min<qsizetype>(content.size(), 70); ++cut) {
            const QByteArray lines = line(content.left(cut)) + line(content.mid(cut));
            QVERIFY2(replyTo(okUntilClose + lines + "{\"done\":true}\n") == expected, lines.constData());
        }
        // A server that tells its reasoning apart means what the content says.
        const QByteArray apart = "{\"message\":{\"thinking\":\"t\"}}\n" + letters;
        QVERIFY(replyTo(okUntilClose + apart) == (Reply{QStringLiteral("t"), content, {}}));
    }

    void cutsAtEveryByte()
    {
        const QByteArray first = "{\"message\":{\"thinking\":\"\xc3\xa9\"}}\n";
        const QByteArray second = "{\"message\":{\"content\":\"a\xe2\x82\xac\"}}\r\n";
        const QByteArray body = first + second + "{\"done\":true}\n";
        const QString thinking = QString::fromUtf8("\xc3\xa9");
        const QString text = QString::fromUtf8("a\xe2\x82\xac");
        const auto arrived = [&](qsizetype length) {
            // The line end itself is not needed once the connection has ended.
            Reply reply;
            if (length >= first.size() - 1)
                reply.thinking = thinking;
            if (length >= first.size() + second.size() - 2)
                reply.text = text;
            return reply;
        };
        for (qsizetype length = 0; length < body.size(); ++length) {
            const QByteArray part = body.left(length);
            // A close without a declared end: what arrived stands, if anything did.
            Reply expected = arrived(length);
            QVERIFY2(replyTo(okUntilClose + part) == (expected == Reply{} ? interrupted() : expected),
                     part.constData());
            // Short of a declared end: a failure of the connection, after what arrived, unless the model was
            // done.
            if (length < body.size() - 1)
                expected.end = QStringLiteral("transport");
            const QByteArray declared =
                "HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n";
            QVERIFY2(replyTo(declared + part) == expected, part.constData());
            const QByteArray chunked = chunkedAnswer(body);
            QVERIFY2(replyTo(chunked.left(chunked.indexOf('{') + length)) == expected, part.constData());
        }
    }

    void statusErrors_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("end");
        const auto row = [](const char* name, int status, const QByteArray& body, const QString& end) {
            QTest::newRow(name) << status << body << end;
        };
        row("JSON", 404, R"({"error":"model 'x' not found","code":1})",
            QStringLiteral("api: model 'x' not found"));
        row("JSON object", 400, R"({"error":{"message":"x"}})",
            QStringLiteral(R"(unreachable: Ollama is not reachable. {"error":{"message":"x"}})"));
        row("plain", 404, "404 page not found",
            QStringLiteral("unreachable: Ollama is not reachable. 404 page not found"));
        row("empty", 502, "", QStringLiteral("unreachable: Ollama is not reachable. HTTP 502"));
        row("binary", 500, "\xff\xfe", QStringLiteral("unreachable: Ollama is not reachable. HTTP 500"));
        row("redirect", 307, "", QStringLiteral("unreachable: Ollama is not reachable. HTTP 307"));
        // Two bytes a character: the limit of 1 MiB falls between two of them, or inside the one behind the
        // "x".
        row("long", 500, "x" + QByteArray("\xc3\xa9").repeated(1024 * 1024),
            QStringLiteral("unreachable: Ollama is not reachable. x") + QString(512 * 1024 - 1, QChar(0xe9)));
    }
    void statusErrors()
    {
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        HttpServer server([&](const Exchange& exchange) { exchange->reply(status, "text/html", body); });
        server.listen();
        HttpClient http;
        QTEST(await(readReply(http, server.url())).end, "end");
    }

    void stopEndsTheStreamAndTheConnection()
    {
        Exchange open;
        HttpServer server([&](const Exchange& exchange) {
            open = exchange;
            exchange->beginReply(200, {});
            exchange->sendChunk("{\"message\":{\"content\":\"hi\"}}\n");
        });
        server.listen();
        HttpClient http;
        std::stop_source stop;
        Task<Reply> task = readReply(http, server.url(), stop.get_token());
        QVERIFY(waitUntil([&] { return open != nullptr; }));
        QCoreApplication::processEvents();
        stop.request_stop();
        QVERIFY_THROWS_EXCEPTION(Cancelled, await(std::move(task)));
        QVERIFY(waitUntil([&] { return server.openConnections() == 0; }));
    }

    void aStopIsHeardInsideABurst()
    {
        // A megabyte that says nothing in half a million lines: long to read, and there at once.
        HttpServer server([](const Exchange& exchange) {
            exchange->reply(200, "application/x-ndjson", QByteArray("{}\n").repeated(3'000'000));
        });
        server.listen();
        HttpClient http;
        std::stop_source stop;
        int turns = 0;
        QTimer timer;
        connect(&timer, &QTimer::timeout, this, [&] {
            if (++turns == 3)
                stop.request_stop();
        });
        timer.start(20ms);
        QVERIFY_THROWS_EXCEPTION(Cancelled, await(readReply(http, server.url(), stop.get_token())));
    }

    void aReplyThatUnpacksWithoutEndFails()
    {
        // 64 MiB of blanks in 64 KiB, as the zlib wrapper that HTTP calls "deflate" (RFC 9110, 8.4.1.2).
        const QByteArray packed = qCompress(QByteArray(64 * 1024 * 1024, ' '), 9).mid(4);
        HttpServer server([&](const Exchange& exchange) {
            exchange->reply(200, "application/json", packed, {{"Content-Encoding", "deflate"}});
        });
        server.listen();
        HttpClient http;
        QVERIFY(!await(readReply(http, server.url())).end.isEmpty());
    }

    void aServerThatGoesAwayIsATransportError()
    {
        quint16 port = 0;
        {
            HttpServer gone([](const Exchange&) {});
            gone.listen();
            port = gone.port();
        }
        HttpClient http;
        const Reply reply = await(readReply(http, QUrl(QStringLiteral("http://127.0.0.1:%1").arg(port))));
        QCOMPARE(reply.end, QStringLiteral("transport"));
    }
};

QTEST_GUILESS_MAIN(ChatStreamTest)
#include "ChatStreamTest.moc"
