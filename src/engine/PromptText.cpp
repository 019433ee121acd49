#include "engine/PromptText.h"

#include <QRegularExpression>

namespace varnel {

namespace {

/// Where the first attachment begins; the length of the content if there is none.
qsizetype attachmentsBegin(const QString& content)
{
    static const QRegularExpression opening(QStringLiteral("(?:^|\\n\\n)(?=\\[(?:file|pdf|image|link)\\] )"));
    const QRegularExpressionMatch match = opening.match(content);
    return match.hasMatch() ? match.capturedStart() : content.size();
}

QString mediaPathOf(const QString& text)
{
    static const QRegularExpression line(
        QStringLiteral("^(?:Image attached at (.+)\\.|PDF attached at (.+)\\. Text was not extracted\\.)$"),
        QRegularExpression::MultilineOption);
    const QRegularExpressionMatch match = line.match(text);
    return match.hasMatch() ? match.captured(1) + match.captured(2) : QString();
}

} // namespace

QString promptContent(const QString& prompt, const QStringList& attachmentTexts)
{
    QStringList parts = attachmentTexts;
    if (!prompt.isEmpty())
        parts.prepend(prompt);
    return parts.join(QStringLiteral("\n\n"));
}

PromptParts promptParts(const QString& content)
{
    static const QRegularExpression opening(
        QStringLiteral("(?:^|\\n\\n)\\[(file|pdf|image|link)\\] ([^\\n]*)"));
    const qsizetype begin = attachmentsBegin(content);
    PromptParts parts{.prompt = content.left(begin), .attachments = {}};
    auto matches = opening.globalMatch(content, begin);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        const qsizetype end = matches.hasNext() ? matches.peekNext().capturedStart() : content.size();
        const LibraryKind kind = fromRawValue<LibraryKind>(match.captured(1)).value_or(LibraryKind::File);
        PromptAttachment attachment{.kind = kind, .title = match.captured(2), .mediaPath = {}};
        if (kind == LibraryKind::Image || kind == LibraryKind::Pdf)
            attachment.mediaPath = mediaPathOf(content.mid(match.capturedEnd(), end - match.capturedEnd()));
        parts.attachments.push_back(attachment);
    }
    return parts;
}

QString withPrompt(const QString& content, const QString& prompt)
{
    const QString attached = content.mid(attachmentsBegin(content));
    return attached.isEmpty() ? prompt : promptContent(prompt, {attached.trimmed()});
}

} // namespace varnel
