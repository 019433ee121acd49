#include "ui/ModelFixture.h"
#include "ui/QuietTest.h"
#include "ui/WindowScreens.h"

#include <QAccessible>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QPalette>
#include <QQuickItem>
#include <QTest>

using namespace varnel;
using namespace varnel::test;
using namespace std::chrono_literals;

namespace {

/// The whole window, driven through its events.
struct WindowFixture : ModelFixture
{
    explicit WindowFixture(practice::PracticePace pace = {.piece = 0ms})
        : ModelFixture(pace)
        , window(screens.load())
    {
        if (!window)
            qFatal("the window did not load");
        screens.show(*window);
        if (!waitUntil([this] { return window->isActive(); }))
            qFatal("the window did not become active");
    }

    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const
    {
        QTest::keyClick(window, static_cast<Qt::Key>(key), modifiers);
    }
    void type(const QString& text) const
    {
        for (const QChar character : text)
            QTest::keyClick(window, character.toLatin1());
    }
    Appearance* appearance()
    {
        return screens.engine().singletonInstance<Appearance*>(qmlTypeId("Varnel", 1, 0, "Appearance"));
    }
    QString focusName() const
    {
        QAccessibleInterface* const focus = QAccessible::queryAccessibleInterface(window->activeFocusItem());
        return focus ? focus->text(QAccessible::Name) : QString();
    }

    WindowScreens screens{app, clock, profile.folder.filePath(QStringLiteral("window.ini"))};
    QQuickWindow* window;
};

void collectNames(QAccessibleInterface* item, QStringList& unnamed, QStringList& names)
{
    if (!item || item->state().invisible)
        return;
    const QString name = item->text(QAccessible::Name);
    if (item->state().focusable && name.isEmpty())
        unnamed.append(QString::fromLatin1(qAccessibleRoleString(item->role())));
    names.append(name);
    for (int i = 0; i < item->childCount(); ++i)
        collectNames(item->child(i), unnamed, names);
}

/// The first item that shows with a name; null without one.
QAccessibleInterface* find(QAccessibleInterface* item, const QString& name)
{
    if (!item || item->state().invisible || item->text(QAccessible::Name) == name)
        return item && !item->state().invisible ? item : nullptr;
    for (int i = 0; i < item->childCount(); ++i) {
        if (QAccessibleInterface* const found = find(item->child(i), name))
            return found;
    }
    return nullptr;
}

} // namespace

