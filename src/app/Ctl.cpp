#include "app/Ctl.h"

#include "base/Clock.h"
#include "base/Text.h"
#include "base/TransportError.h"
#include "ollama/OllamaClient.h"
#include "ollama/OllamaError.h"
#include "store/HttpUrl.h"
#include "store/Preferences.h"

#include <QUuid>

namespace varnel {

namespace {

constexpr auto usage = "varnel ctl tags\nvarnel ctl chat <model> <prompt>\n";

/// VARNEL_OLLAMA_URL if it is a URL, else the saved connection's.
QUrl chooseBaseURL(const CtlContext& context)
{
    if (const std::optional<QByteArray> value = context.environment("VARNEL_OLLAMA_URL")) {
        if (const std::optional<QUrl> url = parseHttpUrl(QString::fromUtf8(*value)))
            return *url;
    }
    // Preferences that cannot be read are no failure, but the command may now talk to another host than
    // expected.
    const ConnectionSettings connection = context.preferences.connection();
    if (const std::optional<QString> problem = context.preferences.problem())
        context.errors.write(*problem + QLatin1Char('\n'));
    if (const std::optional<QString> problem = context.preferences.connectionProblem())
        context.errors.write(*problem + QLatin1Char('\n'));
    return connection.baseURL();
}

Task<void> listTags(CtlContext context, QUrl baseURL)
{
    const OllamaClient client(std::move(baseURL), context.http);
    const std::vector<OllamaModel> models = co_await client.listModels({});
    for (const OllamaModel& model : models)
        context.output.write(model.name + QLatin1Char('\n'));
}

/// A quick look whether a model answers, hence the short reply.
ChatRequest probe(const QStringList& arguments)
{
    QString prompt = arguments.mid(1).join(QLatin1Char(' '));
    if (prompt.isEmpty())
        prompt = QStringLiteral("Reply with the single word ready.");
    const ChatMessage message{
        .id = QUuid::createUuid(),
        .role = ChatRole::User,
        .content = wellFormed(std::move(prompt)),
        .thinking = {},
        .createdAt = SystemClock().now(),
        .backend = QStringLiteral("cli"),
        .duration = {},
    };
    return {
        .model = arguments.isEmpty() ? QStringLiteral("qwen2.5:14b") : arguments.first(),
        .systemText = {},
        .history = {message},
        .media = {},
        .temperature = 0.2,
        .contextLength = 2048,
        .keepAlive = QStringLiteral("5m"),
        .predictionLimit = 32,
    };
}

Task<void> chat(QStringList arguments, CtlContext context, QUrl baseURL)
{
    const OllamaClient client(std::move(baseURL), context.http);
    ChatStream stream = client.chatStream(probe(arguments), {});
    while (const std::optional<ChatDelta> delta = co_await stream.next())
        context.output.write(delta->text);
    context.output.write(QStringLiteral("\n"));
}

Task<void> run(QStringList arguments, CtlContext context)
{
    QUrl baseURL = chooseBaseURL(context);
    if (arguments.first() == QLatin1String("tags"))
        co_await listTags(context, std::move(baseURL));
    else
        co_await chat(arguments.mid(1), context, std::move(baseURL));
}

} // namespace

Task<int> runCtl(QStringList arguments, CtlContext context)
{
    const QString command = arguments.value(0);
    QString failure;
    try {
        if (command != QLatin1String("tags") && command != QLatin1String("chat")) {
            context.output.write(QLatin1String(usage));
            co_return 1;
        }
        co_await run(std::move(arguments), context);
        co_return 0;
    } catch (const TransportError& error) {
        failure = OllamaError::unreachable(error.message()).message();
    } catch (const Error& error) {
        failure = error.message();
    }
    context.errors.write(failure + QLatin1Char('\n'));
    co_return 1;
}

} // namespace varnel
