#pragma once

#include "practice_host/PracticeHost.h"
#include "support/WindowRun.h"

#include <QObject>

#include <memory>

namespace varnel::test {

/// What the flows through one window have in common: a practice host, and the window that is connected to it.
class WindowFlow : public QObject
{
protected:
    /// Makes the window, not open yet; yields why it cannot be made here, as a text for QSKIP().
    QString makeWindow(const QByteArray& model = "practice-chat:70b")
    {
        QString missing = WindowRun::missing();
        if (!missing.isEmpty())
            return missing;
        m_host.listen();
        m_window = std::make_unique<WindowRun>();
        m_window->program().setPreferences(
            windowPreferences(m_host.url()).replace("practice-chat:70b", model));
        return {};
    }
    /// Opens it and waits until it says that it is connected.
    bool openWindow()
    {
        return m_window->open() && m_window->shows(QStringLiteral("status bar | Connected"));
    }

    practice::PracticeHost m_host{{.piece = std::chrono::milliseconds(0)}};
    std::unique_ptr<WindowRun> m_window;
};

} // namespace varnel::test
