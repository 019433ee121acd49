#include "ui/transcript/MathFonts.h"

#include <QFontDatabase>

#include <algorithm>

namespace varnel {

namespace {

/// Serif faces with Greek and true italics, best first.
QString serifFamily()
{
    static const QString family = [] {
        const QStringList known = QFontDatabase::families();
        for (const char* wanted : {"STIX Two Text", "Libertinus Serif", "TeX Gyre Termes", "Times New Roman",
                                   "Liberation Serif", "DejaVu Serif", "Noto Serif"}) {
            if (known.contains(QLatin1String(wanted)))
                return QString::fromLatin1(wanted);
        }
        return QStringLiteral("serif");
    }();
    return family;
}

QFont sized(const QString& family, QFont::StyleHint hint, qreal pixels)
{
    QFont font(family);
    font.setStyleHint(hint);
    font.setPixelSize(std::max(1, qRound(pixels)));
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

} // namespace

MathFonts::MathFonts(const QFont& beside)
{
    constexpr std::array shares{1.0, 0.72, 0.56};
    for (std::size_t depth = 0; depth < shares.size(); ++depth) {
        m_sizes[depth] = beside.pixelSize() * shares[depth];
        m_axes[depth] =
            -ink(QStringLiteral("−"), font(MathLetters::Upright, static_cast<int>(depth))).center().y();
    }
}

qreal MathFonts::rule(int depth) const
{
    return std::max(0.055 * em(depth), 0.8);
}

QFont MathFonts::font(MathLetters letters, int depth) const
{
    const qreal size = em(depth);
    switch (letters) {
    case MathLetters::Sans:
        return sized(QStringLiteral("sans-serif"), QFont::SansSerif, size);
    case MathLetters::Typewriter:
        return sized(QStringLiteral("monospace"), QFont::Monospace, size);
    case MathLetters::Bold: {
        QFont font = sized(serifFamily(), QFont::Serif, size);
        font.setBold(true);
        return font;
    }
    case MathLetters::Normal:
    case MathLetters::Italic: {
        QFont font = sized(serifFamily(), QFont::Serif, size);
        font.setItalic(true);
        return font;
    }
    case MathLetters::Upright:
        break;
    }
    return sized(serifFamily(), QFont::Serif, size);
}

QRectF MathFonts::ink(const QString& sign, const QFont& font)
{
    // What is measured for a text always reaches down to the baseline.
    return QFontMetricsF(font).boundingRect(sign.front());
}

MathBox MathFonts::box(const QString& text, const QFont& font)
{
    const QFontMetricsF metrics(font);
    for (const uint character : text.toUcs4()) {
        if (!metrics.inFontUcs4(character))
            throw UnsettableBox();
    }
    MathBox box;
    const QRectF ink = metrics.tightBoundingRect(text);
    box.width = std::max(metrics.horizontalAdvance(text), ink.right());
    box.ascent = std::max(0.0, -ink.top());
    box.descent = std::max(0.0, ink.bottom());
    box.letters.push_back({text, font, {}, 1});
    return box;
}

} // namespace varnel
