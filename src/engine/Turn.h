#pragma once

#include "base/Clock.h"
#include "base/HttpClient.h"
#include "base/Task.h"
#include "ollama/ChatRequest.h"

#include <QString>
#include <QUrl>

#include <chrono>
#include <functional>
#include <stop_token>

namespace varnel {

/// Everything a turn needs to know of its conversation, taken when it starts.
struct TurnRequest
{
    QUrl baseURL;
    ChatRequest chat;
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
};

/// How a reply came, once it is whole.
struct TurnOutcome
{
    /// Pieces that the model sent; with Ollama one is about a token.
    int pieces = 0;
    std::chrono::duration<double> untilFirstPiece{};
    std::chrono::duration<double> duration{};

    bool operator==(const TurnOutcome&) const = default;
};

/// Runs one turn against an Ollama server and streams the reply to the observer. Ends when the reply is
/// whole.
///
/// A request that fails on its way before anything of the reply arrived is sent once more. Throws
/// TransportError, OllamaError or Cancelled; what arrived before has then been shown. Connections are the
/// turn's own: none outlives it. The clock must outlive the task.
Task<TurnOutcome> runTurn(TurnRequest request, const Clock& clock, TurnObserver observer,
                          std::stop_token stop);

} // namespace varnel
