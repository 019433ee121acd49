#pragma once

#include "store/FileAccess.h"

#include <QByteArray>
#include <QSocketNotifier>
#include <QString>

#include <functional>
#include <memory>

namespace varnel {

/// How a second process that wants the same data folder asks the first to show its window. Held by the one
/// that holds the folder's lock.
class InstanceChannel
{
public:
    /// @param token lets the desktop bring a window to the front; may be empty.
    using Raise = std::function<void(const QByteArray& token)>;

    /// Listens from now on and calls `raise` from the event loop. Throws Error when it cannot.
    InstanceChannel(const QString& dataFolder, Raise raise);
    InstanceChannel(const InstanceChannel&) = delete;
    InstanceChannel& operator=(const InstanceChannel&) = delete;
    InstanceChannel(InstanceChannel&&) = delete;
    InstanceChannel& operator=(InstanceChannel&&) = delete;
    ~InstanceChannel();

    /// Asks the process that holds the folder to show its window; never waits. False when nobody listens: one
    /// that has just taken the lock may do so a moment later.
    static bool askToRaise(const QString& dataFolder, const QByteArray& token);

private:
    void receive();

    QString m_path;
    Raise m_raise;
    FileDescriptor m_socket;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace varnel
