#include "engine/ConversationFiles.h"

#include "engine/ConversationExport.h"
#include "engine/ConversationTitle.h"
#include "engine/PromptText.h"
#include "store/FileAccess.h"
#include "store/ReplacingFile.h"

namespace varnel {

namespace {

/// The conversation in Markdown, where what was attached is told by its title: its text was for the model,
/// and where an image lies on this computer is nobody else's business.
QString readableText(ChatSession session, ExportedThinking thinking)
{
    QHash<QUuid, QStringList> attachments;
    for (ChatMessage& message : session.messages) {
        if (message.role != ChatRole::User)
            continue;
        const PromptParts parts = promptParts(message.content);
        for (const PromptAttachment& attachment : parts.attachments)
            attachments[message.id].push_back(attachment.title);
        message.content = parts.prompt;
    }
    return conversationMarkdown(session, thinking, attachments);
}

QByteArray bytesOf(const ChatSession& session, ConversationForm form)
{
    switch (form) {
    case ConversationForm::Markdown:
        return readableText(session, ExportedThinking::Omitted).toUtf8();
    case ConversationForm::MarkdownWithThinking:
        return readableText(session, ExportedThinking::Quoted).toUtf8();
    case ConversationForm::Json:
        break;
    }
    return conversationJson(session);
}

/// What a file says of who answered is not what happened here, and no label of a provider: whether the user
/// agreed to send to one is read from those.
void markImported(ChatSession& session)
{
    const QString mark = QStringLiteral("Imported · ");
    for (ChatMessage& message : session.messages) {
        if (!message.backend.isEmpty() && !message.backend.startsWith(mark))
            message.backend.prepend(mark);
    }
}

void write(const QString& file, const QByteArray& bytes)
{
    ReplacingFile replacing(file);
    replacing.write({bytes.constData(), static_cast<std::size_t>(bytes.size())});
    replacing.commit();
}

} // namespace

Task<void> writeConversation(Worker* worker, ChatSession session, QString file, ConversationForm form)
{
    co_await worker->run([session = std::move(session), file, form](const std::stop_token&) {
        write(file, bytesOf(session, form));
        return true;
    });
}

Task<void> writeText(Worker* worker, QString text, QString file)
{
    co_await worker->run([text, file](const std::stop_token&) {
        QByteArray bytes = text.toUtf8();
        if (!bytes.endsWith('\n'))
            bytes += '\n';
        write(file, bytes);
        return true;
    });
}

Task<ChatSession> readConversation(Worker* worker, QString file)
{
    co_return co_await worker->run([file](const std::stop_token&) {
        const std::optional<FileContents> contents = readFile(file, largestConversationJson);
        if (!contents)
            throw Error(QStringLiteral("There is no file %1.").arg(file));
        try {
            ChatSession session = conversationFromJson(
                QByteArray::fromRawData(contents->bytes.get(), static_cast<qsizetype>(contents->size)));
            session.title = importedTitle(session.title);
            markImported(session);
            return session;
        } catch (const Error& error) {
            throw Error(file + QStringLiteral(": ") + error.message());
        }
    });
}

} // namespace varnel
