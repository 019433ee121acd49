#include "engine/ConversationExport.h"

#include "base/Error.h"
#include "base/JsonReader.h"
#include "base/JsonWriter.h"
#include "markdown/Markdown.h"

#include <algorithm>

namespace varnel {

namespace {

constexpr qint64 formVersion = 1;

/// A line of text that shows as it is, whatever Markdown would make of it.
QString plainLine(const QString& text)
{
    QString escaped;
    for (const QChar character : text.simplified()) {
        if (QStringView(u"\\`*_[]<>&~$|#").contains(character))
            escaped += QLatin1Char('\\');
        escaped += character;
    }
    return escaped;
}

QString quoted(const QString& text)
{
    QString lines = QStringLiteral("> ") + text;
    return lines.replace(QLatin1Char('\n'), QLatin1String("\n> "));
}

bool endsInsideCode(const QString& text)
{
    const QList<MarkdownBlock> blocks = parseMarkdown(text);
    // An open fence inside a list or quote ends with it at the next heading.
    const auto* const code = blocks.isEmpty() ? nullptr : std::get_if<MarkdownCode>(&blocks.last().content);
    return code != nullptr && !code->closed;
}

qsizetype longestRun(const QString& text, QChar character)
{
    qsizetype longest = 0;
    qsizetype length = 0;
    for (const QChar each : text) {
        length = each == character ? length + 1 : 0;
        longest = std::max(longest, length);
    }
    return longest;
}

/// The text with a fence at its end that closes the code it ends in: what follows must not become code.
QString closed(const QString& text)
{
    if (!endsInsideCode(text))
        return text;
    const QString lines = text.endsWith(QLatin1Char('\n')) ? text : text + QLatin1Char('\n');
    // The one that is not the opening fence would be code.
    for (const QChar fence : {QLatin1Char('`'), QLatin1Char('~')}) {
        QString whole = lines + QString(longestRun(text, fence), fence);
        if (!endsInsideCode(whole))
            return whole;
    }
    return text;
}

QString heading(const ChatMessage& message)
{
    QStringList parts{exportedName(message.role)};
    if (!message.backend.isEmpty())
        parts += plainLine(message.backend);
    parts += toIso8601(message.createdAt);
    if (message.duration)
        parts += QString::number(*message.duration, 'f', 1) + QStringLiteral(" s");
    return QStringLiteral("## ") + parts.join(QStringLiteral(" · "));
}

QStringList sections(const ChatMessage& message, ExportedThinking thinking, const QStringList& attachments)
{
    QStringList parts{heading(message)};
    if (thinking == ExportedThinking::Quoted && !message.thinking.trimmed().isEmpty())
        parts += quoted(QStringLiteral("**Thinking**\n\n") + message.thinking.trimmed());
    if (!message.content.trimmed().isEmpty())
        parts += closed(message.content);
    if (!attachments.isEmpty()) {
        QStringList lines{QStringLiteral("Attached:\n")};
        for (const QString& title : attachments)
            lines += QStringLiteral("- ") + plainLine(title);
        parts += lines.join(QLatin1Char('\n'));
    }
    return parts;
}

qint64 decodeVersion(JsonValue value)
{
    const qint64 version = value.integer();
    if (version != formVersion)
        throw DecodeError(QString(), QStringLiteral("this program reads version %1, not %2")
                                         .arg(QString::number(formVersion), QString::number(version)));
    return version;
}

} // namespace

QString exportedName(ChatRole role)
{
    switch (role) {
    case ChatRole::System:
        return QStringLiteral("System");
    case ChatRole::User:
        return QStringLiteral("You");
    case ChatRole::Assistant:
        return QStringLiteral("Assistant");
    }
    return {};
}

QString conversationMarkdown(const ChatSession& session, ExportedThinking thinking,
                             const QHash<QUuid, QStringList>& attachments)
{
    QStringList parts{QStringLiteral("# ") + plainLine(session.title)};
    if (!session.systemPrompt.trimmed().isEmpty())
        parts += {QStringLiteral("## System prompt"), closed(session.systemPrompt)};
    for (const ChatMessage& message : session.messages)
        parts += sections(message, thinking, attachments.value(message.id));
    // Blank lines at the end of a text would only add up.
    for (QString& part : parts) {
        while (part.endsWith(QLatin1Char('\n')))
            part.chop(1);
    }
    return parts.join(QStringLiteral("\n\n")) + QLatin1Char('\n');
}

QByteArray conversationJson(const ChatSession& session)
{
    QByteArray text;
    JsonWriter writer(JsonWriter::Style::Pretty, [&text](std::string_view piece) {
        text.append(piece.data(), static_cast<qsizetype>(piece.size()));
    });
    writer.beginObject();
    writer.key("conversation");
    writeChatSession(writer, session);
    writer.key("version");
    writer.integer(formVersion);
    writer.endObject();
    writer.finish();
    return text;
}

ChatSession conversationFromJson(const QByteArray& text)
{
    if (text.size() > largestConversationJson)
        throw Error(QStringLiteral("The file is larger than %1 MiB and is not read as a conversation.")
                        .arg(largestConversationJson >> 20));
    try {
        JsonParser parser;
        const JsonObject object =
            parser.parse({text.constData(), static_cast<std::size_t>(text.size())}).object();
        // First, for what another version holds is anybody's guess.
        static_cast<void>(object.required("version", decodeVersion));
        ChatSession session = object.required("conversation", decodeChatSession);
        session.id = QUuid::createUuid();
        for (ChatMessage& message : session.messages)
            message.id = QUuid::createUuid();
        session.projectPath.clear();
        return session;
    } catch (const DecodeError& error) {
        throw error.introducedBy(QStringLiteral("The file is no conversation that was exported as JSON."));
    }
}

} // namespace varnel
