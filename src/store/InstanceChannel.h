#pragma once

#include "store/DataFolderLock.h"
#include "store/FileAccess.h"

#include <QByteArray>
#include <QSocketNotifier>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

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

    /// Asks the process that holds the folder to show its window and waits, blocking, until it says that it
    /// does. False when it says nothing for `patience`, when nobody listens, and when the one who did is gone
    /// before it looked: one that has just taken the lock may listen a moment later.
    static bool askToRaise(const QString& dataFolder, const QByteArray& token,
                           std::chrono::milliseconds patience);

private:
    void receive();

    QString m_path;
    Raise m_raise;
    FileDescriptor m_socket;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

/// What became of another instance on the same data folder.
enum class OtherInstance {
    None,   ///< there is none, or no more: the folder is taken
    Raised, ///< it shows its window
    Silent, ///< it holds the folder and does not answer
};

/// How the start of an instance goes on.
struct InstanceStart
{
    std::optional<DataFolderLock> lock;
    OtherInstance other = OtherInstance::None;
};

/// Takes the data folder, or asks the instance that holds it to show its window. One that has only just begun
/// does not listen yet, and one that is ending no longer does: this waits for either, blocking, until
/// `patience` is over. Throws Error when locks cannot be kept at all.
InstanceStart takeOrRaise(const QString& dataFolder, const QByteArray& token,
                          std::chrono::milliseconds patience);

} // namespace varnel
