#include "practice_host/ChatScript.h"

#include "base/JsonWriter.h"
#include "practice_host/ReplyTexts.h"

#include <QDateTime>
#include <QRegularExpression>

#include <memory>

namespace varnel::practice {

namespace {

using PieceList = std::vector<ReplyPiece>;

/// Cuts a text behind every run of white space, about as a model's pieces are cut.
QStringList cutIntoWords(const QString& text)
{
    QStringList words;
    qsizetype start = 0;
    for (qsizetype at = 1; at < text.size(); ++at) {
        if (text.at(at - 1).isSpace() && !text.at(at).isSpace()) {
            words.append(text.sliced(start, at - start));
            start = at;
        }
    }
    if (start < text.size())
        words.append(text.sliced(start));
    return words;
}

PieceList say(const QString& text)
{
    PieceList pieces;
    const QStringList words = cutIntoWords(text);
    for (const QString& word : words)
        pieces.push_back({.content = word});
    return pieces;
}

PieceList think(const QString& thoughts, const QString& text)
{
    PieceList pieces;
    const QStringList words = cutIntoWords(thoughts);
    for (const QString& word : words)
        pieces.push_back({.thinking = word});
    const PieceList spoken = say(text);
    pieces.insert(pieces.end(), spoken.begin(), spoken.end());
    return pieces;
}

/// The beginning of a text, cut between characters.
QString beginning(const QString& text, qsizetype limit)
{
    if (text.size() <= limit)
        return text;
    return text.first(text.at(limit).isLowSurrogate() ? limit - 1 : limit) + QChar(0x2026);
}

QString quoted(const QString& prompt)
{
    if (prompt.trimmed().isEmpty())
        return QStringLiteral("You wrote nothing.");
    QString quote = beginning(prompt.trimmed(), 400);
    quote.replace(QLatin1Char('\n'), QStringLiteral("\n> "));
    return QStringLiteral("You wrote:\n\n> %1\n\nA model would answer that here.").arg(quote);
}

QString chatReply(const ChatRequest& request)
{
    return practiceNote() + QLatin1Char(' ') + quoted(request.prompt());
}

QString formatOf(const QByteArray& image)
{
    if (image.startsWith("\x89PNG"))
        return QStringLiteral("PNG");
    if (image.startsWith("\xff\xd8\xff"))
        return QStringLiteral("JPEG");
    if (image.startsWith("GIF8"))
        return QStringLiteral("GIF");
    if (image.startsWith("RIFF") && image.mid(8, 4) == "WEBP")
        return QStringLiteral("WebP");
    return QStringLiteral("unknown format");
}

QString visionReply(const ChatRequest& request)
{
    const std::vector<QByteArray> images = request.images();
    QString text = practiceNote();
    if (images.empty())
        return text + QStringLiteral(" No image arrived with this message.");
    text += images.size() == 1 ? QStringLiteral(" 1 image arrived:\n")
                               : QStringLiteral(" %1 images arrived:\n").arg(images.size());
    for (const QByteArray& image : images)
        text += QStringLiteral("\n- %1, %2 bytes").arg(formatOf(image), QString::number(image.size()));
    return text;
}

QJsonObject toolCall(const QString& name, const QJsonObject& arguments)
{
    return {{QStringLiteral("id"), QStringLiteral("call_practice_1")},
            {QStringLiteral("function"), QJsonObject{{QStringLiteral("index"), 0},
                                                     {QStringLiteral("name"), name},
                                                     {QStringLiteral("arguments"), arguments}}}};
}

PieceList toolReply(const ChatRequest& request)
{
    const QStringList results = request.toolResults();
    if (!results.isEmpty())
        return say(QStringLiteral("%1 The tool answered:\n\n%2\n\nA model would make its answer out of that.")
                       .arg(practiceNote(), beginning(results.join(QStringLiteral("\n\n")), 1500)));
    if (!request.offersTools)
        return say(practiceNote() + QStringLiteral(" No tools were offered, so none is asked for. ") +
                   quoted(request.prompt()));
    const QString prompt = request.prompt();
    static const QRegularExpression address(QStringLiteral("https?://\\S+"));
    const QRegularExpressionMatch match = address.match(prompt);
    if (match.hasMatch())
        return {{.toolCalls = {
                     toolCall(QStringLiteral("web_fetch"), {{QStringLiteral("url"), match.captured()}})}}};
    const QString query =
        prompt.trimmed().isEmpty() ? QStringLiteral("practice") : beginning(prompt.simplified(), 200);
    return {{.toolCalls = {toolCall(QStringLiteral("web_search"), {{QStringLiteral("query"), query},
                                                                   {QStringLiteral("max_results"), 3}})}}};
}

QString interruptedReply()
{
    return practiceNote() + QStringLiteral(" It goes wrong here: ");
}

PieceList piecesOf(Behaviour behaviour, const ChatRequest& request)
{
    switch (behaviour) {
    case Behaviour::Thinking:
        return think(
            QStringLiteral("The user wants something. First I read it twice. Then I remember that there is "
                           "no model behind these words.\n\nSo I say that and quote the message."),
            chatReply(request));
    case Behaviour::Markdown:
        return say(markdownTour());
    case Behaviour::Code:
        return say(codeReply());
    case Behaviour::Project:
        return say(projectReply());
    case Behaviour::Tools:
        return toolReply(request);
    case Behaviour::Long:
        return say(longReply());
    case Behaviour::Vision:
        return say(visionReply(request));
    case Behaviour::Drop:
    case Behaviour::Cut:
    case Behaviour::Stall:
    case Behaviour::Fail:
        return say(interruptedReply());
    case Behaviour::Empty:
        return {};
    default:
        return say(chatReply(request));
    }
}

PieceSource flood(qint64 count)
{
    return [count, sent = qint64(0)]() mutable -> std::optional<ReplyPiece> {
        if (sent == count)
            return std::nullopt;
        return ReplyPiece{.content =
                              sent++ == 0 ? practiceNote() + QLatin1Char(' ') : QStringLiteral("flood ")};
    };
}

PieceSource timeStamps(qint64 count)
{
    return [count, sent = qint64(0)]() mutable -> std::optional<ReplyPiece> {
        if (sent++ == count)
            return std::nullopt;
        // The steady clock is CLOCK_MONOTONIC, which all processes of a computer share.
        const auto now = std::chrono::steady_clock::now().time_since_epoch();
        const auto stamp = std::chrono::duration_cast<std::chrono::microseconds>(now).count();
        return ReplyPiece{.content = QString::number(stamp) + QLatin1Char('\n')};
    };
}

void writeMessage(JsonWriter& writer, const ReplyPiece& piece)
{
    writer.beginObject();
    writer.key("role");
    writer.string(u"assistant");
    writer.key("content");
    writer.string(piece.content);
    if (!piece.thinking.isEmpty()) {
        writer.key("thinking");
        writer.string(piece.thinking);
    }
    if (!piece.toolCalls.isEmpty()) {
        writer.key("tool_calls");
        writer.value(piece.toolCalls);
    }
    writer.endObject();
}

void writeStart(JsonWriter& writer, const QString& model, const ReplyPiece& piece, bool done)
{
    writer.key("model");
    writer.string(model);
    writer.key("created_at");
    writer.string(QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs));
    writer.key("message");
    writeMessage(writer, piece);
    writer.key("done");
    writer.boolean(done);
}

/// The figures of a finished reply, made up in proportion to its length; times are in nanoseconds.
void writeFigures(JsonWriter& writer, const QString& reason, qint64 pieces)
{
    constexpr qint64 millisecond = 1'000'000;
    writer.key("done_reason");
    writer.string(reason);
    writer.key("total_duration");
    writer.integer((500 + 40 * pieces) * millisecond);
    writer.key("load_duration");
    writer.integer(200 * millisecond);
    writer.key("prompt_eval_count");
    writer.integer(26);
    writer.key("prompt_eval_duration");
    writer.integer(300 * millisecond);
    writer.key("eval_count");
    writer.integer(pieces);
    writer.key("eval_duration");
    writer.integer(40 * pieces * millisecond);
}

} // namespace

