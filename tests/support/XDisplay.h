#pragma once

#include <QByteArray>
#include <QImage>
#include <QProcess>
#include <QRect>
#include <QStringList>
#include <QUrl>

namespace varnel::test {

/// Preferences that lead a window to a server, with everything behind it that is asked at a first start.
QByteArray windowPreferences(const QUrl& server);

/// An X display of its own that nobody sees, with a hand on its keyboard and mouse. Its screen is 1120 by
/// 760, and no window manager is on it.
class XDisplay
{
public:
    /// Throws std::runtime_error if the display does not start.
    XDisplay();
    XDisplay(const XDisplay&) = delete;
    XDisplay& operator=(const XDisplay&) = delete;
    XDisplay(XDisplay&&) = delete;
    XDisplay& operator=(XDisplay&&) = delete;
    ~XDisplay();

    /// The programs that are missing for it; empty if all are here.
    static QStringList missingPrograms();

    const QString& name() const { return m_name; }
    /// Gives the keyboard to the only window of a process; false while it has none.
    bool focusWindow(qint64 process) const;
    void key(const QString& keys) const;
    void type(const QString& text) const;
    void click(QPoint place, int button = 1, int times = 1) const;
    /// Moves the pointer, and presses or lets go of its first button.
    void moveTo(QPoint place) const;
    void pressButton() const;
    void releaseButton() const;
    /// The process whose window has the keyboard; 0 if none has.
    qint64 focusedProcess() const;
    /// Where the window of a process stands and how large it is, without a frame; empty while it has none.
    QRect placeOf(qint64 process) const;
    /// Moves the window of a process and changes its size.
    void place(qint64 process, const QRect& place) const;
    QImage picture(const QRect& area) const;
    /// Waits until two pictures in a row are the same.
    QImage pictureAtRest(const QRect& area) const;

private:
    QString windowOf(qint64 process) const;
    QByteArray run(const QString& program, const QStringList& arguments, bool* succeeded = nullptr) const;

    QProcess m_server;
    QString m_name;
};

} // namespace varnel::test
