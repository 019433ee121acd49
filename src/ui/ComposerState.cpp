#include "ui/ComposerState.h"

#include <QLocale>

#include <algorithm>

namespace varnel {

ComposerState::ComposerState(AppModel& app, PromptEdit& edit, const WindowState& state, QObject* parent)
    : QObject(parent)
    , m_app(app)
    , m_edit(edit)
    , m_sendsWithControl(state.sendsWithControl)
{
    const auto followText = [this] {
        updateCanSend();
        Q_EMIT textChanged();
        Q_EMIT contextChanged();
        Q_EMIT noticeChanged();
    };
    connect(&app, &AppModel::draftChanged, this, followText);
    connect(&edit, &PromptEdit::textChanged, this, followText);
    connect(&edit, &PromptEdit::changed, this, [this] { remark({}); });
    connect(&app, &AppModel::attachmentIDsChanged, this, &ComposerState::updateCanSend);
    connect(&app, &AppModel::isStreamingChanged, this, &ComposerState::updateCanSend);
    connect(&app, &AppModel::statusMessageChanged, this, [this] { remark({}); });
    connect(&app, &AppModel::selectedSessionChanged, this, [this] {
        if (m_asksCloud && !m_app.needsCloudConfirmation())
            setAsksCloud(false);
        Q_EMIT contextChanged();
        Q_EMIT noticeChanged();
        Q_EMIT cloudNameChanged();
    });
    connect(&app, &AppModel::selectionChanged, this, [this] {
        setAsksCloud(false);
        remark({});
    });
    // Later: a turn begins when everybody knows of the selection.
    connect(&app, &AppModel::selectionChanged, this, &ComposerState::sendImported, Qt::QueuedConnection);
    connect(&app, &AppModel::messagesChanged, this, [this](const QUuid& session) {
        if (session == m_app.selection()) {
            Q_EMIT contextChanged();
            Q_EMIT noticeChanged();
        }
    });
    // Without what did not come the prompt would be another one: the draft stays, and the status says why.
    connect(&app, &AppModel::importFailed, this,
            [this](const QUuid& session) { m_sendWhenImported.erase(session); });
    connect(&app, &AppModel::isImportingChanged, this, &ComposerState::sendImported);
    connect(&app, &AppModel::sessionsChanged, this, [this] {
        std::erase_if(m_sendWhenImported, [this](const QUuid& id) { return !m_app.session(id); });
    });
    updateCanSend();
}

QString ComposerState::text() const
{
    return m_edit.active() ? m_edit.text() : m_app.draft();
}

void ComposerState::setText(const QString& text)
{
    if (m_edit.active())
        m_edit.setText(text);
    else
        m_app.setDraft(text);
}

void ComposerState::send()
{
    if (m_app.isImporting() && !m_edit.active()) {
        m_sendWhenImported.insert(m_app.selection());
        return;
    }
    if (m_canSend)
        afterConsent([this] { sendNow(); });
    else
        sendNow(); // which says why not
}

/// A prompt waits with its conversation: only the one that is shown can be sent.
void ComposerState::sendImported()
{
    // An edit that was begun meanwhile is another prompt, and not finished: nothing is sent then.
    if (m_app.isImporting() || m_sendWhenImported.erase(m_app.selection()) == 0 || m_edit.active())
        return;
    updateCanSend();
    m_sendsByItself = true;
    send();
    m_sendsByItself = false;
}

void ComposerState::afterConsent(std::function<void()> action)
{
    if (!m_app.needsCloudConfirmation()) {
        action();
        return;
    }
    m_afterConsent = std::move(action);
    setAsksCloud(true);
    if (!m_sendsByItself)
        Q_EMIT cloudAsked();
}

void ComposerState::sendNow()
{
    if (m_edit.active())
        m_edit.sendAgain();
    else
        m_app.send();
}

void ComposerState::agreeToCloud()
{
    const std::function<void()> action = std::move(m_afterConsent);
    m_app.confirmCloud();
    setAsksCloud(false);
    if (action)
        action();
}

void ComposerState::refuseCloud()
{
    setAsksCloud(false);
}

void ComposerState::setAsksCloud(bool asks)
{
    if (!asks)
        m_afterConsent = nullptr;
    if (asks == m_asksCloud)
        return;
    m_asksCloud = asks;
    Q_EMIT asksCloudChanged();
}

QString ComposerState::cloudName() const
{
    const ChatSession* const selected = m_app.selectedSession();
    return selected && selected->answerBackend == AnswerBackend::Remote
               ? displayName(selected->remoteProvider)
               : QString();
}

QString ComposerState::statusLine() const
{
    constexpr qsizetype longest = 400;
    return (m_remark.isEmpty() ? m_app.statusMessage() : m_remark).left(longest).simplified();
}

void ComposerState::remark(const QString& text)
{
    m_remark = text;
    Q_EMIT statusLineChanged();
}

QString ComposerState::notice() const
{
    constexpr qsizetype longest = 400;
    const QString tools = m_app.toolsHint();
    return (tools.isEmpty() ? m_app.contextWarning() : tools).left(longest);
}

QString ComposerState::contextLabel() const
{
    // Beyond this a number says no more than that it is far too much.
    constexpr double largest = 9.99;
    return tr("≈ %1 %").arg(qRound(std::min(contextShare(), largest) * 100));
}

QString ComposerState::contextDetail() const
{
    const ContextUse use = m_app.contextUse();
    const QLocale locale;
    return tr("Context: ≈ %1 of %2 tokens").arg(locale.toString(use.tokens), locale.toString(use.limit));
}

void ComposerState::updateCanSend()
{
    const QString written = text();
    const bool blank =
        std::all_of(written.begin(), written.end(), [](QChar character) { return character.isSpace(); });
    const bool hasAttachments = !m_edit.active() && !m_app.attachmentIDs().empty();
    const bool canSend = (!blank || hasAttachments) && !m_app.isBusy();
    if (canSend == m_canSend)
        return;
    m_canSend = canSend;
    Q_EMIT canSendChanged();
}

int ComposerState::cursor() const
{
    const int end = static_cast<int>(text().size());
    const auto found = m_cursors.find(m_app.selection());
    return found == m_cursors.end() || m_edit.active() ? end : std::min(found->second, end);
}

void ComposerState::rememberCursor(int position)
{
    if (!m_edit.active())
        m_cursors[m_app.selection()] = position;
}

bool ComposerState::editLastPrompt()
{
    const ChatSession* const session = m_app.selectedSession();
    if (!session || m_edit.active() || !m_app.draft().isEmpty())
        return false;
    if (m_app.failure() && m_app.failure()->session == session->id && !m_app.isStreaming()) {
        m_cursors.erase(session->id);
        m_app.editFailed();
        return true;
    }
    return m_edit.beginLast();
}

void ComposerState::setSendsWithControl(bool control)
{
    if (control == m_sendsWithControl)
        return;
    m_sendsWithControl = control;
    Q_EMIT sendsWithControlChanged();
}

} // namespace varnel
