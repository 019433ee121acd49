#include "ui/transcript/TranscriptAccessible.h"
#include "ui/transcript/TranscriptView.h"

#include <QAccessibleActionInterface>
#include <QQuickWindow>

#include <algorithm>

namespace varnel {
namespace {

constexpr int longestName = 20000; ///< characters of a message that are handed over to be read aloud

/// A message of the list.
class MessageAccessible final : public QAccessibleInterface
{
public:
    MessageAccessible(const TranscriptAccessible& list, QString id)
        : m_list(list)
        , m_id(std::move(id))
    {}

    bool isValid() const override { return index() >= 0; }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override { return m_list.window(); }
    QAccessibleInterface* parent() const override { return const_cast<TranscriptAccessible*>(&m_list); }
    QAccessible::Role role() const override { return QAccessible::ListItem; }
    void setText(QAccessible::Text, const QString&) override {}

    QAccessible::State state() const override
    {
        QAccessible::State state;
        state.readOnly = true;
        state.busy = isValid() && m_list.view()->document().model().message(index()).streaming;
        return state;
    }

    QString text(QAccessible::Text kind) const override
    {
        if (kind != QAccessible::Name || !isValid())
            return {};
        TranscriptDocument& document = m_list.view()->document();
        const TranscriptMessage& message = document.model().message(index());
        QString text =
            message.role == TranscriptRole::User ? TranscriptView::tr("You:") : TranscriptView::tr("Reply:");
        for (int row = 0; row < document.rowCount(index()) && text.size() < longestName; ++row) {
            const QString part = document.row({index(), row}).plainText();
            if (!part.isEmpty())
                text += QLatin1Char('\n') + part;
        }
        return text.left(longestName);
    }

    QRect rect() const override
    {
        if (!isValid())
            return {};
        QRectF box;
        for (const PlacedRow& placed : m_list.view()->rowsInView()) {
            if (placed.ref.message == index())
                box |= QRectF(0, placed.y, m_list.view()->width(),
                              m_list.view()->document().layout(placed.ref).height());
        }
        return box.isEmpty() ? QRect() : m_list.onScreen(box);
    }

    int childCount() const override { return static_cast<int>(targets().size()); }
    QAccessibleInterface* child(int number) const override
    {
        const auto all = targets();
        if (number < 0 || static_cast<std::size_t>(number) >= all.size())
            return nullptr;
        return m_list.target(all[static_cast<std::size_t>(number)]);
    }
    int indexOfChild(const QAccessibleInterface* child) const override
    {
        for (int number = 0; number < childCount(); ++number) {
            if (this->child(number) == child)
                return number;
        }
        return -1;
    }
    QAccessibleInterface* childAt(int x, int y) const override
    {
        for (int number = 0; number < childCount(); ++number) {
            QAccessibleInterface* const found = child(number);
            if (found->rect().contains(x, y))
                return found;
        }
        return nullptr;
    }

private:
    int index() const { return m_list.view() ? m_list.view()->document().model().indexOf(m_id) : -1; }
    std::vector<TargetRef> targets() const
    {
        std::vector<TargetRef> targets =
            isValid() ? m_list.view()->targetsInView() : std::vector<TargetRef>();
        std::erase_if(targets, [this](TargetRef ref) { return ref.row.message != index(); });
        return targets;
    }

    const TranscriptAccessible& m_list;
    QString m_id;
};

/// A link or a button within a message.
class TargetAccessible final : public QAccessibleInterface, public QAccessibleActionInterface
{
public:
    TargetAccessible(const TranscriptAccessible& list, TargetRef ref)
        : m_list(list)
        , m_ref(ref)
    {}

    bool isValid() const override { return target().has_value(); }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override { return m_list.window(); }
    QAccessibleInterface* parent() const override
    {
        return m_list.message(m_list.view()->document().model().message(m_ref.row.message).id);
    }
    QAccessibleInterface* child(int) const override { return nullptr; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    void setText(QAccessible::Text, const QString&) override {}

    QString text(QAccessible::Text kind) const override
    {
        const auto found = target();
        if (kind != QAccessible::Name || !found)
            return {};
        const TranscriptModel& model = m_list.view()->document().model();
        return found->kind == TargetKind::Thinking
                   ? thinkingText(model.message(m_ref.row.message), model.now())
                   : found->name;
    }
    QRect rect() const override
    {
        const auto found = target();
        for (const PlacedRow& placed : m_list.view()->rowsInView()) {
            if (placed.ref == m_ref.row && found && !found->rects.isEmpty())
                return m_list.onScreen(found->rects.front().translated(0, placed.y));
        }
        return {};
    }
    QAccessible::Role role() const override
    {
        const auto found = target();
        return found && found->kind == TargetKind::Link ? QAccessible::Link : QAccessible::Button;
    }
    QAccessible::State state() const override
    {
        QAccessible::State state;
        const auto found = target();
        state.focusable = true;
        state.focused = m_list.view()->attention().focused == m_ref;
        if (found && found->kind == TargetKind::Thinking) {
            state.expandable = true;
            state.expanded = m_list.view()->document().isThinkingOpen(m_ref.row.message);
            state.collapsed = !state.expanded;
        }
        return state;
    }

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }
    QStringList actionNames() const override { return {pressAction()}; }
    void doAction(const QString& name) override
    {
        if (name == pressAction())
            m_list.view()->activate(m_ref);
    }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

private:
    std::optional<RowTarget> target() const
    {
        return m_list.view() ? m_list.view()->targetAt(m_ref) : std::nullopt;
    }

