#pragma once

#include "ui/transcript/MathBox.h"
#include "ui/transcript/MathParser.h"

#include <QFontMetricsF>

#include <array>

namespace varnel {

/// A letter has no shape in any font, or a formula is one that cannot be laid out.
struct UnsettableBox
{};

/// The letters of a formula in its three sizes: of the text, of scripts, and of scripts of scripts.
class MathFonts
{
public:
    static constexpr int deepest = 2;

    /// @param beside the font of the text around the formula.
    explicit MathFonts(const QFont& beside);

    /// An em at a depth of scripts.
    qreal em(int depth) const { return m_sizes[static_cast<std::size_t>(depth)]; }
    /// How far above the baseline the middle of a minus sign stands: the line that everything is centred on.
    qreal axis(int depth) const { return m_axes[static_cast<std::size_t>(depth)]; }
    /// The thickness of fraction bars and roots.
    qreal rule(int depth) const;

    QFont font(MathLetters letters, int depth) const;
    /// What a single character covers, around the left end of its baseline.
    static QRectF ink(const QString& sign, const QFont& font);
    /// Letters in a box around what they cover. Throws UnsettableBox when no font has one of them.
    static MathBox box(const QString& text, const QFont& font);

private:
    std::array<qreal, deepest + 1> m_sizes{};
    std::array<qreal, deepest + 1> m_axes{};
};

} // namespace varnel
