#pragma once

#include "store/LibraryItem.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace varnel {

/// What is attached to a prompt, as the stored message tells it.
struct PromptAttachment
{
    LibraryKind kind = LibraryKind::File;
    QString title;
    /// The path of a stored image or PDF, which is sent along; else empty.
    QString mediaPath;

    bool operator==(const PromptAttachment&) const = default;
};

/// A stored prompt, taken apart: what the user typed and what was attached.
struct PromptParts
{
    QString prompt;
    std::vector<PromptAttachment> attachments;

    bool operator==(const PromptParts&) const = default;
};

/// The content of a user's message: the prompt, then the text of each attachment.
QString promptContent(const QString& prompt, const QStringList& attachmentTexts);

/// Takes such a content apart. What follows the first line that could begin an attachment counts as attached.
PromptParts promptParts(const QString& content);

/// The content with another prompt in front of the same attachments.
QString withPrompt(const QString& content, const QString& prompt);

} // namespace varnel