    const TranscriptAccessible& m_list;
    TargetRef m_ref;
};

QAccessibleInterface* makeInterface(const QString& className, QObject* object)
{
    if (className != QLatin1String(TranscriptView::staticMetaObject.className()))
        return nullptr;
    return new TranscriptAccessible(static_cast<TranscriptView*>(object)); // owned by the accessibility cache
}

} // namespace

void installTranscriptAccessibility()
{
    static const bool installed = [] {
        QAccessible::installFactory(makeInterface);
        return true;
    }();
    Q_UNUSED(installed);
}

TranscriptAccessible::TranscriptAccessible(TranscriptView* view)
    : QAccessibleObject(view)
{
    QObject::connect(view, &TranscriptView::focusedTargetChanged, view, [this] { announceFocus(); });
    QObject::connect(view, &TranscriptView::replyFinished, view,
                     [this](const QString& id, const QString&) { announceReply(id); });
}

TranscriptAccessible::~TranscriptAccessible()
{
    for (const auto& [ref, id] : m_targets)
        QAccessible::deleteAccessibleInterface(id);
    for (const auto& [name, id] : m_messages)
        QAccessible::deleteAccessibleInterface(id);
}

TranscriptView* TranscriptAccessible::view() const
{
    return static_cast<TranscriptView*>(object());
}

QWindow* TranscriptAccessible::window() const
{
    return view() ? view()->window() : nullptr;
}

QAccessibleInterface* TranscriptAccessible::parent() const
{
    for (QQuickItem* item = view() ? view()->parentItem() : nullptr; item; item = item->parentItem()) {
        if (QAccessibleInterface* const found = QAccessible::queryAccessibleInterface(item))
            return found;
    }
    return QAccessible::queryAccessibleInterface(window());
}

TranscriptAccessible::Range TranscriptAccessible::messagesNearView() const
{
    const std::vector<PlacedRow> rows = view() ? view()->rowsInView() : std::vector<PlacedRow>();
    if (rows.empty())
        return {};
    int last = 0;
    for (const PlacedRow& placed : rows)
        last = std::max(last, placed.ref.message);
    const int first = std::max(0, rows.front().ref.message - 1);
    last = std::min(last + 1, view()->document().messageCount() - 1);
    return {first, last - first + 1};
}

int TranscriptAccessible::childCount() const
{
    return messagesNearView().count;
}

QAccessibleInterface* TranscriptAccessible::child(int index) const
{
    const Range range = messagesNearView();
    if (index < 0 || index >= range.count)
        return nullptr;
    return message(view()->document().model().message(range.first + index).id);
}

int TranscriptAccessible::indexOfChild(const QAccessibleInterface* child) const
{
    for (int index = 0; index < childCount(); ++index) {
        if (this->child(index) == child)
            return index;
    }
    return -1;
}

QAccessibleInterface* TranscriptAccessible::childAt(int x, int y) const
{
    for (int index = 0; index < childCount(); ++index) {
        QAccessibleInterface* const found = child(index);
        if (found->rect().contains(x, y))
            return found;
    }
    return nullptr;
}

QAccessibleInterface* TranscriptAccessible::focusChild() const
{
    if (!view() || !view()->hasActiveFocus())
        return nullptr;
    const auto& focused = view()->attention().focused;
    return focused ? target(*focused) : const_cast<TranscriptAccessible*>(this);
}

QString TranscriptAccessible::text(QAccessible::Text kind) const
{
    return kind == QAccessible::Name ? TranscriptView::tr("Conversation") : QString();
}

QRect TranscriptAccessible::rect() const
{
    return view() ? onScreen(QRectF(0, 0, view()->width(), view()->height())) : QRect();
}

QRect TranscriptAccessible::onScreen(const QRectF& rect) const
{
    return QRectF(view()->mapToGlobal(rect.topLeft()), rect.size()).toAlignedRect();
}

QAccessible::State TranscriptAccessible::state() const
{
    QAccessible::State state;
    state.focusable = true;
    state.readOnly = true;
    state.focused = view() && view()->hasActiveFocus();
    state.invisible = !view() || !view()->isVisible();
    return state;
}

QAccessibleInterface* TranscriptAccessible::message(const QString& id) const
{
    const auto [place, isNew] = m_messages.try_emplace(id);
    if (isNew) {
        // QAccessible owns it until the destructor here has it deleted.
        // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks)
        place->second = QAccessible::registerAccessibleInterface(new MessageAccessible(*this, id));
    }
    return QAccessible::accessibleInterface(place->second);
}

QAccessibleInterface* TranscriptAccessible::target(TargetRef ref) const
{
    const auto [place, isNew] = m_targets.try_emplace(ref);
    if (isNew) {
        // QAccessible owns it until the destructor here has it deleted.
        // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks)
        place->second = QAccessible::registerAccessibleInterface(new TargetAccessible(*this, ref));
    }
    return QAccessible::accessibleInterface(place->second);
}

void TranscriptAccessible::announceFocus()
{
    QAccessibleInterface* const focused = focusChild();
    if (!focused)
        return;
    QAccessibleEvent event(focused, QAccessible::Focus);
    QAccessible::updateAccessibility(&event);
}

/// A reply is announced when it is whole, not with every word.
void TranscriptAccessible::announceReply(const QString& id)
{
    QAccessibleInterface* const reply = message(id);
    QAccessibleEvent changed(reply, QAccessible::NameChanged);
    QAccessible::updateAccessibility(&changed);
    QAccessibleEvent alert(reply, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

} // namespace varnel
