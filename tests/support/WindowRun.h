#pragma once

#include "support/ProgramRun.h"
#include "support/XDisplay.h"

#include <QJsonObject>

namespace varnel::test {

/// The built program with its window on a display and a session bus of its own, with a hand on its keyboard
/// and mouse, and with what it tells assistive programs.
///
/// Things are found by their accessible names, so that a test reads like what a person does and does not
/// depend on how many stops of the Tab key there are between two of them.
class WindowRun
{
public:
    /// Throws std::runtime_error if the display or the accessibility bus does not start.
    WindowRun();
    WindowRun(const WindowRun&) = delete;
    WindowRun& operator=(const WindowRun&) = delete;
    WindowRun(WindowRun&&) = delete;
    WindowRun& operator=(WindowRun&&) = delete;
    ~WindowRun();

    /// The programs that are missing for it, as a text for QSKIP(); empty if all are here.
    static QString missing();

    const XDisplay& display() const { return m_display; }
    ProgramRun& program() { return m_program; }
    const ProgramRun& program() const { return m_program; }

    /// The address of the session bus.
    const QString& bus() const { return m_address; }

    /// Starts the program, with the preferences that are there, and gives its window the keyboard.
    bool open();
    /// Quits by the key for it; false if the program does not end well or has complained about anything.
    bool quit();

    void key(const char* keys, int times = 1) const;
    void type(const QString& text) const { m_display.type(text); }
    /// Waits until something of that name can be pressed, and presses it.
    bool press(const char* name);
    /// Waits until something of that name can be focused, and gives it the keyboard.
    bool focus(const char* name);
    /// Goes on by the Tab key until the thing that tree() tells of like that has the keyboard; false if it is
    /// not on the way.
    bool tabTo(const QString& line);
    /// What shows, a line "role | name | states" each.
    QStringList tree() { return ask(QStringLiteral("tree")); }
    /// Waits until a line of tree() begins like that, or until none does any more.
    bool shows(const QString& line);
    bool showsNoMore(const QString& line);
    /// What the window told of its own accord since this was last asked.
    QStringList heard() { return ask(QStringLiteral("heard")); }

    /// What the file of that name in the profile holds; empty while there is none.
    QByteArray stored(const QString& name) const;
    /// The conversations as they stand on the disk, the newest first.
    QList<QJsonObject> conversations() const;

private:
    QStringList ask(const QString& order);

    XDisplay m_display;
    ProgramRun m_bus;
    QString m_address;
    ProgramRun m_program;
};

} // namespace varnel::test
