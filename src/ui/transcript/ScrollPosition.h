#pragma once

#include "ui/transcript/FollowRule.h"
#include "ui/transcript/TranscriptDocument.h"

namespace varnel {

/// What part of a conversation the view shows.
///
/// The position is kept as a row and its distance from the view's top, never as a distance from the top of
/// the conversation: whatever is measured, corrected or added elsewhere, the text that is shown stays where
/// it is.
class ScrollPosition
{
public:
    /// The document must outlive the position.
    explicit ScrollPosition(TranscriptDocument& document);

    /// The height of the view, device pixels.
    void setHeight(int height);
    int height() const { return m_height; }
    /// Where in the conversation the view begins, device pixels.
    qint64 top() const { return m_top; }
    qint64 maximum() const;
    qint64 distanceToEnd() const;
    bool isFollowing() const { return m_follow.isFollowing(); }

    /// Measures what is in view and brings the view back to where it belongs; after every change.
    void settle();
    /// Scrolls as a reader does: moving up lets go of the end, reaching it takes hold again.
    void scrollBy(qint64 distance);
    /// Scrolls to a place between 0, the beginning, and 1, the end.
    void scrollToShare(qreal share);
    void scrollToBegin();
    /// Scrolls to the end and follows it.
    void jumpToEnd();
    /// Stops following; nothing moves.
    void detach();
    /// Follows again if the end is in view: after something was opened or closed with detach() before it.
    void attachAtEnd();
    /// Call before the width changes: the reader keeps the place in the text, not its distance in pixels.
    void keepPlace();
    /// Keeps this row where it is through the next change, rather than the one at the top.
    void holdOn(RowRef ref);
    /// Shows a stretch of a row, moving as little as possible; y and height in device pixels from the row's
    /// top.
    void reveal(RowRef ref, int y, int height);
    /// Another conversation is shown: from its end.
    void reset();
    /// Messages from `first` on are gone.
    void removeFrom(int first);

private:
    void moveTo(qint64 top);
    void takeHold();
    bool measureView();

    TranscriptDocument& m_document;
    FollowRule m_follow;
    std::optional<RowRef> m_anchor;
    qint64 m_offset = 0;          ///< of the anchor's top below the view's top
    std::optional<qreal> m_share; ///< how much of the anchor was above the view before the width changed
    qint64 m_top = 0;
    int m_height = 0;
};

} // namespace varnel
