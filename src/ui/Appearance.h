#pragma once

#include "ui/DesktopHints.h"
#include "ui/EngineObjects.h"
#include "ui/WindowState.h"

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

class QWindow;

namespace varnel {

/// Whether the window is light or dark, how large everything is, and whether it moves; Theme makes colours
/// and sizes of it.
class Appearance : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(Scheme scheme READ scheme WRITE setScheme NOTIFY schemeChanged)
    Q_PROPERTY(bool dark READ dark NOTIFY darkChanged)
    Q_PROPERTY(double zoom READ zoom NOTIFY zoomChanged)
    Q_PROPERTY(bool reducedMotion READ reducedMotion NOTIFY reducedMotionChanged)
    Q_PROPERTY(QString uiFamily READ uiFamily CONSTANT)
    Q_PROPERTY(QString codeFamily READ codeFamily CONSTANT)
    Q_PROPERTY(bool rightToLeft READ rightToLeft CONSTANT)
    Q_PROPERTY(QString displayFamily READ displayFamily CONSTANT)

public:
    enum Scheme { System, Light, Dark };
    Q_ENUM(Scheme)

    /// @param hints what the desktop wants; outlives the object.
    Appearance(DesktopHints& hints, const WindowState& state, QObject* parent = nullptr);
    static Appearance* create(QQmlEngine* engine, QJSEngine*) { return provided<Appearance>(engine); }

    Scheme scheme() const { return m_scheme; }
    bool dark() const { return m_dark; }
    /// 1 is the size of the drawings; from 0.5 to 3.
    double zoom() const { return m_zoom; }
    bool reducedMotion() const { return m_hints.reducedMotion(); }
    /// Whether the language of the interface is written from right to left.
    bool rightToLeft() const;
    QString uiFamily() const;
    QString codeFamily() const;
    /// The face of the greeting; the interface's where it is not installed.
    QString displayFamily() const;

    void setScheme(Scheme scheme);
    Q_INVOKABLE void zoomIn();
    Q_INVOKABLE void zoomOut();
    Q_INVOKABLE void resetZoom();
    /// Keys as this system writes them.
    /// @param keys as in "Ctrl+Shift+C".
    Q_INVOKABLE static QString nativeKeys(const QString& keys);
    /// Lets the wheel zoom together with Control, wherever in the window it is turned.
    void watchWheel(QWindow& window);

    /// Puts what is to be remembered into the state.
    void store(WindowState& state) const;

Q_SIGNALS:
    void schemeChanged();
    void darkChanged();
    void zoomChanged();
    void reducedMotionChanged();

private:
    void setZoom(double zoom);
    void stepZoom(int by);
    void updateDark();
    bool eventFilter(QObject* watched, QEvent* event) override;

    DesktopHints& m_hints;
    Scheme m_scheme;
    double m_zoom;
    bool m_dark = false;
    int m_turned = 0; // of a notch of the wheel
};

} // namespace varnel
