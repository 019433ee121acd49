#include "ui/ReplyNotices.h"

namespace varnel {

using namespace std::chrono_literals;

namespace {

/// Who waits for less than this is still there.
constexpr auto longReply = 10s;

} // namespace

ReplyNotices::ReplyNotices(AppModel& app, const Clock& clock, DesktopNotifier& notifier,
                           std::function<bool()> isWatched, QObject* parent)
    : QObject(parent)
    , m_app(app)
    , m_clock(clock)
    , m_notifier(notifier)
    , m_isWatched(std::move(isWatched))
{
    connect(&app, &AppModel::isStreamingChanged, this, &ReplyNotices::noteStreaming);
    connect(&app, &AppModel::replyEnded, this, &ReplyNotices::noteEnd);
    connect(&notifier, &DesktopNotifier::activated, this,
            [this](const QUuid& about, const QByteArray& token) {
                m_app.select(about);
                Q_EMIT raiseRequested(token);
            });
}

void ReplyNotices::noteStreaming()
{
    const bool streaming = m_app.isStreaming();
    if (streaming && !m_wasStreaming)
        m_began = m_clock.steadyNow();
    m_wasStreaming = streaming;
}

void ReplyNotices::noteEnd(const QUuid& session)
{
    const ChatSession* const ended = m_app.session(session);
    if (!ended || m_clock.steadyNow() - m_began <= longReply || m_isWatched())
        return;
    constexpr qsizetype longestTitle = 120;
    const bool failed = m_app.failure() && m_app.failure()->session == session;
    // The title has no markup on any desktop; what a model wrote stays in the window.
    m_notifier.show(session, ended->title.left(longestTitle).simplified(),
                    failed ? tr("The reply failed") : tr("The reply is ready"));
}

} // namespace varnel
