// The keyboard, the focus, and what pressing a target does.
#include "markdown/LinkTarget.h"
#include "ui/transcript/TranscriptView.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMimeData>

#include <algorithm>
#include <cmath>

namespace varnel {
namespace {

constexpr qreal arrowStep = 48;   ///< logical pixels at zoom 1
constexpr qreal pageOverlap = 48; ///< what of a page is still in view on the next one

QString actionWord(TranscriptAction action)
{
    switch (action) {
    case TranscriptAction::Copy:
        return QStringLiteral("copy");
    case TranscriptAction::Regenerate:
        return QStringLiteral("regenerate");
    case TranscriptAction::Edit:
        return QStringLiteral("edit");
    case TranscriptAction::WriteFiles:
        return QStringLiteral("writeFiles");
    case TranscriptAction::HandOff:
        return QStringLiteral("handOff");
    case TranscriptAction::Save:
        return QStringLiteral("save");
    case TranscriptAction::More:
        break;
    }
    return QStringLiteral("more");
}

} // namespace

void TranscriptView::keyPressEvent(QKeyEvent* event)
{
    event->accept();
    if (event->matches(QKeySequence::Copy)) {
        event->setAccepted(copySelection());
    } else if (event->matches(QKeySequence::SelectAll)) {
        event->setAccepted(selectWholeMessage());
    } else if (event->key() == Qt::Key_Tab || event->key() == Qt::Key_Backtab) {
        event->setAccepted(
            moveFocus(event->key() == Qt::Key_Tab && !(event->modifiers() & Qt::ShiftModifier)));
    } else if (event->key() == Qt::Key_Escape && hasSelection()) {
        clearSelection();
    } else if (m_attention.focused && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter ||
                                       event->key() == Qt::Key_Space)) {
        activate(*m_attention.focused);
    } else {
        event->setAccepted(scrollByKey(*event));
    }
}

