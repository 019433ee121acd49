#include "ui/PdfExport.h"

#include "base/Error.h"
#include "markdown/Markdown.h"
#include "store/ReplacingFile.h"
#include "ui/PdfRows.h"
#include "ui/transcript/RowBuilder.h"

#include <QDateTime>
#include <QIODevice>

#include <memory>
#include <optional>

namespace varnel {

namespace {

/// Fifteen pixels of the transcript's text become ten and a half points, each ten units of the pages.
constexpr qreal printZoom = 7;

QString headingOf(const ChatMessage& message, const QTimeZone& zone)
{
    QStringList parts{exportedName(message.role)};
    if (!message.backend.isEmpty())
        parts += message.backend;
    const auto time = QDateTime::fromMSecsSinceEpoch(message.createdAt.time_since_epoch().count(), zone);
    parts += time.toString(QStringLiteral("yyyy-MM-dd HH:mm"));
    if (message.duration)
        parts += QString::number(*message.duration, 'f', 1) + QStringLiteral(" s");
    return parts.join(QStringLiteral(" · "));
}

RowBuilder::Rows rowsOf(const ChatMessage& message, const PdfOptions& options)
{
    RowBuilder::Rows rows;
    RowBuilder builder(rows, 0, 0);
    if (options.thinking == ExportedThinking::Quoted && !message.thinking.trimmed().isEmpty())
        builder.addThinking(message.thinking.trimmed());
    // What people type is shown as they typed it, as in the window.
    if (message.role != ChatRole::Assistant) {
        if (!message.content.trimmed().isEmpty())
            builder.addBubble(message.content.trimmed());
    } else {
        for (const MarkdownBlock& block : parseMarkdown(message.content))
            builder.addBlock(block);
    }
    return rows;
}

void setConversation(PdfPages& pages, const TranscriptStyle& style, const ChatSession& session,
                     const PdfOptions& options)
{
    PdfRows rows(pages, style);
    QFont title = style.headingFont(1);
    title.setPixelSize(qRound(style.px(26)));
    rows.setLine(session.title, title, style.text, 0);
    const QFont heading = style.headingFont(4);
    if (!session.systemPrompt.trimmed().isEmpty()) {
        rows.setLine(QStringLiteral("System prompt"), heading, style.accent, 24);
        RowBuilder::Rows prompt;
        RowBuilder(prompt, 0, 0).addBubble(session.systemPrompt.trimmed());
        for (const TranscriptRow& row : prompt)
            rows.set(row);
    }
    for (const ChatMessage& message : session.messages) {
        rows.setLine(headingOf(message, options.timeZone), heading, style.accent, 24);
        for (const TranscriptRow& row : rowsOf(message, options))
            rows.set(row);
        for (const QString& attached : options.attachments.value(message.id))
            rows.setLine(QStringLiteral("Attached: ") + attached, style.bodyFont(13), style.secondary, 6);
    }
    pages.finish();
}

/// What a PDF is written through. Qt's writer does not look at failures, so the first one is kept for the
/// end.
class PdfFile final : public QIODevice
{
public:
    explicit PdfFile(const QString& path)
        : m_file(path, ReplacingFile::Folder::Users)
    {
        open(QIODevice::WriteOnly);
    }
    ~PdfFile() override { close(); }

    bool isSequential() const override { return true; }

    void commit()
    {
        flush();
        if (m_failure)
            throw Error(*m_failure);
        m_file.commit();
    }

protected:
    qint64 readData(char*, qint64) override { return -1; }
    qint64 writeData(const char* bytes, qint64 count) override
    {
        m_waiting.append(bytes, static_cast<qsizetype>(count));
        if (m_waiting.size() >= 1 << 18)
            flush();
        return m_failure ? -1 : count;
    }

private:
    void flush()
    {
        try {
            if (!m_failure)
                m_file.write({m_waiting.constData(), static_cast<std::size_t>(m_waiting.size())});
        } catch (const Error& error) {
            m_failure = error.message();
        }
        m_waiting.clear();
    }

    ReplacingFile m_file;
    QByteArray m_waiting;
    std::optional<QString> m_failure;
};

void writePdf(const TranscriptStyle& style, const ChatSession& session, const QString& path,
              const PdfOptions& options, const std::stop_token& stop)
{
    PdfFile file(path);
    PdfPages pages(&file, options.pageSize, style, session.title, stop);
    setConversation(pages, style, session, options);
    file.commit();
}

std::shared_ptr<TranscriptStyle> printStyle()
{
    auto style = std::make_shared<TranscriptStyle>();
    style->zoom = printZoom;
    style->background = Qt::white;
    return style;
}

} // namespace

Task<void> exportPdf(Worker* worker, ChatSession session, QString path, PdfOptions options,
                     std::stop_token stop)
{
    // A value, so that the work depends on nothing of this frame.
    auto work = [style = printStyle(), session = std::move(session), path = std::move(path),
                 options = std::move(options)](const std::stop_token& stopped) {
        writePdf(*style, session, path, options, stopped);
        return true;
    };
    static_cast<void>(co_await worker->run(std::move(work), std::move(stop)));
}

} // namespace varnel
