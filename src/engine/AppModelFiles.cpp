// What goes into and out of conversations besides turns: saved copies, and pages of the web.
#include "engine/AppModelPrivate.h"

#include "app/DiagnosticsLog.h"
#include "websearch/PageFetch.h"

#include <QEventLoop>

#include <algorithm>

namespace varnel {

namespace {

/// How long the end of the program waits for files that are being written.
constexpr std::chrono::seconds patience(10);

} // namespace

void AppModel::keepTask(Task<void> task)
{
    std::erase_if(m_fileTasks, [](const Task<void>& other) { return other.isFinished(); });
    m_fileTasks.push_back(std::move(task));
}

/// What the user asked to be written or imported is not broken off by the end of the program, unless it
/// takes too long.
void AppModel::finishFileWork()
{
    const auto deadline = m_services.clock.steadyNow() + patience;
    QTimer tick;
    tick.start(std::chrono::milliseconds(20));
    QEventLoop loop;
    while (m_backup.isRunning() || std::ranges::any_of(m_fileTasks, &Task<void>::isRunning)) {
        if (m_services.clock.steadyNow() > deadline) {
            m_services.log.log(tr("The program ended before all files were written."));
            return;
        }
        loop.processEvents(QEventLoop::ExcludeUserInputEvents | QEventLoop::WaitForMoreEvents);
    }
}

void AppModel::exportConversation(const QUuid& id, const QString& file, ConversationForm form)
{
    if (const ChatSession* const exported = session(id))
        keepTask(followSaving(writeConversation(&m_worker, *exported, file, form), file));
}

void AppModel::saveWith(const std::function<Task<void>(Worker*)>& write, const QString& file)
{
    keepTask(followSaving(write(&m_worker), file));
}

void AppModel::saveTranscript(const QString& file)
{
    exportConversation(m_selection, file, ConversationForm::Markdown);
}

void AppModel::saveReply(const QUuid& session, const QUuid& message, const QString& file)
{
    const ChatSession* const conversation = this->session(session);
    const std::size_t index = conversation ? indexOf(*conversation, message) : 0;
    if (conversation && index < conversation->messages.size())
        keepTask(followSaving(writeText(&m_worker, conversation->messages[index].content, file), file));
}

Task<void> AppModel::followSaving(Task<void> saving, QString file)
{
    QString status;
    try {
        co_await saving;
        status = tr("Saved %1").arg(file);
    } catch (const Cancelled&) {
        co_return;
    } catch (const Error& error) {
        status = error.message();
    }
    setStatusMessage(status);
}

void AppModel::importConversation(const QString& file)
{
    keepTask(followConversationImport(file));
}

Task<void> AppModel::followConversationImport(QString file)
{
    QString status;
    try {
        ChatSession imported = co_await readConversation(&m_worker, file);
        status = tr("Imported %1").arg(imported.title);
        addConversation(std::move(imported));
    } catch (const Cancelled&) {
        co_return;
    } catch (const Error& error) {
        status = error.message();
    }
    setStatusMessage(status);
}

void AppModel::readPage(const QString& url, const QUuid& session)
{
    const QString address = url.trimmed();
    if (address.isEmpty())
        return;
    m_stopPage.request_stop();
    m_stopPage = std::stop_source();
    m_page = followPage(session.isNull() ? m_selection : session, address, m_stopPage.get_token());
}

void AppModel::stopReadingPage()
{
    m_stopPage.request_stop();
}

Task<void> AppModel::followPage(QUuid session, QString url, std::stop_token stop)
{
    QString status;
    assign(m_isReadingPage, true, &AppState::isReadingPageChanged);
    const QString reading = tr("Reading %1…").arg(url);
    setStatusMessage(reading);
    try {
        PageNetwork& network = m_services.pages ? *m_services.pages : m_pages;
        HttpClient http;
        const QString text = co_await readPublicPage(&http, &network, url, {}, stop);
        if (this->session(session))
            addToDraft(session, url + QStringLiteral("\n\n") + text);
        clearStatus(reading);
    } catch (const Cancelled&) {
        status = QStringLiteral("Stopped.");
    } catch (const Error& error) {
        status = error.message();
    }
    if (!status.isEmpty())
        setStatusMessage(status);
    assign(m_isReadingPage, false, &AppState::isReadingPageChanged);
}

} // namespace varnel
