#pragma once

#include "practice_host/ChatRequest.h"
#include "practice_host/HttpExchange.h"
#include "practice_host/PracticeModels.h"

#include <QObject>

#include <chrono>
#include <memory>

namespace varnel::practice {

/// How fast the practice host answers.
struct PracticePace
{
    /// Between two pieces of a reply; zero sends all at once.
    std::chrono::milliseconds piece{40};
    /// Before the first byte of the slow model, and between its pieces.
    std::chrono::milliseconds slowStart{8000};
    std::chrono::milliseconds slowPiece{1000};

    bool operator==(const PracticePace&) const = default;
};

/// Answers a chat request, in a stream or in one piece, as `model` does it. What runs on for a while becomes
/// a child of `streams` and goes with it.
void answerChat(const std::shared_ptr<HttpExchange>& exchange, const ChatRequest& request,
                const PracticeModel& model, const PracticePace& pace, QObject& streams);

/// A reply with the JSON text of `{"error": message}`.
void replyError(HttpExchange& exchange, int status, const QString& message);

} // namespace varnel::practice
