#include "practice_host/ChatAnswer.h"

#include "practice_host/ChatScript.h"
#include "practice_host/LineStream.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTimer>

namespace varnel::practice {

namespace {

// A whole reply is kept in memory, unlike a stream; a flood is cut to what can be kept.
constexpr qint64 wholeReplyLimit = 100'000;
constexpr int piecesPerWholeReply = 10;

/// What a model says that fails.
QString failureText()
{
    return QStringLiteral("practice: the model runner has stopped unexpectedly");
}

/// The lines of a streamed reply: its pieces and, after them, what the behaviour ends with.
class ChatLines
{
public:
    ChatLines(const ChatRequest& request, Behaviour behaviour)
        : m_model(request.model)
        , m_behaviour(behaviour)
        , m_limit(request.pieceLimit)
        , m_pieces(chatScript(behaviour, request))
    {}

    std::optional<QByteArray> operator()()
    {
        if (m_ended)
            return std::nullopt;
        const bool limited = m_limit && m_sent >= *m_limit;
        if (std::optional<ReplyPiece> piece = limited ? std::nullopt : m_pieces()) {
            ++m_sent;
            // In a flood all pieces are alike; writing them anew would take most of the time.
            if (m_lastLine.isEmpty() || *piece != m_lastPiece) {
                m_lastLine = pieceLine(m_model, *piece);
                m_lastPiece = std::move(*piece);
            }
            return m_lastLine;
        }
        m_ended = true;
        return lineAfterPieces(limited);
    }

private:
    std::optional<QByteArray> lineAfterPieces(bool limited) const
    {
        switch (m_behaviour) {
        case Behaviour::Drop:
        case Behaviour::Stall:
            return std::nullopt;
        case Behaviour::Cut: {
            const QByteArray line = pieceLine(m_model, {.content = QStringLiteral("never read")});
            return line.first(line.size() / 2);
        }
        case Behaviour::Fail:
            return QJsonDocument(QJsonObject{{QStringLiteral("error"), failureText()}})
                       .toJson(QJsonDocument::Compact) +
                   '\n';
        default:
            return lastLine(m_model, limited ? QStringLiteral("length") : QStringLiteral("stop"), m_sent);
        }
    }

    QString m_model;
    Behaviour m_behaviour;
    std::optional<qint64> m_limit;
    PieceSource m_pieces;
    ReplyPiece m_lastPiece;
    QByteArray m_lastLine;
    qint64 m_sent = 0;
    bool m_ended = false;
};

StreamPlan planOf(const ChatRequest& request, Behaviour behaviour, const PracticePace& pace)
{
    StreamPlan plan{.nextLine = ChatLines(request, behaviour), .pace = pace.piece};
    switch (behaviour) {
    case Behaviour::Drop:
        plan.end = StreamEnd::Reset;
        break;
    case Behaviour::Cut:
        plan.end = tagOf(request.model) == QLatin1String("ended") ? StreamEnd::Whole : StreamEnd::Close;
        break;
    case Behaviour::Stall:
        plan.end = StreamEnd::Silence;
        break;
    case Behaviour::Slow:
        plan.firstDelay = pace.slowStart;
        plan.pace = pace.slowPiece;
        break;
    case Behaviour::Flood:
        plan.pace = std::chrono::nanoseconds(0);
        break;
    case Behaviour::Paced:
        plan.pace = std::chrono::nanoseconds(std::chrono::seconds(1)) / tagNumber(request.model, 1000);
        break;
    default:
        break;
    }
    return plan;
}

QByteArray gatherReply(const ChatRequest& request, Behaviour behaviour)
{
    const PieceSource pieces = chatScript(behaviour, request);
    const qint64 limit = std::min(request.pieceLimit.value_or(wholeReplyLimit), wholeReplyLimit);
    ReplyPiece whole;
    qint64 count = 0;
    std::optional<ReplyPiece> piece;
    while (count < limit && (piece = pieces())) {
        whole.thinking += piece->thinking;
        whole.content += piece->content;
        if (!piece->toolCalls.isEmpty())
            whole.toolCalls = piece->toolCalls;
        ++count;
    }
    const bool limited = count == limit && pieces().has_value();
    return wholeReply(request.model, whole, limited ? QStringLiteral("length") : QStringLiteral("stop"),
                      count);
}

void sendWhole(HttpExchange& exchange, const ChatRequest& request, Behaviour behaviour)
{
    const QByteArray reply = gatherReply(request, behaviour);
    switch (behaviour) {
    case Behaviour::Drop:
        exchange.abort();
        break;
    case Behaviour::Cut:
        exchange.sendRaw(
            "HTTP/1.1 200 OK\r\nContent-Type: application/json; charset=utf-8\r\nContent-Length: " +
            QByteArray::number(reply.size()) + "\r\n\r\n" + reply.first(reply.size() / 2));
        exchange.close();
        break;
    case Behaviour::Stall:
        break;
    case Behaviour::Fail:
        replyError(exchange, 500, failureText());
        break;
    default:
        exchange.reply(200, "application/json; charset=utf-8", reply);
    }
}

} // namespace

void replyError(HttpExchange& exchange, int status, const QString& message)
{
    exchange.reply(
        status, "application/json; charset=utf-8",
        QJsonDocument(QJsonObject{{QStringLiteral("error"), message}}).toJson(QJsonDocument::Compact));
}

void answerChat(const std::shared_ptr<HttpExchange>& exchange, const ChatRequest& request,
                const PracticeModel& model, const PracticePace& pace, QObject& streams)
{
    const Behaviour behaviour = model.behaviour;
    if (behaviour == Behaviour::HtmlError) {
        exchange->reply(502, "text/html",
                        "<html><head><title>502 Bad Gateway</title></head><body><h1>502 Bad Gateway"
                        "</h1><p>A practice page, no model behind it.</p></body></html>\n");
    } else if (behaviour == Behaviour::Busy) {
        replyError(*exchange, 503, QStringLiteral("server busy, please try again"));
    } else if (request.offersTools && !model.takesTools) {
        replyError(*exchange, 400, QStringLiteral("model '%1' does not support tools").arg(request.model));
    } else if (request.stream) {
        new LineStream(exchange, planOf(request, behaviour, pace), &streams);
    } else {
        const auto delay = behaviour == Behaviour::Slow ? pace.slowStart : piecesPerWholeReply * pace.piece;
        QTimer::singleShot(delay, &streams,
                           [exchange, request, behaviour] { sendWhole(*exchange, request, behaviour); });
    }
}

} // namespace varnel::practice
