#include "ui/ComposerState.h"

#include <algorithm>

namespace varnel {

ComposerState::ComposerState(AppModel& app, QObject* parent)
    : QObject(parent)
    , m_app(app)
{
    connect(&app, &AppModel::draftChanged, this, &ComposerState::updateCanSend);
    connect(&app, &AppModel::isStreamingChanged, this, &ComposerState::updateCanSend);
    connect(&app, &AppModel::statusMessageChanged, this, &ComposerState::statusLineChanged);
    updateCanSend();
}

QString ComposerState::statusLine() const
{
    constexpr qsizetype longest = 400;
    return m_app.statusMessage().left(longest).simplified();
}

void ComposerState::updateCanSend()
{
    const QString draft = m_app.draft();
    const bool blank =
        std::all_of(draft.begin(), draft.end(), [](QChar character) { return character.isSpace(); });
    const bool canSend = !blank && !m_app.isStreaming();
    if (canSend == m_canSend)
        return;
    m_canSend = canSend;
    Q_EMIT canSendChanged();
}

int ComposerState::cursor() const
{
    const int end = static_cast<int>(m_app.draft().size());
    const auto found = m_cursors.find(m_app.selection());
    return found == m_cursors.end() ? end : std::min(found->second, end);
}

void ComposerState::rememberCursor(int position)
{
    m_cursors[m_app.selection()] = position;
}

bool ComposerState::editLastPrompt()
{
    const ChatSession* const session = m_app.selectedSession();
    if (!session || !m_app.draft().isEmpty())
        return false;
    m_cursors.erase(session->id);
    if (m_app.failure() && m_app.failure()->session == session->id && !m_app.isStreaming()) {
        m_app.editFailed();
        return true;
    }
    const auto prompt =
        std::find_if(session->messages.rbegin(), session->messages.rend(),
                     [](const ChatMessage& message) { return message.role == ChatRole::User; });
    if (prompt == session->messages.rend())
        return false;
    m_app.setDraft(QString(prompt->content));
    return true;
}

} // namespace varnel
