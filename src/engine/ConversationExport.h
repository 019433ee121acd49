// One conversation as a file of its own: Markdown to read, JSON to take to another computer.
#pragma once

#include "store/ChatSession.h"

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>
#include <QUuid>

namespace varnel {

/// Whether an export shows what a model thought before it answered.
enum class ExportedThinking { Omitted, Quoted };

/// What an export calls who speaks, for example "You".
QString exportedName(ChatRole role);

/// The conversation as Markdown: its title, and under a heading each, with role and time, its messages as
/// they stand, so that the sources of a reply are where the reply lists them. Code that a reply did not close
/// ends with its message. Ends with a line feed.
/// @param attachments the titles of what was attached, by the identifier of the message.
QString conversationMarkdown(const ChatSession& session, ExportedThinking thinking,
                             const QHash<QUuid, QStringList>& attachments = {});

/// The conversation as JSON text, encoded as it is stored, inside an object that tells the version of this
/// form. Throws Error when a number in it is not finite.
QByteArray conversationJson(const ChatSession& session);

/// Files larger than this, in bytes, are refused.
constexpr qsizetype largestConversationJson = qsizetype(256) << 20;

/// Reads what conversationJson() made. The conversation and its messages get fresh identifiers, so that it
/// can stand beside the one it was made from, and no project folder: a file does not choose where on this
/// computer files are written. Throws Error, with the place in the text where there is one.
ChatSession conversationFromJson(const QByteArray& text);

} // namespace varnel
