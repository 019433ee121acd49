#pragma once

#include <QColor>
#include <QFont>
#include <QObject>

namespace varnel {

/// Colours, fonts and sizes of the transcript. Sizes are logical pixels at zoom 1; px() gives them at the
/// present zoom. The defaults are the light theme; the window sets what its theme says.
class TranscriptStyle : public QObject
{
    Q_OBJECT
    Q_PROPERTY(qreal zoom MEMBER zoom NOTIFY metricsChanged)
    Q_PROPERTY(bool mirrored MEMBER mirrored NOTIFY metricsChanged)
    Q_PROPERTY(QString bodyFamily MEMBER bodyFamily NOTIFY metricsChanged)
    Q_PROPERTY(QString codeFamily MEMBER codeFamily NOTIFY metricsChanged)
    Q_PROPERTY(QColor background MEMBER background NOTIFY coloursChanged)
    Q_PROPERTY(QColor text MEMBER text NOTIFY coloursChanged)
    Q_PROPERTY(QColor secondary MEMBER secondary NOTIFY coloursChanged)
    Q_PROPERTY(QColor bubble MEMBER bubble NOTIFY coloursChanged)
    Q_PROPERTY(QColor code MEMBER code NOTIFY coloursChanged)
    Q_PROPERTY(QColor accent MEMBER accent NOTIFY coloursChanged)
    Q_PROPERTY(QColor onAccent MEMBER onAccent NOTIFY coloursChanged)
    Q_PROPERTY(QColor warning MEMBER warning NOTIFY coloursChanged)
    Q_PROPERTY(QColor error MEMBER error NOTIFY coloursChanged)
    Q_PROPERTY(QColor border MEMBER border NOTIFY coloursChanged)
    Q_PROPERTY(QColor syntaxKeyword MEMBER syntaxKeyword NOTIFY coloursChanged)
    Q_PROPERTY(QColor syntaxString MEMBER syntaxString NOTIFY coloursChanged)
    Q_PROPERTY(QColor syntaxNumber MEMBER syntaxNumber NOTIFY coloursChanged)
    Q_PROPERTY(QColor syntaxComment MEMBER syntaxComment NOTIFY coloursChanged)
    Q_PROPERTY(QColor syntaxName MEMBER syntaxName NOTIFY coloursChanged)

public:
    explicit TranscriptStyle(QObject* parent = nullptr);

    /// Sets all colours to those of the light or the dark theme.
    Q_INVOKABLE void useTheme(bool dark);

    /// A size at zoom 1, in logical pixels at the present zoom.
    qreal px(qreal size) const { return size * zoom; }
    QFont bodyFont(qreal size = 15) const;
    QFont headingFont(int level) const;
    QFont codeFont() const;
    /// Line heights at zoom 1.
    static qreal headingSize(int level);
    static qreal headingPitch(int level);
    /// Hairlines between rows of tables and around cards: the border, softened.
    QColor hairline() const;
    /// The background of selected text.
    QColor selection() const;

    static constexpr qreal bodyPitch = 24;
    static constexpr qreal codePitch = 20;
    static constexpr qreal metaPitch = 16;
    static constexpr qreal columnWidth = 720;
    static constexpr qreal wideWidth = 880;
    static constexpr qreal gutter = 16;

    qreal zoom = 1;
    bool mirrored = false; ///< the window's language runs from right to left
    QString bodyFamily;
    QString codeFamily;
    QColor background;
    QColor text;
    QColor secondary;
    QColor bubble;
    QColor code;
    QColor accent;
    QColor onAccent;
    QColor warning;
    QColor error;
    QColor border;
    QColor syntaxKeyword;
    QColor syntaxString;
    QColor syntaxNumber;
    QColor syntaxComment;
    QColor syntaxName;

Q_SIGNALS:
    /// Text has to be laid out again.
    void metricsChanged();
    /// Text has to be drawn again.
    void coloursChanged();
};

} // namespace varnel
