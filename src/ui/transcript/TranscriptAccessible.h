#pragma once

#include "ui/transcript/TranscriptPainter.h"

#include <QAccessible>
#include <QAccessibleObject>
#include <QPointer>

#include <map>

namespace varnel {

class TranscriptView;

/// Makes every TranscriptView known to assistive technology from now on. In QML the item also needs
/// `Accessible.role: Accessible.List`, which is what puts an item into its window's tree.
void installTranscriptAccessibility();

/// The transcript as a list: one child for each message near the view, whose children are its links and
/// buttons.
class TranscriptAccessible : public QAccessibleObject
{
public:
    explicit TranscriptAccessible(TranscriptView* view);
    ~TranscriptAccessible() override;
    TranscriptAccessible(const TranscriptAccessible&) = delete;
    TranscriptAccessible& operator=(const TranscriptAccessible&) = delete;
    TranscriptAccessible(TranscriptAccessible&&) = delete;
    TranscriptAccessible& operator=(TranscriptAccessible&&) = delete;

    QAccessibleInterface* parent() const override;
    int childCount() const override;
    QAccessibleInterface* child(int index) const override;
    int indexOfChild(const QAccessibleInterface* child) const override;
    QAccessibleInterface* childAt(int x, int y) const override;
    QAccessibleInterface* focusChild() const override;
    QWindow* window() const override;
    QString text(QAccessible::Text kind) const override;
    QRect rect() const override;
    QAccessible::Role role() const override { return QAccessible::List; }
    QAccessible::State state() const override;

    TranscriptView* view() const;
    /// The interfaces of a message and of a target; they belong to this one.
    QAccessibleInterface* message(const QString& id) const;
    QAccessibleInterface* target(TargetRef ref) const;
    /// The rectangle in screen coordinates of one in the view.
    QRect onScreen(const QRectF& rect) const;

private:
    struct Range
    {
        int first = 0;
        int count = 0;
    };
    Range messagesNearView() const;
    void announceFocus();
    void announceReply(const QString& id);

    mutable std::map<QString, QAccessible::Id> m_messages;
    mutable std::map<TargetRef, QAccessible::Id> m_targets;
};

} // namespace varnel
