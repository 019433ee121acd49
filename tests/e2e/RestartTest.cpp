#include "e2e/WindowFlow.h"
#include "support/Await.h"

#include <QStandardPaths>
#include <QTest>

using namespace varnel::practice;
using namespace varnel::test;
using namespace std::chrono_literals;

/// What a window looked like when it was closed is what it looks like when it is opened again, and there is
/// one of it only.
class RestartTest : public WindowFlow
{
    Q_OBJECT

    ProgramRun m_manager;

    qint64 process() { return m_window->program().process().processId(); }

private Q_SLOTS:
    void initTestCase()
    {
        if (const QString missing = makeWindow(); !missing.isEmpty())
            QSKIP(qPrintable(missing));
        QVERIFY(openWindow());
    }

    void everythingIsAsItWas()
    {
        const QRect place(40, 30, 1000, 700);
        // A paste beyond what a message takes becomes an attachment.
        m_window->type(QStringLiteral("0123456789").repeated(20));
        for (int doubling = 0; doubling < 6; ++doubling) {
            for (const char* const keys : {"ctrl+a", "ctrl+c", "ctrl+End", "ctrl+v"})
                m_window->key(keys);
        }
        for (const char* const keys : {"ctrl+a", "ctrl+c", "ctrl+v"})
            m_window->key(keys);
        QVERIFY(m_window->shows(QStringLiteral("push button | Show in text")));
        m_window->key("ctrl+a");
        m_window->type(QStringLiteral("A draft that waits"));
        m_window->key("ctrl+plus", 2);
        QVERIFY(m_window->press("Menu"));
        QVERIFY(m_window->press("Dark"));
        // While the menu is there, a press of the mouse is the end of it.
        QVERIFY(m_window->showsNoMore(QStringLiteral("menu item | Dark")));
        m_window->display().place(process(), place);
        // The edge of the list, dragged; then the list is put away.
        m_window->display().moveTo(place.topLeft() + QPoint(325, 400));
        m_window->display().pressButton();
        m_window->display().moveTo(place.topLeft() + QPoint(375, 400)); // at one stroke
        m_window->display().releaseButton();
        m_window->key("ctrl+b");
        QVERIFY(m_window->showsNoMore(QStringLiteral("text | Search conversations")));
        QVERIFY(waitUntil([&] { return m_window->display().placeOf(process()) == place; }));
        QVERIFY(m_window->quit());
        const QByteArray state = m_window->stored(QStringLiteral("window.ini"));
        QVERIFY2(state.contains("\nsidebarWidth=300\n"), state.constData());

        QVERIFY(m_window->open());
        QVERIFY(m_window->shows(QStringLiteral("push button | Show in text")));
        QVERIFY(m_window->showsNoMore(QStringLiteral("text | Search conversations")));
        QCOMPARE(m_window->display().placeOf(process()), place);
        QCOMPARE(m_window->stored(QStringLiteral("window.ini")), state);
        QVERIFY(m_window->press("Menu"));
        QVERIFY(m_window->shows(QStringLiteral("menu item | Dark | focusable checked")));
        QVERIFY(m_window->shows(QStringLiteral("menu item | Normal size (125 %)")));
        m_window->key("Escape");
        m_window->key("Return");
        QVERIFY(waitUntil([this] {
            const QByteArray saved = m_window->stored(QStringLiteral("sessions.json"));
            return saved.contains("A draft that waits") && saved.contains("[file]");
        }));
    }

    void aSecondStartBringsTheFirstWindowToTheFront()
    {
        const QString manager = QStandardPaths::findExecutable(QStringLiteral("openbox"));
        if (manager.isEmpty())
            QSKIP("not installed: openbox; scripts/setup does");
        m_manager.setVariable("DISPLAY", m_window->display().name());
        m_manager.startProgram(manager, {QStringLiteral("--sm-disable")});
        ProgramRun other;
        other.setVariable("DISPLAY", m_window->display().name());
        other.setVariable("QT_QPA_PLATFORM", QStringLiteral("xcb"));
        other.setPreferences(windowPreferences(m_host.url()));
        other.start({});
        QVERIFY(
            waitUntil([&] { return m_window->display().focusedProcess() == other.process().processId(); }));
        QProcess second;
        second.setProcessEnvironment(m_window->program().process().processEnvironment());
        second.start(programPath(QStringLiteral("varnel")), QStringList());
        QVERIFY(waitUntil([&] { return second.state() == QProcess::NotRunning; }));
        QCOMPARE(second.exitCode(), 0);
        QVERIFY(waitUntil([&] { return m_window->display().focusedProcess() == process(); }));
        QVERIFY(m_window->quit());
    }
};

QTEST_GUILESS_MAIN(RestartTest)
#include "RestartTest.moc"
