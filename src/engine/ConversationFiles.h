#pragma once

#include "base/Task.h"
#include "base/Worker.h"
#include "store/ChatSession.h"

#include <QString>

namespace varnel {

/// What a conversation is saved as outside the program.
enum class ConversationForm {
    Markdown,             ///< to be read
    MarkdownWithThinking, ///< the same with what the models thought
    Json,                 ///< to be read by this program again
};

/// Writes a conversation to a file, in place of what is there. What was attached to a prompt stands in
/// Markdown with its title only. Throws Error.
/// @param worker outlives the task, here and below; what blocks runs on it.
Task<void> writeConversation(Worker* worker, ChatSession session, QString file, ConversationForm form);

/// Writes a text to a file as it is, with a line feed at its end. Throws Error.
Task<void> writeText(Worker* worker, QString text, QString file);

/// Reads a conversation that was written as JSON; the labels of its replies say that they were imported.
/// Throws Error that names the file.
Task<ChatSession> readConversation(Worker* worker, QString file);

} // namespace varnel
