#include "ollama/OllamaClient.h"
#include "ollama/OllamaError.h"
#include "practice_host/HttpServer.h"
#include "practice_host/PracticeHost.h"
#include "support/Await.h"

#include <QRegularExpression>
#include <QTest>

#include <random>

using namespace varnel;
using namespace varnel::test;
using practice::HttpExchange;
using practice::HttpServer;

namespace {

using Exchange = std::shared_ptr<HttpExchange>;

QString card(const QString& link, const QString& content)
{
    return QStringLiteral("<li><a href=\"/library/%1\" class=\"x\">%2</a></li>\n").arg(link, content);
}

QString badge(const QString& text)
{
    return QStringLiteral("<span class=\"rounded-md bg\">\n %1 </span>").arg(text);
}

QStringList described(const std::vector<OllamaLibraryHit>& hits)
{
    QStringList lines;
    for (const OllamaLibraryHit& hit : hits)
        lines.push_back(hit.name + QLatin1Char('|') + hit.summary);
    return lines;
}

/// The same by regular expressions, which say what a card is.
QStringList byExpressions(const QString& page)
{
    static const QRegularExpression card(QStringLiteral("<a href=\"/library/([^\"]+)\"[\\s\\S]*?</a>"));
    static const QRegularExpression paragraph(QStringLiteral("<p[^>]*>([^<]*)</p>"));
    static const QRegularExpression size(
        QStringLiteral("rounded-md[^>]*>\\s*([0-9]+(?:\\.[0-9]+)?[bBmMkK])\\s*<"));
    QStringList lines;
    for (auto cards = card.globalMatch(page); cards.hasNext() && lines.size() < 24;) {
        const QRegularExpressionMatch match = cards.next();
        const QString name = match.captured(1).section(QLatin1Char('/'), 0, 0);
        const QString summary = paragraph.match(match.captured()).captured(1).trimmed();
        QStringList sizes;
        for (auto all = size.globalMatch(match.captured()); all.hasNext();)
            sizes.push_back(all.next().captured(1).toLower());
        sizes.removeDuplicates();
        if (sizes.isEmpty())
            lines.push_back(name + QLatin1Char('|') + summary);
        for (const QString& each : std::as_const(sizes))
            lines.push_back(name + QLatin1Char(':') + each + QLatin1Char('|') + summary);
    }
    return lines.mid(0, 24);
}

std::vector<StatusChunk> readAll(PullStream stream)
{
    std::vector<StatusChunk> chunks;
    while (const std::optional<StatusChunk> chunk = await(stream.next()))
        chunks.push_back(*chunk);
    return chunks;
}

} // namespace

class ModelManagementTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void libraryPages_data()
    {
        QTest::addColumn<QString>("page");
        QTest::addColumn<QString>("query");
        QTest::addColumn<QStringList>("hits");
        const QString llama =
            card(QStringLiteral("llama3.2"), QStringLiteral("<p class=\"a\"> Q&amp;A &lt;i&gt; </p>") +
                                                 badge(QStringLiteral("1b")) + badge(QStringLiteral("3b")) +
                                                 badge(QStringLiteral("3B")));
        const QString plain = card(QStringLiteral("phi/tags"), QString());
        const auto row = [](const char* name, const QString& page, const char* query,
                            const QStringList& hits) {
            QTest::newRow(name) << page << QString::fromLatin1(query) << hits;
        };
        row("sizes once", llama, "llama",
            {QStringLiteral("llama3.2:1b|Q&A <i>"), QStringLiteral("llama3.2:3b|Q&A <i>")});
        row("the wanted size", llama + plain, "llama3.2:3B",
            {QStringLiteral("llama3.2:3b|Q&A <i>"), QStringLiteral("phi|")});
        row("no such size", llama, "llama3.2:70b", {QStringLiteral("llama3.2|Q&A <i>")});
        row("other markup", QStringLiteral("<a class=\"x\" href=\"/library/llama\">llama</a>"), "llama", {});
        row("no name", QStringLiteral("<a href=\"/library/\">x</a>") + plain, "phi",
            {QStringLiteral("phi|")});
        row("never closed", QStringLiteral("<a href=\"/library/llama\">") + badge(QStringLiteral("1b")),
            "llama", {});
        QStringList thirty;
        for (int i = 0; i < 24; ++i)
            thirty.push_back(QStringLiteral("m:1b|"));
        row("thirty cards", card(QStringLiteral("m"), badge(QStringLiteral("1b"))).repeated(30), "m", thirty);
    }
    void libraryPages()
    {
        QFETCH(const QString, page);
        QFETCH(const QString, query);
        QTEST(described(parseLibraryPage(page, query)), "hits");
    }

    void libraryPagesAreCutAsTheExpressionsDo()
    {
        const QStringList pieces = {QStringLiteral("<a href=\"/library/"),
                                    QStringLiteral("\""),
                                    QStringLiteral("</a>"),
                                    QStringLiteral("<p"),
                                    QStringLiteral(">"),
                                    QStringLiteral("</p>"),
                                    QStringLiteral("rounded-md"),
                                    QStringLiteral("1.5b"),
                                    QStringLiteral("7K"),
                                    QStringLiteral(" "),
                                    QStringLiteral("<"),
                                    QStringLiteral("a/b"),
                                    QStringLiteral(">2m<"),
                                    QStringLiteral("3."),
                                    QStringLiteral("\n")};
        std::mt19937 random(20261121);
        for (int round = 0; round < 20000; ++round) {
            QString page;
            for (unsigned count = random() % 40; count > 0; --count)
                page += pieces[static_cast<qsizetype>(random() % static_cast<unsigned>(pieces.size()))];
            QCOMPARE(described(parseLibraryPage(page, u"m")), byExpressions(page));
        }
    }

    void hostilePagesAreReadOnce()
    {
        // Each took minutes if every opening were followed to the end of the page.
        const QString link = QStringLiteral("<a href=\"/library/m\">");
        for (const QString& piece : {QStringLiteral("<a href=\"/library/m\">"), QStringLiteral("<p"),
                                     QStringLiteral("<p>"), QStringLiteral("rounded-md"),
                                     QStringLiteral("rounded-md>"), QStringLiteral("<a href=\"/library/")}) {
            const QString filling = piece.repeated(2'000'000 / piece.size());
            QVERIFY(parseLibraryPage(filling, u"m").empty());
            QCOMPARE(parseLibraryPage(link + filling + QStringLiteral("</a>"), u"m").size(), std::size_t(1));
        }
    }

    void searchingAsksTheSite()
    {
        QByteArray target;
        HttpServer server([&target](const Exchange& exchange) {
            target = exchange->target();
            exchange->reply(503, "text/html", "busy");
        });
        server.listen();
        HttpClient http;
        const OllamaClient client(QUrl(QStringLiteral("http://127.0.0.1:1")), http);
        QVERIFY(await(client.searchLibrary(server.url(), QStringLiteral(" \n"), {})).empty());
        QVERIFY(target.isEmpty());
        try {
            await(client.searchLibrary(server.url(), QStringLiteral(" a+b&c \n"), {}));
            QFAIL("an error was expected");
        } catch (const OllamaError& error) {
            QCOMPARE(error.message(), QStringLiteral("Ollama library search failed (HTTP 503)."));
        }
        QCOMPARE(target, QByteArray("/search?q=a%2Bb%26c"));
    }

    void aModelIsPulledAndRemoved()
    {
        practice::PracticeHost host;
        host.listen();
        HttpClient http;
        const OllamaClient client(host.url(), http);
        const std::vector<OllamaLibraryHit> hits =
            await(client.searchLibrary(host.url(), QStringLiteral("practice"), {}));
        QVERIFY(!hits.empty());
        const QString name = hits.front().name;
        const auto isInstalled = [&] {
            const std::vector<OllamaModel> models = await(client.listModels({}));
            return std::any_of(models.begin(), models.end(),
                               [&name](const OllamaModel& model) { return model.name == name; });
        };
        const std::vector<StatusChunk> chunks = readAll(client.pull(name, {}));
        QCOMPARE(chunks.back().status, QStringLiteral("success"));
        QVERIFY(std::any_of(chunks.begin(), chunks.end(), [](const StatusChunk& chunk) {
            return chunk.completed && chunk.completed == chunk.total;
        }));
        QVERIFY(isInstalled());
        await(client.remove(name, {}));
        QVERIFY(!isInstalled());
        QVERIFY_THROWS_EXCEPTION(OllamaError, await(client.remove(name, {})));
    }

    void linesOfAPull()
    {
        HttpServer server([](const Exchange& exchange) {
            exchange->reply(
                200, "application/x-ndjson",
                "{\"status\":\"pulling\",\"digest\":\"x\"}\n\nnonsense\n{\"completed\":1,\"total\":null}\r\n"
                "{\"error\":{\"code\":5}}\n{\"error\":\"no such model\"}");
        });
        server.listen();
        HttpClient http;
        const std::vector<StatusChunk> expected = {
            {.status = QStringLiteral("pulling"), .error = {}, .completed = {}, .total = {}},
            {.status = {}, .error = {}, .completed = 1, .total = {}},
            {.status = {}, .error = QStringLiteral("{\"code\":5}"), .completed = {}, .total = {}},
            {.status = {}, .error = QStringLiteral("no such model"), .completed = {}, .total = {}}};
        QCOMPARE(readAll(OllamaClient(server.url(), http).pull(QStringLiteral("m"), {})), expected);
    }
};

QTEST_GUILESS_MAIN(ModelManagementTest)
#include "ModelManagementTest.moc"
