#pragma once

#include "base/Clock.h"
#include "base/Task.h"
#include "engine/SearchStep.h"
#include "engine/TurnBuffers.h"
#include "ollama/ChatRequest.h"
#include "providers/chat/ImageConverter.h"
#include "providers/chat/ProviderTurn.h"
#include "providers/credentials/ApiBase.h"
#include "websearch/PageNetwork.h"
#include "websearch/SearchService.h"

#include <QString>
#include <QStringList>
#include <QUrl>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <variant>

namespace varnel {

/// A question to an Ollama server.
struct OllamaQuestion
{
    QUrl baseURL;
    ChatRequest chat;

    bool operator==(const OllamaQuestion&) const = default;
};

/// Everything a turn needs to know of its conversation, taken when it starts.
struct TurnRequest
{
    std::variant<OllamaQuestion, ProviderTurn> question;
    /// With it the model is offered the web tools.
    std::optional<SearchService> search;
    /// A short label of what answers, kept with the reply.
    QString backend;

    bool operator==(const TurnRequest&) const = default;
};

/// What a turn tells its owner while it runs.
struct TurnObserver
{
    /// The reply as far as it has come; at most every 0.4 seconds, and once more at the end whatever the end
    /// is.
    std::function<void(const QString& thinking, const QString& reply)> onProgress;
    /// The reply stalled and is asked for again; the description of what went wrong.
    std::function<void(const QString& description)> onRetry;
    /// The model searches or reads a page, and is about to be given what comes of it.
    std::function<void(const SearchStep& step)> onStep;
    /// Whether an address may be read that nobody mentioned; may be empty, and then it may.
    std::function<Task<bool>(QString url, std::stop_token stop)> approve;
    /// All that has come of a streamed reply, also what onProgress was not told of yet.
    std::shared_ptr<TurnBuffers> buffers = std::make_shared<TurnBuffers>();
};

/// How a reply came, once it is whole.
struct TurnOutcome
{
    /// Pieces that the model sent; with Ollama one is about a token. 0 for a reply that came in one.
    int pieces = 0;
    std::chrono::duration<double> untilFirstPiece{};
    std::chrono::duration<double> duration{};

    bool operator==(const TurnOutcome&) const = default;
};

/// What turns work with; all of it outlives them.
struct TurnServices
{
    const Clock& clock;
    PageNetwork& pages;
    ApiBases bases;
    /// May be null.
    ImageConverter* images = nullptr;
    /// How long an Ollama server may send nothing.
    std::chrono::milliseconds stallTime = std::chrono::seconds(600);
};

/// Runs one turn and hands the reply to the observer. Ends when the reply is whole.
///
/// A streamed request that fails on its way before anything of the reply arrived is sent once more. Throws
/// TransportError, OllamaError, VarnelError or Cancelled; what arrived before has then been shown.
/// Connections are the turn's own: none outlives it.
Task<TurnOutcome> runTurn(TurnRequest request, const TurnServices& services, TurnObserver observer,
                          std::stop_token stop);

} // namespace varnel