bool TranscriptView::scrollByKey(const QKeyEvent& event)
{
    if (event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
        return false;
    const qreal page = std::max(height() - m_style->px(pageOverlap), height() / 2);
    switch (event.key()) {
    case Qt::Key_Up:
        scrollPixels(-m_style->px(arrowStep));
        return true;
    case Qt::Key_Down:
        scrollPixels(m_style->px(arrowStep));
        return true;
    case Qt::Key_PageUp:
        scrollPixels(-page);
        return true;
    case Qt::Key_PageDown:
        scrollPixels(page);
        return true;
    case Qt::Key_Space:
        scrollPixels(event.modifiers() & Qt::ShiftModifier ? -page : page);
        return true;
    case Qt::Key_Home:
        bringUpToDate();
        m_position->scrollToBegin();
        afterMove(true);
        return true;
    case Qt::Key_End:
        jumpToLatest();
        return true;
    default:
        return false;
    }
}

std::vector<TargetRef> TranscriptView::targetsInView()
{
    std::vector<TargetRef> targets;
    for (const PlacedRow& placed : rowsInView()) {
        const auto count = static_cast<int>(m_document->layout(placed.ref).targets().size());
        for (int index = 0; index < count; ++index)
            targets.push_back({placed.ref, index});
    }
    std::sort(targets.begin(), targets.end());
    targets.erase(std::unique(targets.begin(), targets.end()), targets.end());
    return targets;
}

std::optional<RowTarget> TranscriptView::targetAt(TargetRef ref) const
{
    if (ref.row.message >= m_document->messageCount() || ref.row.row >= m_document->rowCount(ref.row.message))
        return std::nullopt;
    std::vector<RowTarget> targets = m_document->layout(ref.row).targets();
    if (static_cast<std::size_t>(ref.index) >= targets.size())
        return std::nullopt;
    return std::move(targets[static_cast<std::size_t>(ref.index)]);
}

/// Moves the focus to the next target in view; false past the last one, where the window goes on.
bool TranscriptView::moveFocus(bool forward)
{
    const std::vector<TargetRef> targets = targetsInView();
    if (targets.empty())
        return false;
    if (!m_attention.focused) {
        setFocusedTarget(forward ? targets.front() : targets.back());
        return true;
    }
    const auto here = std::lower_bound(targets.begin(), targets.end(), *m_attention.focused);
    if (forward) {
        const bool isHere = here != targets.end() && *here == *m_attention.focused;
        const auto next = isHere ? here + 1 : here;
        setFocusedTarget(next == targets.end() ? std::nullopt : std::optional(*next));
        return next != targets.end();
    }
    setFocusedTarget(here == targets.begin() ? std::nullopt : std::optional(*(here - 1)));
    return here != targets.begin();
}

void TranscriptView::setFocusedTarget(std::optional<TargetRef> target)
{
    m_attention.focused = target;
    if (target) {
        const auto found = targetAt(*target);
        QRectF box;
        for (const QRectF& rect : found->rects)
            box |= rect;
        m_position->reveal(target->row, static_cast<int>(std::floor((box.top() - 8) * ratio())),
                           static_cast<int>(std::ceil((box.height() + 16) * ratio())));
        afterMove(true);
    }
    repaintAll();
    Q_EMIT hoveredChanged();
    Q_EMIT focusedTargetChanged();
}

void TranscriptView::focusInEvent(QFocusEvent* event)
{
    QQuickPaintedItem::focusInEvent(event);
    m_showsFocus = event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    if (m_showsFocus)
        moveFocus(event->reason() == Qt::TabFocusReason);
    repaintAll();
}

void TranscriptView::focusOutEvent(QFocusEvent* event)
{
    QQuickPaintedItem::focusOutEvent(event);
    m_showsFocus = false;
    setFocusedTarget(std::nullopt);
}

void TranscriptView::activate(TargetRef ref)
{
    const auto target = targetAt(ref);
    if (!target)
        return;
    const QString id = m_document->model().message(ref.row.message).id;
    switch (target->kind) {
    case TargetKind::Link:
        if (isOpenableLink(target->value))
            Q_EMIT linkActivated(QUrl(target->value));
        break;
    case TargetKind::CopyCode:
        copyCode(ref.row);
        break;
    case TargetKind::WrapCode:
        toggleWrap(ref.row);
        break;
    case TargetKind::WriteCode:
        Q_EMIT writeRequested(id, m_document->row(ref.row).code->label);
        break;
    case TargetKind::Thinking:
        toggleThinking(ref.row);
        break;
    case TargetKind::Action:
        requestAction(ref, *target);
        break;
    case TargetKind::TryAgain:
        Q_EMIT tryAgainRequested(id);
        break;
    case TargetKind::EditPrompt:
        Q_EMIT actionRequested(id, actionWord(TranscriptAction::Edit), placeOf(ref));
        break;
    case TargetKind::OpenLogs:
        Q_EMIT logsRequested();
        break;
    case TargetKind::ResetTemperature:
        Q_EMIT temperatureResetRequested();
        break;
    case TargetKind::SearchOff:
        Q_EMIT searchOffRequested();
        break;
    }
}

void TranscriptView::requestAction(TargetRef ref, const RowTarget& target)
{
    if (target.action == TranscriptAction::Copy)
        copyMessage(ref.row);
    else
        Q_EMIT actionRequested(m_document->model().message(ref.row.message).id, actionWord(target.action),
                               placeOf(ref));
}

void TranscriptView::toggleThinking(RowRef row)
{
    bringUpToDate();
    const bool followed = isFollowing();
    m_position->detach();
    m_position->holdOn(row);
    m_selection.clear();
    m_document->setThinkingOpen(row.message, !m_document->isThinkingOpen(row.message));
    m_finder->messageChanged(row.message);
    m_findTimer.start();
    m_position->settle();
    if (followed)
        m_position->attachAtEnd();
    afterMove(true);
    Q_EMIT selectionChanged();
}

void TranscriptView::toggleWrap(RowRef row)
{
    bringUpToDate();
    GroupState* const group = m_document->group(row);
    if (!group)
        return;
    const bool followed = isFollowing();
    m_position->detach();
    m_position->holdOn(row);
    group->wraps = !group->wraps;
    group->scroll = 0;
    m_document->regroup(row);
    m_position->settle();
    if (followed)
        m_position->attachAtEnd();
    afterMove(true);
}

void TranscriptView::copyCode(RowRef row)
{
    QGuiApplication::clipboard()->setText(m_document->row(row).code->text);
    showCopied(row);
}

/// The whole message as Markdown, as it was written.
void TranscriptView::copyMessage(RowRef row)
{
    const TranscriptMessage& message = m_document->model().message(row.message);
    QGuiApplication::clipboard()->setText(message.content);
    showCopied(row);
    Q_EMIT messageCopied(message.id);
}

void TranscriptView::showCopied(RowRef row)
{
    m_attention.copied = row;
    m_copiedTimer.start();
    repaintAll();
}

bool TranscriptView::selectWholeMessage()
{
    bringUpToDate();
    int message = m_document->messageCount() - 1;
    if (hasSelection())
        message = m_selection.begin().row.message;
    else if (m_attention.activeMessage >= 0)
        message = m_attention.activeMessage;
    if (message < 0)
        return false;
    m_selection.selectMessage(*m_document, message);
    selectionMoved();
    return true;
}

QString TranscriptView::selectedPlainText()
{
    bringUpToDate();
    return selectedText(*m_document, m_selection).plain;
}

bool TranscriptView::copySelection()
{
    if (!hasSelection())
        return false;
    bringUpToDate();
    const CopiedText copied = selectedText(*m_document, m_selection);
    auto* const data = new QMimeData; // the clipboard's from here on
    data->setText(copied.plain);
    data->setHtml(copied.html);
    QGuiApplication::clipboard()->setMimeData(data);
    return true;
}

void TranscriptView::clearSelection()
{
    m_selection.clear();
    repaintAll();
    Q_EMIT selectionChanged();
}

QString TranscriptView::hoveredLink() const
{
    const auto& shown = m_attention.hovered ? m_attention.hovered : m_attention.focused;
    const auto target = shown ? targetAt(*shown) : std::nullopt;
    return target && target->kind == TargetKind::Link ? target->name : QString();
}

QString TranscriptView::hoveredName() const
{
    if (m_attention.hintRow)
        return m_document->model().message(m_attention.hintRow->message).footerHint;
    const auto target = m_attention.hovered ? targetAt(*m_attention.hovered) : std::nullopt;
    return target && target->kind != TargetKind::Link ? target->name : QString();
}

QRectF TranscriptView::hoveredRect() const
{
    if (m_attention.hintRow) {
        const qint64 top = m_document->topOf(*m_attention.hintRow) - m_position->top();
        return m_document->layout(*m_attention.hintRow)
            .hintArea()
            .translated(0, static_cast<qreal>(top) / ratio());
    }
    return m_attention.hovered ? placeOf(*m_attention.hovered) : QRectF();
}

QRectF TranscriptView::placeOf(TargetRef ref) const
{
    const auto target = targetAt(ref);
    if (!target || target->rects.isEmpty())
        return {};
    const qint64 top = m_document->topOf(ref.row) - m_position->top();
    return target->rects.front().translated(0, static_cast<qreal>(top) / ratio());
}

} // namespace varnel
