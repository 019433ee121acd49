#pragma once

#include "base/Clock.h"
#include "engine/AppModel.h"
#include "ui/DesktopNotifier.h"

#include <QObject>

#include <functional>

namespace varnel {

/// Tells the desktop of replies that took long and came while the user was elsewhere.
class ReplyNotices : public QObject
{
    Q_OBJECT

public:
    /// All outlive the object.
    /// @param isWatched whether the user has the window before them.
    ReplyNotices(AppModel& app, const Clock& clock, DesktopNotifier& notifier,
                 std::function<bool()> isWatched, QObject* parent = nullptr);

Q_SIGNALS:
    /// A notification was pressed and its conversation selected: the window is to come to the front.
    void raiseRequested(const QByteArray& token);

private:
    void noteStreaming();
    void noteEnd(const QUuid& session);

    AppModel& m_app;
    const Clock& m_clock;
    DesktopNotifier& m_notifier;
    std::function<bool()> m_isWatched;
    std::chrono::steady_clock::time_point m_began;
    bool m_wasStreaming = false;
};

} // namespace varnel
