#include "engine/Turn.h"

#include "engine/TurnBuffers.h"
#include "ollama/OllamaClient.h"
#include "ollama/OllamaError.h"
#include "providers/VarnelError.h"
#include "providers/chat/ProviderClient.h"
#include "websearch/OllamaToolModel.h"
#include "websearch/ProviderToolModel.h"
#include "websearch/ToolLoop.h"

#include <exception>

namespace varnel {

namespace {

using std::chrono::steady_clock;

/// One attempt. The outcome is counted on, so that a second attempt begins anew.
Task<TurnOutcome> streamOnce(OllamaQuestion question, TurnServices services, TurnObserver observer,
                             std::stop_token stop)
{
    HttpClient http;
    const OllamaClient client(question.baseURL, http, services.stallTime);
    ChatStream stream = client.chatStream(question.chat, stop);
    TurnOutcome outcome;
    const steady_clock::time_point started = services.clock.steadyNow();
    while (const std::optional<ChatDelta> delta = co_await stream.next()) {
        const steady_clock::time_point now = services.clock.steadyNow();
        if (outcome.pieces++ == 0)
            outcome.untilFirstPiece = now - started;
        if (observer.buffers->take(*delta, now))
            observer.onProgress(observer.buffers->thinking(), observer.buffers->reply());
    }
    outcome.duration = services.clock.steadyNow() - started;
    co_return outcome;
}

Task<TurnOutcome> runStreamed(OllamaQuestion question, TurnServices services, TurnObserver observer,
                              std::stop_token stop)
{
    const TurnBuffers& buffers = *observer.buffers;
    TurnOutcome outcome;
    for (bool retried = false;; retried = true) {
        std::exception_ptr failure;
        QString description;
        bool mayRetry = false;
        try {
            outcome = co_await streamOnce(question, services, observer, stop);
        } catch (const TransportError& error) {
            failure = std::current_exception();
            description = error.message();
            mayRetry = !retried && buffers.isEmpty();
        } catch (...) {
            failure = std::current_exception();
        }
        if (!mayRetry) {
            if (!buffers.isEmpty())
                observer.onProgress(buffers.thinking(), buffers.reply());
            if (failure)
                std::rethrow_exception(failure);
            co_return outcome;
        }
        observer.onRetry(description);
        if (stop.stop_requested())
            throw Cancelled();
    }
}

/// What the user wrote: an address in it was mentioned by them.
QStringList userTexts(const TurnRequest& request)
{
    QStringList texts;
    if (const auto* const ollama = std::get_if<OllamaQuestion>(&request.question)) {
        for (const ChatMessage& message : ollama->chat.history) {
            if (message.role == ChatRole::User)
                texts.push_back(message.content);
        }
        return texts;
    }
    for (const ProviderMessage& message : std::get<ProviderTurn>(request.question).messages) {
        if (message.role == ChatRole::User)
            texts.push_back(message.text);
    }
    return texts;
}

WebToolHooks hooksOf(const TurnObserver& observer)
{
    return {
        .onLookup =
            [observer](const WebLookup& lookup) {
                observer.onStep({lookup.kind == WebLookup::Kind::Search ? SearchStep::Kind::Search
                                                                        : SearchStep::Kind::Read,
                                 lookup.subject});
            },
        .approve = observer.approve,
    };
}

/// Everything one turn with the web tools needs, alive as long as it runs.
Task<ToolAnswer> askWithTools(TurnRequest request, TurnServices services, TurnObserver observer,
                              std::stop_token stop)
{
    HttpClient http;
    WebTools tools(*request.search, http, services.pages, hooksOf(observer), userTexts(request));
    std::unique_ptr<ToolModel> model;
    if (auto* const ollama = std::get_if<OllamaQuestion>(&request.question))
        model = std::make_unique<OllamaToolModel>(OllamaClient(ollama->baseURL, http, services.stallTime),
                                                  std::move(ollama->chat));
    else
        model = std::make_unique<ProviderToolModel>(ProviderClient(services.bases, http, services.images),
                                                    std::move(std::get<ProviderTurn>(request.question)));
    co_return co_await runToolLoop(model.get(), &tools, stop);
}

/// Why nothing came of a question: what a stream would have said, or a provider whose reply cannot be read.
[[noreturn]] void throwWithoutReply(const std::optional<RemoteProvider>& provider)
{
    if (provider)
        throw VarnelError::api(displayName(*provider) + QStringLiteral(" returned an unexpected response"));
    throw OllamaError::withoutReply();
}

Task<TurnOutcome> runWhole(TurnRequest request, TurnServices services, TurnObserver observer,
                           std::stop_token stop)
{
    const steady_clock::time_point started = services.clock.steadyNow();
    const auto* const turn = std::get_if<ProviderTurn>(&request.question);
    const std::optional<RemoteProvider> provider = turn ? std::optional(turn->provider) : std::nullopt;
    QString thinking;
    QString reply;
    if (request.search) {
        ToolAnswer answer = co_await askWithTools(std::move(request), services, observer, stop);
        thinking = std::move(answer.thinking);
        reply = std::move(answer.text);
    } else {
        HttpClient http;
        const ProviderClient client(services.bases, http, services.images);
        const ProviderAnswer answer =
            co_await client.ask(std::move(std::get<ProviderTurn>(request.question)), stop);
        thinking = answer.thinking;
        reply = textWithSources(answer);
    }
    if (thinking.isEmpty() && reply.isEmpty())
        throwWithoutReply(provider);
    observer.onProgress(thinking, reply);
    TurnOutcome outcome;
    outcome.duration = services.clock.steadyNow() - started;
    co_return outcome;
}

} // namespace

Task<TurnOutcome> runTurn(TurnRequest request, const TurnServices& services, TurnObserver observer,
                          std::stop_token stop)
{
    if (auto* const ollama = std::get_if<OllamaQuestion>(&request.question); ollama && !request.search)
        return runStreamed(std::move(*ollama), services, std::move(observer), std::move(stop));
    return runWhole(std::move(request), services, std::move(observer), std::move(stop));
}

} // namespace varnel