PieceSource chatScript(Behaviour behaviour, const ChatRequest& request)
{
    constexpr qint64 pacedSeconds = 5;
    if (behaviour == Behaviour::Flood)
        return flood(tagNumber(request.model, 100'000));
    if (behaviour == Behaviour::Paced)
        return timeStamps(pacedSeconds * tagNumber(request.model, 1000));
    return [pieces = piecesOf(behaviour, request),
            next = std::size_t(0)]() mutable -> std::optional<ReplyPiece> {
        if (next == pieces.size())
            return std::nullopt;
        return pieces[next++];
    };
}

qint64 tagNumber(const QString& name, qint64 fallback)
{
    bool valid = false;
    const qint64 number = tagOf(name).toLongLong(&valid);
    return valid && number > 0 ? std::min<qint64>(number, 1'000'000'000) : fallback;
}

QByteArray pieceLine(const QString& model, const ReplyPiece& piece)
{
    return compactJson([&](JsonWriter& writer) {
               writer.beginObject();
               writeStart(writer, model, piece, false);
               writer.endObject();
           }) +
           '\n';
}

QByteArray lastLine(const QString& model, const QString& reason, qint64 pieces)
{
    return wholeReply(model, {}, reason, pieces) + '\n';
}

QByteArray wholeReply(const QString& model, const ReplyPiece& reply, const QString& reason, qint64 pieces)
{
    return compactJson([&](JsonWriter& writer) {
        writer.beginObject();
        writeStart(writer, model, reply, true);
        writeFigures(writer, reason, pieces);
        writer.endObject();
    });
}

} // namespace varnel::practice
