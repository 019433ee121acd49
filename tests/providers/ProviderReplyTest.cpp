#include "RecordedReplies.h"

#include "providers/chat/ProviderReply.h"

#include <QJsonArray>
#include <QTest>

using namespace varnel;
using namespace varnel::test;

namespace {

ProviderRequest requestOf(RemoteProvider provider, const QByteArray& key = "secret-key")
{
    ProviderRequest request;
    request.provider = provider;
    request.headers.insert("Authorization", "Bearer " + key);
    return request;
}

} // namespace

class ProviderReplyTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void answersAreRead_data()
    {
        QTest::addColumn<std::size_t>("index");
        const auto all = recordedAnswers();
        for (std::size_t i = 0; i < all.size(); ++i)
            QTest::newRow(all[i].name) << i;
    }
    void answersAreRead()
    {
        QFETCH(std::size_t, index);
        const RecordedReply recorded = recordedAnswers().at(index);
        const ProviderAnswer answer = readProviderReply(requestOf(recorded.provider), recorded.body);
        QCOMPARE(textWithSources(answer).toUtf8(), recorded.text);
        QCOMPARE(answer.thinking.toUtf8(), recorded.thinking);
        QStringList calls;
        for (const ProviderToolCall& call : answer.toolCalls)
            calls.append(call.id + u' ' + call.name + u' ' + call.arguments);
        QCOMPARE(calls.join(QStringLiteral("; ")).toUtf8(), recorded.calls);
        // What is repeated to the model holds those calls and whatever else came with them.
        QCOMPARE(answer.message.value(QStringLiteral("tool_calls")).toArray().size(), calls.size());
        QCOMPARE(answer.message.value(QStringLiteral("reasoning_content")).toString(),
                 calls.isEmpty() ? QString() : answer.thinking);
    }

    void repliesWithoutAnAnswerAreErrors_data()
    {
        QTest::addColumn<std::size_t>("index");
        const auto all = recordedRefusals();
        for (std::size_t i = 0; i < all.size(); ++i)
            QTest::newRow(all[i].name) << i;
    }
    void repliesWithoutAnAnswerAreErrors()
    {
        QFETCH(std::size_t, index);
        const RecordedReply recorded = recordedRefusals().at(index);
        try {
            readProviderReply(requestOf(recorded.provider), recorded.body);
            QFAIL("an answer was read");
        } catch (const VarnelError& error) {
            QCOMPARE(error.message(),
                     displayName(recorded.provider) + QStringLiteral(" returned an unexpected response"));
            QCOMPARE(error.detail().toUtf8(), recorded.text);
        }
    }

    void statusesSpeakForThemselves_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("detail");
        const QByteArray json = "{\"error\":{\"message\":\"temperature: must be 1\"}}\n";
        const QByteArray html = "<html>caf\xc3\xa9</html>";
        for (const int status : {302, 400, 401, 403, 404, 429, 500, 503}) {
            const QString number = QStringLiteral("HTTP %1").arg(status);
            const QByteArray prefix = QByteArray::number(status);
            QTest::newRow(prefix + " JSON") << status << json << QString::fromUtf8(json);
            QTest::newRow(prefix + " HTML") << status << html << QString::fromUtf8(html);
            QTest::newRow(prefix + " empty") << status << QByteArray() << number;
            QTest::newRow(prefix + " no UTF-8") << status << QByteArray("caf\xe9") << number;
        }
        QByteArray cut(providerErrorLimit - 1, 'x');
        QTest::newRow("cut in a character") << 500 << cut + '\xc3' << QString::fromUtf8(cut);
    }
    void statusesSpeakForThemselves()
    {
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        QFETCH(QString, detail);
        const VarnelError error = providerStatusError(requestOf(RemoteProvider::OpenRouter), status, body);
        QVERIFY(error.message() == QStringLiteral("OpenRouter request failed: ") + detail);
        QVERIFY(error.kind() == VarnelError::Kind::Api);
    }

    void keysAreMasked_data()
    {
        QTest::addColumn<QByteArray>("key");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("detail");
        const auto row = [](const char* name, const char* key, const char* body, const char* detail) {
            QTest::newRow(name) << QByteArray(key) << QByteArray(body) << QString::fromUtf8(detail);
        };
        row("twice", "sk-12345", "sk-12345 and sk-123456", "••• and •••6");
        row("in JSON", "a/b\"c+d", "{'key':'a\\/b\\\"c+d','again':'a/b\\\"c+d'}",
            "{'key':'•••','again':'•••'}");
        row("in a URL", "a/b+c", "?key=a%2Fb%2Bc&x", "?key=•••&x");
        row("spelt otherwise", "a/b+c", "a\\u002Fb+c a%2fb%2bc a\\/b\\u002bc %61/b+c A/b+c",
            "••• ••• ••• ••• A/b+c");
        row("of escapes itself", "%41\\", "%41\\ %2541%5c %41\\\\ A\\", "••• ••• ••• A\\");
        row("a beginning at the end", "sk-12345", "sk-123 the key sk-123", "sk-123 the key •••");
    }
    void keysAreMasked()
    {
        QFETCH(QByteArray, key);
        QFETCH(QByteArray, body);
        QFETCH(QString, detail);
        for (const char* const header : {"x-api-key", "x-goog-api-key", "Authorization"}) {
            ProviderRequest request = requestOf(RemoteProvider::Gemini, key);
            if (header != QByteArray("Authorization"))
                request.headers = {{header, key}};
            QCOMPARE(providerStatusError(request, 401, body).message(),
                     QStringLiteral("Gemini request failed: ") + detail);
        }
    }

    void beginningsOfKeysAreMaskedWhereTheTextIsCut()
    {
        const ProviderRequest request = requestOf(RemoteProvider::Gemini, "sk-1/345");
        const auto ending = [&request](const QByteArray& tail) {
            const QByteArray body = QByteArray(providerErrorLimit - tail.size(), ' ') + tail;
            return providerStatusError(request, 401, body).message().right(5).trimmed();
        };
        for (const char* const tail : {"sk-1", "sk-1/34", "sk-1\\", "sk-1%2", "sk%2d1\\u002F", "sk-1/345"})
            QCOMPARE(ending(tail), QStringLiteral(u"•••"));
        QCOMPARE(ending("sk-"), QStringLiteral("sk-"));
    }
};

QTEST_GUILESS_MAIN(ProviderReplyTest)
#include "ProviderReplyTest.moc"
