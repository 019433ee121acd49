#include "engine/Turn.h"

#include "engine/TurnBuffers.h"
#include "ollama/OllamaClient.h"

#include <exception>

namespace varnel {

namespace {

using std::chrono::steady_clock;

/// One attempt. The outcome is counted on, so that a second attempt begins anew.
Task<TurnOutcome> streamOnce(const TurnRequest& request, TurnBuffers& buffers, const Clock& clock,
                             const TurnObserver& observer, std::stop_token stop)
{
    HttpClient http;
    const OllamaClient client(request.baseURL, http);
    ChatStream stream = client.chatStream(request.chat, stop);
    TurnOutcome outcome;
    const steady_clock::time_point started = clock.steadyNow();
    while (const std::optional<ChatDelta> delta = co_await stream.next()) {
        const steady_clock::time_point now = clock.steadyNow();
        if (outcome.pieces++ == 0)
            outcome.untilFirstPiece = now - started;
        if (buffers.take(*delta, now))
            observer.onProgress(buffers.thinking(), buffers.reply());
    }
    outcome.duration = clock.steadyNow() - started;
    co_return outcome;
}

} // namespace

Task<TurnOutcome> runTurn(TurnRequest request, const Clock& clock, TurnObserver observer,
                          std::stop_token stop)
{
    TurnBuffers buffers;
    TurnOutcome outcome;
    for (bool retried = false;; retried = true) {
        std::exception_ptr failure;
        QString description;
        bool mayRetry = false;
        try {
            outcome = co_await streamOnce(request, buffers, clock, observer, stop);
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

} // namespace varnel
