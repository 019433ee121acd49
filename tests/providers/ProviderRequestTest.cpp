#include "RecordedRequests.h"

#include "providers/VarnelError.h"
#include "providers/chat/RequestBuilder.h"

#include <QJsonDocument>
#include <QTest>

#include <limits>

using namespace varnel;
using namespace varnel::test;

namespace {

const ApiBases& publicBases()
{
    static const ApiBases bases([](const char*) { return std::nullopt; });
    return bases;
}

QString refusal(const ProviderTurn& turn)
{
    try {
        buildProviderRequest(turn, publicBases());
    } catch (const Error& error) {
        return error.message();
    }
    return QString();
}

} // namespace

class ProviderRequestTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bodiesAreAsRecorded_data()
    {
        QTest::addColumn<std::size_t>("index");
        const auto all = recordedRequests();
        for (std::size_t i = 0; i < all.size(); ++i)
            QTest::newRow(all[i].name) << i;
    }
    void bodiesAreAsRecorded()
    {
        QFETCH(std::size_t, index);
        const RecordedRequest recorded = recordedRequests().at(index);
        const ProviderRequest request = buildProviderRequest(recorded.turn, publicBases());
        const auto compact = [](const QByteArray& json) {
            return QJsonDocument::fromJson(json).toJson(QJsonDocument::Compact);
        };
        QVERIFY(!compact(recorded.body).isEmpty());
        QCOMPARE(compact(request.body), compact(recorded.body));
        QCOMPARE(request.url.path(QUrl::FullyEncoded).toUtf8(), recorded.path);
        QVERIFY(!request.url.hasQuery());
        QCOMPARE(schemaViolation(recorded.turn, request.body), QByteArray());
        QVERIFY(!request.body.contains("secret-key"));
    }

    void schemasRefuseWhatServicesDo_data()
    {
        QTest::addColumn<QByteArray>("from");
        QTest::addColumn<QByteArray>("to");
        QTest::newRow("unknown key") << QByteArray("\"stream\"") << QByteArray("\"streams\"");
        QTest::newRow("missing key") << QByteArray("\"model\":\"m\",") << QByteArray();
        QTest::newRow("empty text") << QByteArray("\"text\":\"3\"") << QByteArray("\"text\":\"\"");
        QTest::newRow("no data URL") << QByteArray("data:image") << QByteArray("image");
        QTest::newRow("role") << QByteArray("\"user\"") << QByteArray("\"model\"");
    }
    void schemasRefuseWhatServicesDo()
    {
        QFETCH(QByteArray, from);
        QFETCH(QByteArray, to);
        const auto all = recordedRequests();
        const auto full = std::find_if(all.begin(), all.end(), [](const RecordedRequest& recorded) {
            return QByteArray(recorded.name) == "OpenAI, full";
        });
        QByteArray body = full->body;
        QVERIFY(body.contains(from));
        QVERIFY(!schemaViolation(full->turn, body.replace(from, to)).isEmpty());
    }

    void headersCarryTheKey()
    {
        const auto headers = [](RemoteProvider provider) {
            ProviderTurn turn;
            turn.provider = provider;
            turn.key = QStringLiteral(" k\n");
            return buildProviderRequest(turn, publicBases()).headers;
        };
        using Headers = QMap<QByteArray, QByteArray>;
        const auto json = std::pair<QByteArray, QByteArray>("Content-Type", "application/json");
        const Headers bearer{json, {"Authorization", "Bearer k"}};
        QCOMPARE(headers(RemoteProvider::Gemini), (Headers{json, {"x-goog-api-key", "k"}}));
        QCOMPARE(headers(RemoteProvider::Claude),
                 (Headers{json, {"x-api-key", "k"}, {"anthropic-version", "2023-06-01"}}));
        QCOMPARE(headers(RemoteProvider::OpenAi), bearer);
        QCOMPARE(headers(RemoteProvider::DeepSeek), bearer);
        Headers openRouter = headers(RemoteProvider::OpenRouter);
        QVERIFY(!openRouter.take("HTTP-Referer").isEmpty());
        QCOMPARE(openRouter.take("X-Title"), QByteArray("Varnel"));
        QCOMPARE(openRouter, bearer);
    }

    void whatCannotBeSentIsRefused()
    {
        ProviderTurn turn = recordedRequests().front().turn;
        turn.key = QStringLiteral(" \n");
        QCOMPARE(refusal(turn), QStringLiteral("Gemini API key is not in the Keychain or the environment."));
        turn.key = QStringLiteral("k\r\nx-evil: 1");
        QVERIFY(refusal(turn).startsWith(QStringLiteral("The Gemini API key holds a line break")));
        turn.key = QStringLiteral("k");
        turn.temperature = std::numeric_limits<double>::quiet_NaN();
        QVERIFY(!refusal(turn).isEmpty());
    }

    void attachmentsGoWithTheLastPrompt()
    {
        const auto message = [](ChatRole role) {
            ChatMessage message;
            message.role = role;
            return message;
        };
        const std::vector<PromptMedia> media{{QStringLiteral("image/png"), "x"}};
        const auto messages = providerMessages(
            {message(ChatRole::User), message(ChatRole::User), message(ChatRole::Assistant)}, media);
        QVERIFY(messages.at(0).media.empty());
        QVERIFY(messages.at(1).media == media);
        QVERIFY(messages.at(2).media.empty());
        QVERIFY(providerMessages({}, media).empty());
    }
};

QTEST_GUILESS_MAIN(ProviderRequestTest)
#include "ProviderRequestTest.moc"
