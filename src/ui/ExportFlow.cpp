#include "ui/ExportFlow.h"

#include "engine/PromptText.h"
#include "ui/PdfExport.h"

#include <QDir>
#include <QStandardPaths>

namespace varnel {

namespace {

QString suffixOf(ExportFlow::Form form)
{
    switch (form) {
    case ExportFlow::Pdf:
        return QStringLiteral("pdf");
    case ExportFlow::Json:
        return QStringLiteral("json");
    default:
        return QStringLiteral("md");
    }
}

QString filterOf(ExportFlow::Form form)
{
    const QString suffix = suffixOf(form);
    const QString kind = suffix == QLatin1String("pdf")    ? ExportFlow::tr("PDF documents")
                         : suffix == QLatin1String("json") ? ExportFlow::tr("Conversations as JSON")
                                                           : ExportFlow::tr("Markdown documents");
    return QStringLiteral("%1 (*.%2)").arg(kind, suffix);
}

QHash<QUuid, QStringList> attachmentTitles(const ChatSession& session)
{
    QHash<QUuid, QStringList> titles;
    for (const ChatMessage& message : session.messages) {
        if (message.role != ChatRole::User)
            continue;
        for (const PromptAttachment& attachment : promptParts(message.content).attachments)
            titles[message.id].append(attachment.title);
    }
    return titles;
}

/// The path that a dialog chose; empty if it is none of this computer. A name that is typed into the dialog
/// of Qt Quick, which stands in where the desktop has none, comes as a bare path that was read as if it were
/// an address.
QString chosenPath(const QUrl& file)
{
    if (file.isLocalFile())
        return file.toLocalFile();
    QString path = file.path(QUrl::FullyDecoded);
    if (!file.scheme().isEmpty() || !file.authority().isEmpty() || !QDir::isAbsolutePath(path))
        return {};
    if (file.hasQuery())
        path += QLatin1Char('?') + file.query(QUrl::FullyDecoded);
    if (file.hasFragment())
        path += QLatin1Char('#') + file.fragment(QUrl::FullyDecoded);
    return path;
}

} // namespace

QString fileNameOf(const QString& title)
{
    constexpr qsizetype longest = 60;
    const QString forbidden = QStringLiteral("/\\:*?\"<>|");
    QString name;
    for (const QChar c : title.simplified()) {
        const bool isHidden = c.category() == QChar::Other_Control || c.category() == QChar::Other_Format;
        if (!isHidden)
            name += forbidden.contains(c) ? QLatin1Char('-') : c;
    }
    name = name.left(longest);
    if (!name.isEmpty() && name.back().isHighSurrogate())
        name.chop(1);
    // Leading dots would hide the file.
    while (name.startsWith(QLatin1Char('.')))
        name.remove(0, 1);
    name = name.trimmed();
    return name.isEmpty() ? ExportFlow::tr("Conversation") : name;
}

ExportFlow::ExportFlow(AppModel& app, QObject* parent)
    : QObject(parent)
    , m_app(app)
{}

void ExportFlow::exportConversation(const QString& id, Form form)
{
    ask({.session = QUuid(id), .message = {}, .form = form});
}

void ExportFlow::exportCurrent(Form form)
{
    ask({.session = m_app.selection(), .message = {}, .form = form});
}

void ExportFlow::saveMessage(const QString& id)
{
    ask({.session = m_app.selection(), .message = QUuid(id), .form = Markdown});
}

void ExportFlow::ask(Wanted wanted)
{
    const ChatSession* const session = m_app.session(wanted.session);
    if (!session)
        return;
    m_wanted = wanted;
    // Not every home has a folder for documents.
    const QDir documents(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
    const QDir folder = documents.exists() ? documents : QDir::home();
    const QString name = fileNameOf(session->title) + QLatin1Char('.') + suffixOf(wanted.form);
    m_suggestedFile = QUrl::fromLocalFile(folder.filePath(name));
    m_filter = filterOf(wanted.form);
    Q_EMIT fileWanted();
}

void ExportFlow::save(const QUrl& file)
{
    const std::optional<Wanted> wanted = std::exchange(m_wanted, std::nullopt);
    const ChatSession* const session = wanted ? m_app.session(wanted->session) : nullptr;
    const QString path = chosenPath(file);
    if (!session || path.isEmpty())
        return;
    if (!wanted->message.isNull())
        m_app.saveReply(wanted->session, wanted->message, path);
    else if (wanted->form == Pdf)
        savePdf(*session, path);
    else if (wanted->form == Json)
        m_app.exportConversation(session->id, path, ConversationForm::Json);
    else
        m_app.exportConversation(session->id, path,
                                 m_withThinking ? ConversationForm::MarkdownWithThinking
                                                : ConversationForm::Markdown);
}

void ExportFlow::savePdf(const ChatSession& session, const QString& file)
{
    PdfOptions options;
    options.thinking = m_withThinking ? ExportedThinking::Quoted : ExportedThinking::Omitted;
    options.attachments = attachmentTitles(session);
    m_app.saveWith([&](Worker* worker) { return exportPdf(worker, session, file, std::move(options), {}); },
                   file);
}

void ExportFlow::importConversation(const QUrl& file)
{
    if (file.isLocalFile())
        m_app.importConversation(file.toLocalFile());
}

} // namespace varnel
