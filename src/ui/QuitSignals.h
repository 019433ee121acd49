#pragma once

#include <QSocketNotifier>

#include <memory>

namespace varnel {

/// Makes the signals by which a session or a terminal ends a program an ordinary quit, so that what is to be
/// done at quitting is done: SIGTERM, SIGINT and SIGHUP, but none that was ignored when the program started.
///
/// There is one at a time, beside the application object. A signal that comes again while the program still
/// quits ends it at once.
class QuitSignals
{
public:
    QuitSignals();
    QuitSignals(const QuitSignals&) = delete;
    QuitSignals& operator=(const QuitSignals&) = delete;
    QuitSignals(QuitSignals&&) = delete;
    QuitSignals& operator=(QuitSignals&&) = delete;
    ~QuitSignals();

private:
    std::unique_ptr<QSocketNotifier> m_notifier; ///< none if the system has no pipe left
};

} // namespace varnel
