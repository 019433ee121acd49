#pragma once

#include <QtGlobal>

namespace varnel {

/// Whether the view keeps to the end of the conversation while a reply grows.
///
/// It follows only while the end is near. Whatever a reader does to read something else lets go at once, even
/// when it moves by less than the tolerance; only reaching the end or asking for it takes hold again. Text
/// that merely arrives never changes the answer.
class FollowRule
{
public:
    /// How near the end counts as being there, in logical pixels at zoom 1.
    static constexpr int tolerance = 24;

    bool isFollowing() const { return m_following; }

    /// "Jump to latest", sending, or a conversation that was just opened.
    void attach() { m_following = true; }
    /// Wheel up, Page Up, dragging, selecting text.
    void detach() { m_following = false; }
    /// The reader moved down (or jumped), and the end of the text is now `distance` below the view's end.
    void movedTo(qreal distance, qreal zoom) { m_following = distance <= tolerance * zoom; }

private:
    bool m_following = true;
};

} // namespace varnel
