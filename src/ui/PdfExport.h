// One conversation as a PDF document, to print or to hand on.
#pragma once

#include "base/Task.h"
#include "base/Worker.h"
#include "engine/ConversationExport.h"
#include "store/ChatSession.h"

#include <QPageSize>
#include <QTimeZone>

#include <stop_token>

namespace varnel {

struct PdfOptions
{
    ExportedThinking thinking = ExportedThinking::Omitted;
    QPageSize pageSize = QPageSize(QPageSize::A4);
    QTimeZone timeZone = QTimeZone::systemTimeZone(); ///< that the times of messages are given in
    QHash<QUuid, QStringList> attachments;            ///< titles, by the identifier of the message
};

/// Writes the conversation to the file at `path`, which is replaced as a whole once everything is written; a
/// failed or stopped export leaves it as it was. Text can be selected and searched, every page is numbered,
/// and what the conversation names, images and links alike, is never opened. Runs on the worker, however
/// long the conversation is; starts on the window's thread, for the fonts of the desktop are asked there.
/// Throws Error with the path when it cannot be written, Cancelled when stopped. The worker must outlive the
/// task.
Task<void> exportPdf(Worker* worker, ChatSession session, QString path, PdfOptions options,
                     std::stop_token stop);

} // namespace varnel
