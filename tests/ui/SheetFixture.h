#pragma once

#include "ui/ModelFixture.h"
#include "ui/WindowScreens.h"

#include <QAccessible>
#include <QQuickItem>
#include <QTest>

#include <optional>

namespace varnel::test {

inline void collect(QAccessibleInterface* item, QList<QAccessibleInterface*>& items)
{
    if (!item || item->state().invisible)
        return;
    items.append(item);
    for (int i = 0; i < item->childCount(); ++i)
        collect(item->child(i), items);
}

/// The window with its sheets, seen as assistive programs see it.
struct SheetFixture : ProfileFixture
{
    explicit SheetFixture(bool firstRun = false,
                          practice::PracticePace pace = {.piece = std::chrono::milliseconds(0)})
        : ProfileFixture(pace)
    {
        profile.preferences.setOnboardingComplete(!firstRun);
        profile.environment[QByteArrayLiteral("VARNEL_LIBRARY_BASE")] = host.url().toString().toUtf8();
    }
    /// Opens the window and, by its keys, a sheet.
    void open(Qt::Key sheet = Qt::Key_unknown)
    {
        AppModel::Services services = profile.services();
        services.pages = pages;
        app.emplace(services);
        screens.emplace(*app, clock, profile.folder.filePath(QStringLiteral("window.ini")));
        window = screens->load();
        if (!window)
            qFatal("the window did not load");
        screens->show(*window);
        if (!waitUntil([this] { return window->isActive(); }))
            qFatal("the window did not become active");
        app->checkAtStart();
        if (sheet != Qt::Key_unknown)
            press(sheet, Qt::ControlModifier);
    }
    ~SheetFixture()
    {
        screens.reset();
        app.reset();
    }
    SheetFixture(const SheetFixture&) = delete;
    SheetFixture& operator=(const SheetFixture&) = delete;
    SheetFixture(SheetFixture&&) = delete;
    SheetFixture& operator=(SheetFixture&&) = delete;

    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const
    {
        QTest::keyClick(window, static_cast<Qt::Key>(key), modifiers);
    }
    QList<QAccessibleInterface*> items() const
    {
        QList<QAccessibleInterface*> all;
        collect(QAccessible::queryAccessibleInterface(window), all);
        return all;
    }
    /// Waits until something of that name shows; null if nothing does. The last one lies on top.
    QAccessibleInterface* find(const QString& name) const
    {
        QAccessibleInterface* found = nullptr;
        static_cast<void>(waitUntil(
            [&] {
                for (QAccessibleInterface* const item : items()) {
                    if (item->text(QAccessible::Name) == name)
                        found = item;
                }
                return found != nullptr;
            },
            std::chrono::seconds(3)));
        return found;
    }
    bool shows(const char* name) const { return find(QString::fromUtf8(name)) != nullptr; }
    /// Clicks in the middle of what has that name; whether it was there.
    bool click(const char* name) const
    {
        // What appeared this moment may not have its place yet.
        QRect place;
        const bool there = waitUntil([&] {
            QAccessibleInterface* const item = find(QString::fromUtf8(name));
            const QRect now = item && isEnabled(name) ? item->rect() : QRect();
            return std::exchange(place, now) == now && !now.isEmpty();
        });
        if (there)
            QTest::mouseClick(window, Qt::LeftButton, {}, place.center() - window->position());
        return there;
    }
    /// Goes on by Tab until a control of that name has the keyboard, which brings it into view; whether one
    /// came.
    bool reach(const char* name) const
    {
        for (int i = 0; i < 80 && focusName() != QString::fromUtf8(name); ++i)
            press(Qt::Key_Tab);
        return focusName() == QString::fromUtf8(name);
    }
    /// Puts a text in the place of what a field holds.
    bool fill(const char* field, const QString& text) const
    {
        if (!reach(field))
            return false;
        press(Qt::Key_A, Qt::ControlModifier);
        press(Qt::Key_Delete);
        for (const QChar character : text)
            QTest::keyClick(window, character.toLatin1());
        return true;
    }
    bool isEnabled(const char* name) const
    {
        QAccessibleInterface* const item = find(QString::fromUtf8(name));
        const auto* const control = item ? qobject_cast<QQuickItem*>(item->object()) : nullptr;
        return control && control->isEnabled();
    }
    QString valueOf(const char* field) const
    {
        QAccessibleInterface* const item = find(QString::fromUtf8(field));
        return item ? item->text(QAccessible::Value) : QStringLiteral("(not there)");
    }
    QString focusName() const
    {
        QAccessibleInterface* const focus = QAccessible::queryAccessibleInterface(window->activeFocusItem());
        return focus ? focus->text(QAccessible::Name) : QString();
    }

    template <typename T>
    T& part(const char* name)
    {
        return *screens->engine().singletonInstance<T*>(qmlTypeId("Varnel", 1, 0, name));
    }

    PageNetwork* pages = nullptr;
    std::optional<AppModel> app;
    std::optional<WindowScreens> screens;
    QQuickWindow* window = nullptr;
};

} // namespace varnel::test
