#pragma once

#include <QObject>

#include <optional>

namespace varnel {

/// What the desktop says about colours and motion, as it changes.
///
/// The palette tells on most desktops. Where the desktop has a word of its own that comes first, because some
/// never change the palette; it is asked without waiting for the answer.
class DesktopHints : public QObject
{
    Q_OBJECT

public:
    /// @param wasDark what was heard in the last run, which holds until something else is.
    explicit DesktopHints(bool wasDark, QObject* parent = nullptr);

    bool dark() const { return m_dark; }
    bool reducedMotion() const { return m_reducedMotion; }

    /// The desktop's own word, or nothing if it has none: then the palette decides.
    void takeDark(std::optional<bool> dark);
    void takeReducedMotion(bool reduced);

    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    void darkChanged();
    void reducedMotionChanged();

private:
    /// Has the system's own service report to takeDark() and takeReducedMotion() from now on.
    void listenToDesktop();
    void setDark(bool dark);

    bool m_dark;
    bool m_desktopSpoke = false;
    bool m_reducedMotion = false;
};

} // namespace varnel