class WindowTest : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void aPromptIsSentByEnterAlone()
    {
        WindowFixture fixture;
        QCOMPARE(fixture.focusName(), QStringLiteral("Message"));
        fixture.press(Qt::Key_Return); // nothing to send
        fixture.type(QStringLiteral("one"));
        fixture.press(Qt::Key_Return, Qt::ShiftModifier);
        fixture.type(QStringLiteral("two"));
        QCOMPARE(fixture.app.draft(), QStringLiteral("one\ntwo"));
        QCOMPARE(fixture.app.selectedSession()->messages.size(), 0U);

        // While an input method composes, Enter is the method's.
        QInputMethodEvent composing(QStringLiteral("に"), {});
        QCoreApplication::sendEvent(fixture.window->activeFocusItem(), &composing);
        fixture.press(Qt::Key_Return);
        QCOMPARE(fixture.app.selectedSession()->messages.size(), 0U);
        QInputMethodEvent committed;
        committed.setCommitString(QStringLiteral("日"));
        QCoreApplication::sendEvent(fixture.window->activeFocusItem(), &committed);
        fixture.app.setDraft(QStringLiteral("one\ntwo日"));
        fixture.press(Qt::Key_Return);
        QCOMPARE(fixture.app.selectedSession()->messages.front().content, QStringLiteral("one\ntwo日"));
        QCOMPARE(fixture.app.draft(), QString());
        QVERIFY(waitUntil([&] { return !fixture.app.isStreaming(); }));

        auto* const composer = fixture.screens.engine().singletonInstance<ComposerState*>(
            qmlTypeId("Varnel", 1, 0, "ComposerState"));
        fixture.press(Qt::Key_Up);
        QCOMPARE(composer->text(), QStringLiteral("one\ntwo日"));
        fixture.press(Qt::Key_Up); // moves the cursor now
        QCOMPARE(composer->text(), QStringLiteral("one\ntwo日"));
        QCOMPARE(fixture.app.draft(), QString());
    }

    void escapeClosesThePopupThenStopsTheReply()
    {
        WindowFixture fixture({.piece = 20ms});
        fixture.app.checkConnection();
        QVERIFY(waitUntil([&] { return !fixture.app.installedModels().empty(); }));
        fixture.type(QStringLiteral("hello"));
        fixture.press(Qt::Key_Return);
        fixture.press(Qt::Key_M, Qt::ControlModifier | Qt::ShiftModifier);
        QVERIFY(waitUntil([&] { return fixture.focusName() == QStringLiteral("Find a model"); }));
        fixture.press(Qt::Key_Escape);
        QVERIFY(waitUntil([&] { return fixture.focusName() == QStringLiteral("Message"); }));
        QVERIFY(fixture.app.isStreaming());
        fixture.press(Qt::Key_Escape);
        QVERIFY(waitUntil([&] { return !fixture.app.isStreaming(); }));
        QCOMPARE(fixture.app.statusMessage(), QStringLiteral("Stopped."));
    }

    void theModelIsChosenByTypingAndArrows()
    {
        WindowFixture fixture;
        fixture.app.checkConnection();
        QVERIFY(waitUntil([&] { return !fixture.app.installedModels().empty(); }));
        fixture.press(Qt::Key_M, Qt::ControlModifier | Qt::ShiftModifier);
        QVERIFY(waitUntil([&] { return fixture.focusName() == QStringLiteral("Find a model"); }));
        fixture.type(QStringLiteral("14b")); // one
        fixture.press(Qt::Key_Return);
        QCOMPARE(fixture.app.selectedModel(), QStringLiteral("practice-thinking:14b"));
        QVERIFY(waitUntil([&] { return fixture.focusName() == QStringLiteral("Message"); }));
        fixture.press(Qt::Key_M, Qt::ControlModifier | Qt::ShiftModifier);
        QVERIFY(waitUntil([&] { return fixture.focusName() == QStringLiteral("Find a model"); }));
        fixture.press(Qt::Key_Down); // from the one that answers to the one below
        fixture.press(Qt::Key_Return);
        QCOMPARE(fixture.app.selectedModel(), QStringLiteral("practice-markdown:8b"));
    }

    void draftsAndCursorsStayWithTheirConversation()
    {
        WindowFixture fixture;
        QVERIFY(fixture.begin(QStringLiteral("first")));
        fixture.type(QStringLiteral("abcd"));
        fixture.press(Qt::Key_Left);
        fixture.press(Qt::Key_Left);
        fixture.press(Qt::Key_N, Qt::ControlModifier);
        fixture.type(QStringLiteral("other"));
        fixture.press(Qt::Key_PageDown, Qt::ControlModifier);
        fixture.type(QStringLiteral("X"));
        QCOMPARE(fixture.app.draft(), QStringLiteral("abXcd"));
        fixture.press(Qt::Key_PageUp, Qt::ControlModifier);
        fixture.type(QStringLiteral("!"));
        QCOMPARE(fixture.app.draft(), QStringLiteral("other!"));
    }

    void conversationsAreFoundAndRenamedByKeyboard()
    {
        WindowFixture fixture;
        QVERIFY(fixture.begin(QStringLiteral("whales")));
        QVERIFY(fixture.begin(QStringLiteral("trains")));
        fixture.press(Qt::Key_K, Qt::ControlModifier); // also where the text field would cut the line
        QCOMPARE(fixture.focusName(), QStringLiteral("Search conversations"));
        fixture.type(QStringLiteral("wha"));
        fixture.press(Qt::Key_Return);
        QCOMPARE(fixture.app.selectedTitle(), QStringLiteral("whales"));
        fixture.press(Qt::Key_K, Qt::ControlModifier);
        fixture.press(Qt::Key_Escape);
        QCOMPARE(fixture.app.sessionQuery(), QString());
        QCOMPARE(fixture.focusName(), QStringLiteral("Message"));

        fixture.press(Qt::Key_F2);
        QCOMPARE(fixture.focusName(), QStringLiteral("Title of the conversation"));
        fixture.type(QStringLiteral("sea"));
        fixture.press(Qt::Key_Escape);
        QCOMPARE(fixture.app.selectedTitle(), QStringLiteral("whales"));
        fixture.press(Qt::Key_F2);
        fixture.type(QStringLiteral("sea"));
        fixture.press(Qt::Key_Return);
        QCOMPARE(fixture.app.selectedTitle(), QStringLiteral("sea"));
        QCOMPARE(fixture.focusName(), QStringLiteral("Message"));
    }

    void everyControlHasANameAndTabReachesIt()
    {
        WindowFixture fixture;
        QVERIFY(fixture.begin(QStringLiteral("hello")));
        QStringList unnamed;
        QStringList names;
        collectNames(QAccessible::queryAccessibleInterface(fixture.window), unnamed, names);
        QCOMPARE(unnamed, QStringList());
        fixture.type(QStringLiteral("x")); // Send is off without a text

        QStringList order;
        for (int i = 0; i < 40; ++i) {
            fixture.press(Qt::Key_Tab);
            const QString name = fixture.focusName();
            QVERIFY2(!name.isEmpty(), fixture.window->activeFocusItem()->metaObject()->className());
            if (!order.contains(name)) // a conversation has several places to stop at
                order.append(name);
        }
        for (const char* const expected :
             {"Search conversations", "New conversation", "hello, 12:00", "Hide the conversations", "hello",
              "Connect", "Menu", "Message", "Send with practice-chat:70b", "Send"})
            QVERIFY2(order.contains(QString::fromLatin1(expected)),
                     qPrintable(QString::fromLatin1(expected) + QStringLiteral(" is not in: ") +
                                order.join(QStringLiteral(", "))));
    }

    void coloursFollowTheSystemUntilSomeAreChosen()
    {
        const QColor light(0xFB, 0xFA, 0xF8);
        const QColor dark(0x19, 0x1A, 0x1B);
        WindowFixture fixture;
        Appearance* const appearance = fixture.appearance();
        QVERIFY(appearance);
        QVERIFY(fixture.begin(QStringLiteral("hello")));
        QCOMPARE(fixture.window->color(), light);
        const auto showsAllIn = [&](const QColor& background) {
            if (fixture.window->color() != background)
                return false;
            const QImage picture = fixture.window->grabWindow();
            // In the header, between two messages, and where the status is told.
            return picture.pixelColor(700, 4) == background && picture.pixelColor(700, 500) == background &&
                   picture.pixelColor(300, 640) == background;
        };
        QVERIFY(showsAllIn(light));
        QGuiApplication::setPalette(QPalette(Qt::black));
        QVERIFY(waitUntil([&] { return showsAllIn(dark); }));
        appearance->setScheme(Appearance::Light);
        QVERIFY(waitUntil([&] { return showsAllIn(light); }));
        appearance->setScheme(Appearance::System);
        QVERIFY(waitUntil([&] { return showsAllIn(dark); }));
        QGuiApplication::setPalette(QPalette(Qt::white));
        QVERIFY(waitUntil([&] { return showsAllIn(light); }));
    }

    void theWheelZoomsWithControl()
    {
        WindowFixture fixture;
        QVERIFY(fixture.begin(QStringLiteral("hello")));
        const auto* const appearance = fixture.appearance();
        const auto turn = [&](int angle) {
            const QPointF point(700, 300);
            QWheelEvent event(point, fixture.window->mapToGlobal(point), {}, {0, angle}, Qt::NoButton,
                              Qt::ControlModifier, Qt::NoScrollPhase, false);
            QCoreApplication::sendEvent(fixture.window, &event);
        };
        turn(120);
        QCOMPARE(appearance->zoom(), 1.1);
        turn(-60);
        QCOMPARE(appearance->zoom(), 1.1);
        turn(-60);
        turn(-120);
        QCOMPARE(appearance->zoom(), 0.9);
    }

    void theMenuOfAConversationOpensByKeyboard()
    {
        WindowFixture fixture;
        QVERIFY(fixture.begin(QStringLiteral("whales")));
        fixture.clock.advance(1min);
        QVERIFY(fixture.begin(QStringLiteral("trains")));
        for (int i = 0; i < 40 && !fixture.focusName().startsWith(QStringLiteral("trains,")); ++i)
            fixture.press(Qt::Key_Tab);
        fixture.press(Qt::Key_Down); // to the older one
        QCOMPARE(fixture.app.selectedTitle(), QStringLiteral("whales"));
        fixture.press(Qt::Key_F10, Qt::ShiftModifier);
        QVERIFY(waitUntil([&] {
            fixture.press(Qt::Key_Down);
            return fixture.focusName() == QStringLiteral("Pin");
        }));
        fixture.press(Qt::Key_Return);
        QVERIFY(fixture.app.selectedSession()->pinned);
        QCOMPARE(fixture.app.sessions().front().title, QStringLiteral("whales"));
    }

    void escapeClosesTheFindBarThenStopsTheReply()
    {
        WindowFixture fixture({.piece = 20ms});
        fixture.press(Qt::Key_F, Qt::ControlModifier); // nothing to find anything in
        QCOMPARE(fixture.focusName(), QStringLiteral("Message"));
        fixture.type(QStringLiteral("hello"));
        fixture.press(Qt::Key_Return);
        QVERIFY(waitUntil([&] { return fixture.app.isStreaming(); }));
        fixture.press(Qt::Key_F, Qt::ControlModifier);
        QCOMPARE(fixture.focusName(), QStringLiteral("Find in the conversation"));
        fixture.type(QStringLiteral("hello"));
        QAccessibleInterface* const root = QAccessible::queryAccessibleInterface(fixture.window);
        QVERIFY(waitUntil([&] { return find(root, QStringLiteral("1 of 1")); }));
        fixture.press(Qt::Key_Escape);
        QCOMPARE(fixture.focusName(), QStringLiteral("Message"));
        QVERIFY(fixture.app.isStreaming());
        fixture.press(Qt::Key_Escape);
        QVERIFY(waitUntil([&] { return !fixture.app.isStreaming(); }));
    }

    void aMessageIsForkedByKeyboardAndTheForkTakenBack()
    {
        WindowFixture fixture;
        QVERIFY(fixture.begin(QStringLiteral("hello")));
        const QUuid original = fixture.app.selection();
        fixture.press(Qt::Key_Backtab, Qt::ShiftModifier);
        QVERIFY(
            waitUntil([&] { return fixture.window->activeFocusItem()->inherits("varnel::TranscriptView"); }));
        fixture.press(Qt::Key_Return); // the last thing to press is what else there is
        QVERIFY(waitUntil([&] {
            fixture.press(Qt::Key_Down);
            return fixture.focusName() == QStringLiteral("Fork to a new conversation");
        }));
        fixture.press(Qt::Key_Return);
        QVERIFY(waitUntil([&] { return fixture.app.selection() != original; }));
        QCOMPARE(fixture.app.sessions().size(), 2U);
        const QString forked = QStringLiteral("Forked to a new conversation");
        QVERIFY(find(QAccessible::queryAccessibleInterface(fixture.window), forked));
        fixture.app.undoEdit();
        QCOMPARE(fixture.app.selection(), original);
        QVERIFY(!find(QAccessible::queryAccessibleInterface(fixture.window), forked));
    }

    void theWindowIsWholeAtEverySize_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<int>("zoomSteps");
        QTest::newRow("smallest") << QSize(920, 560) << 0;
        QTest::newRow("smallest, large") << QSize(920, 560) << 3;
        QTest::newRow("smallest, largest") << QSize(920, 560) << 7;
    }
    void theWindowIsWholeAtEverySize()
    {
        QFETCH(QSize, size);
        QFETCH(int, zoomSteps);
        const WindowFixture fixture;
        QCOMPARE(fixture.window->minimumSize(), QSize(920, 560));
        fixture.window->resize(size);
        for (int step = 0; step < zoomSteps; ++step)
            fixture.press(Qt::Key_Plus, Qt::ControlModifier);
        fixture.press(Qt::Key_Slash, Qt::ControlModifier);
        const QRectF area({}, QSizeF(size));
        const auto reaches = [&](const QString& name) {
            QAccessibleInterface* const item =
                find(QAccessible::queryAccessibleInterface(fixture.window), name);
            const QPoint corner = fixture.window->position();
            return item && area.contains(QRectF(item->rect().translated(-corner)));
        };
        for (const char* const name : {"Search conversations", "New conversation", "Menu", "Message", "Send"})
            QVERIFY2(waitUntil([&] { return reaches(QString::fromLatin1(name)); }), name);
    }

    void shapesAndDirectionsLoadWithoutAWarning()
    {
        QGuiApplication::setLayoutDirection(Qt::RightToLeft);
        {
            WindowFixture fixture;
            QVERIFY(fixture.begin(QStringLiteral("hello")));
            fixture.press(Qt::Key_Plus, Qt::ControlModifier);
            fixture.press(Qt::Key_B, Qt::ControlModifier);
            fixture.press(Qt::Key_Slash, Qt::ControlModifier);
            fixture.window->resize(920, 560);
            QVERIFY(waitUntil([&] { return fixture.window->contentItem()->width() == 920; }));
            fixture.press(Qt::Key_Escape);
        }
        QGuiApplication::setLayoutDirection(Qt::LeftToRight);
        const WindowFixture again;
        QCOMPARE(loadWindowState(again.profile.folder.filePath(QStringLiteral("window.ini"))).zoom, 1.0);
    }
};

QTEST_MAIN(WindowTest)
#include "WindowTest.moc"
