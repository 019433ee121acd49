#include "ui/PromptEdit.h"

#include "base/Text.h"
#include "engine/PromptText.h"

#include <algorithm>

namespace varnel {

namespace {

auto placeOf(const ChatSession& session, const QUuid& message)
{
    return std::find_if(session.messages.begin(), session.messages.end(),
                        [&message](const ChatMessage& each) { return each.id == message; });
}

} // namespace

PromptEdit::PromptEdit(AppModel& app, QObject* parent)
    : QObject(parent)
    , m_app(app)
{
    connect(&app, &AppModel::selectionChanged, this, [this] {
        Q_EMIT changed();
        Q_EMIT textChanged();
    });
    connect(&app, &AppModel::messagesChanged, this, &PromptEdit::forgetLost);
}

void PromptEdit::begin(const QUuid& message)
{
    const ChatSession* const session = m_app.selectedSession();
    if (!session)
        return;
    const auto found = placeOf(*session, message);
    if (found == session->messages.end() || found->role != ChatRole::User)
        return;
    m_edits[session->id] = {.message = message, .text = promptParts(found->content).prompt};
    Q_EMIT changed();
    Q_EMIT textChanged();
}

bool PromptEdit::beginLast()
{
    const ChatSession* const session = m_app.selectedSession();
    if (!session)
        return false;
    const auto prompt =
        std::find_if(session->messages.rbegin(), session->messages.rend(),
                     [](const ChatMessage& message) { return message.role == ChatRole::User; });
    if (prompt == session->messages.rend())
        return false;
    begin(QUuid(prompt->id));
    return true;
}

void PromptEdit::sendAgain()
{
    const auto found = m_edits.find(m_app.selection());
    if (found == m_edits.end())
        return;
    const Edit edit = found->second;
    // When it goes, the prompt is replaced by another one, and the edit is forgotten with it.
    m_app.editAndResend(edit.message, edit.text);
}

void PromptEdit::fork()
{
    const auto found = m_edits.find(m_app.selection());
    if (found == m_edits.end())
        return;
    const QUuid session = found->first;
    const Edit edit = found->second;
    m_app.fork(edit.message);
    if (m_app.selection() == session)
        return;
    m_app.setDraft(edit.text);
    end(session);
}

void PromptEdit::cancel()
{
    // It may be on its way already, still being made ready.
    if (m_app.isBusy() && !m_app.isStreaming())
        m_app.stop();
    end(m_app.selection());
}

QString PromptEdit::text() const
{
    const auto found = m_edits.find(m_app.selection());
    return found == m_edits.end() ? QString() : found->second.text;
}

void PromptEdit::setText(const QString& text)
{
    const auto found = m_edits.find(m_app.selection());
    if (found == m_edits.end() || found->second.text == text)
        return;
    found->second.text = wellFormed(text);
    Q_EMIT textChanged();
}

QString PromptEdit::sendLabel() const
{
    const ChatSession* const session = m_app.selectedSession();
    const auto found = m_edits.find(m_app.selection());
    if (!session || found == m_edits.end())
        return tr("Send again");
    const auto place = placeOf(*session, found->second.message);
    const auto later = std::max<std::ptrdiff_t>(0, session->messages.end() - place - 1);
    if (later == 0)
        return tr("Send again");
    return later == 1 ? tr("Send again (removes 1 later message)")
                      : tr("Send again (removes %1 later messages)").arg(later);
}

void PromptEdit::end(const QUuid& session)
{
    if (m_edits.erase(session) == 0)
        return;
    Q_EMIT changed();
    Q_EMIT textChanged();
}

void PromptEdit::forgetLost(const QUuid& session)
{
    const auto found = m_edits.find(session);
    if (found == m_edits.end())
        return;
    const ChatSession* const conversation = m_app.session(session);
    if (!conversation || placeOf(*conversation, found->second.message) == conversation->messages.end())
        end(session);
    else
        Q_EMIT changed(); // more or fewer messages follow it
}

} // namespace varnel
