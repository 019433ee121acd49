#pragma once

#include "practice_host/ChatRequest.h"
#include "practice_host/PracticeModels.h"

#include <QJsonArray>

#include <functional>

namespace varnel::practice {

/// What one line of a streamed reply carries.
struct ReplyPiece
{
    QString thinking{};
    QString content{};
    QJsonArray toolCalls{};

    bool operator==(const ReplyPiece&) const = default;
};

/// Hands out the pieces of a reply one by one, made only when they are asked for; nothing at its end.
using PieceSource = std::function<std::optional<ReplyPiece>()>;

/// What the model says to the request; the request's limit of pieces is not applied here.
PieceSource chatScript(Behaviour behaviour, const ChatRequest& request);

/// The number in the tag of a model's name, or `fallback` without one; never above 1,000,000,000.
qint64 tagNumber(const QString& name, qint64 fallback);

/// One line of a streamed reply, with its line break.
QByteArray pieceLine(const QString& model, const ReplyPiece& piece);
/// The last line of a streamed reply, with its line break.
/// @param reason "stop" or "length".
QByteArray lastLine(const QString& model, const QString& reason, qint64 pieces);
/// The reply to a request that wants it in one piece.
QByteArray wholeReply(const QString& model, const ReplyPiece& reply, const QString& reason, qint64 pieces);

} // namespace varnel::practice
