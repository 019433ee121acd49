#pragma once

#include "ui/transcript/SampleConversation.h"
#include "ui/transcript/TranscriptView.h"

#include <QCoreApplication>
#include <QHoverEvent>
#include <QQuickWindow>
#include <QTest>
#include <QWheelEvent>

namespace varnel::test {

/// A window that shows a conversation and nothing else.
struct TranscriptStage
{
    TranscriptModel model{nullptr, [] { return TranscriptMessage::TimePoint{} + std::chrono::seconds(5); }};
    QQuickWindow window;
    TranscriptView view{window.contentItem()};

    explicit TranscriptStage(std::vector<TranscriptMessage> messages, QSize size = {1000, 700})
    {
        resize(size);
        view.setModel(&model);
        model.setMessages(std::move(messages));
        window.show();
        if (!QTest::qWaitForWindowExposed(&window))
            qFatal("the window does not show");
        view.rowsInView();
    }
    void resize(QSize size)
    {
        window.resize(size);
        view.setSize(size);
    }
    /// Turns the wheel over the middle of the view, upwards for positive numbers.
    void wheel(int notches)
    {
        const QPointF point(view.width() / 2, view.height() / 2);
        QWheelEvent event(point, window.mapToGlobal(point), {}, {0, notches * 120}, Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&window, &event);
    }
    /// Takes the pointer away, so that no message shows what can be done with it.
    void leave()
    {
        QHoverEvent event(QEvent::HoverLeave, {-1, -1}, {-1, -1}, {-1, -1});
        QCoreApplication::sendEvent(&view, &event);
    }
    /// What the window shows, without the scroll bar: that one does move.
    QImage picture()
    {
        const int width = window.width() - static_cast<int>(TranscriptScrollBar::thickness);
        return window.grabWindow().copy(0, 0, width, window.height());
    }
};

} // namespace varnel::test
