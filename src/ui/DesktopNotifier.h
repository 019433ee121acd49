#pragma once

#include <QObject>
#include <QUuid>

namespace varnel {

/// The desktop's notifications, as far as it has any.
///
/// Nothing waits for it: what the desktop does not show is not shown.
class DesktopNotifier : public QObject
{
    Q_OBJECT

public:
    explicit DesktopNotifier(QObject* parent = nullptr);

    /// Shows a notification about a conversation; it replaces an earlier one about the same.
    /// @param title may hold any text and is shown as it is. @param text is the program's own words: some
    /// desktops read it as markup.
    virtual void show(const QUuid& about, const QString& title, const QString& text);

Q_SIGNALS:
    /// The user pressed the notification.
    /// @param token what lets the window come to the front; may be empty.
    void activated(const QUuid& about, const QByteArray& token);
};

} // namespace varnel
