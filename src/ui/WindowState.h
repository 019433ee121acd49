#pragma once

#include <QRect>
#include <QString>

namespace varnel {

/// The colours of the window: chosen by the desktop, or the same whatever it says.
enum class ColourScheme { System, Light, Dark };

/// How the window was left: where it stood and what was set by looking rather than in the preferences.
struct WindowState
{
    /// Of the window when it is not maximised, without its frame; empty if it was never shown.
    QRect geometry;
    bool maximized = false;
    int sidebarWidth = 260;
    bool sidebarShown = true;
    ColourScheme scheme = ColourScheme::System;
    /// What the desktop said last, so that the first frame has its colours before it is heard again.
    bool desktopWasDark = false;
    double zoom = 1;
    /// How far the first run had come, counted from 0.
    int firstRunStep = 0;
    /// Enter is a new line, and sends together with Control.
    bool sendsWithControl = false;

    bool operator==(const WindowState&) const = default;
};

/// The file that keeps the state of the user's window.
QString windowStateFile();

/// Reads the state; a value that is missing or makes no sense has its default. Never fails: how a window was
/// left is not worth a complaint.
WindowState loadWindowState(const QString& file);

/// Writes the state, with the folder of the file if it is missing. Whether it could is not reported, for the
/// same reason.
void saveWindowState(const QString& file, const WindowState& state);

} // namespace varnel
