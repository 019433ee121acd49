#include "ui/transcript/MathLayout.h"

#include "ui/transcript/MathSetter.h"

namespace varnel {

std::shared_ptr<const MathBox> layOutMaths(const QString& source, const QFont& font, MathPlace place)
{
    const auto list = parseMaths(source);
    if (!list)
        return nullptr;
    try {
        // Serif letters look smaller than those without.
        QFont beside = font;
        beside.setPixelSize(qRound(font.pixelSize() * 1.1));
        return std::make_shared<const MathBox>(
            MathSetter(beside).set(*list, {0, place == MathPlace::Displayed}));
    } catch (const UnsettableBox&) {
        return nullptr;
    }
}

std::vector<InlineFormula> formulasOf(const MarkdownText& text, const QFont& font, qreal widest)
{
    std::vector<InlineFormula> formulas;
    for (const MarkdownRange& range : text.ranges) {
        const bool isDisplayed = range.styles.testFlag(MarkdownStyle::DisplayMaths);
        if ((!isDisplayed && !range.styles.testFlag(MarkdownStyle::Maths)) ||
            range.start + range.length > text.text.size())
            continue;
        const auto box = layOutMaths(text.text.sliced(range.start, range.length), font,
                                     isDisplayed ? MathPlace::Displayed : MathPlace::Inline);
        if (box && box->width <= widest)
            formulas.push_back({static_cast<int>(range.start), static_cast<int>(range.length), box});
    }
    return formulas;
}

} // namespace varnel
