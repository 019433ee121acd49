#include "ui/transcript/TranscriptStyle.h"

#include <QFontDatabase>
#include <QGuiApplication>

#include <algorithm>

namespace varnel {
namespace {

QFont sized(QFont font, qreal pixels)
{
    font.setPixelSize(std::max(1, qRound(pixels)));
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

QColor blend(const QColor& over, const QColor& under, qreal share)
{
    const auto channel = [share](qreal a, qreal b) { return a * share + b * (1 - share); };
    return QColor::fromRgbF(static_cast<float>(channel(over.redF(), under.redF())),
                            static_cast<float>(channel(over.greenF(), under.greenF())),
                            static_cast<float>(channel(over.blueF(), under.blueF())));
}

} // namespace

TranscriptStyle::TranscriptStyle(QObject* parent)
    : QObject(parent)
    , bodyFamily(QGuiApplication::font().family())
    , codeFamily(QFontDatabase::systemFont(QFontDatabase::FixedFont).family())
{
    useTheme(false);
}

void TranscriptStyle::useTheme(bool dark)
{
    const auto pick = [dark](QRgb light, QRgb night) { return QColor::fromRgb(dark ? night : light); };
    background = pick(0xFBFAF8, 0x191A1B);
    text = pick(0x1F1E1C, 0xECEAE6);
    secondary = pick(0x63605A, 0xA5A29C);
    bubble = pick(0xEBE8E2, 0x2A2B2D);
    code = pick(0xF1EFEA, 0x111213);
    accent = pick(0x0B6B5E, 0x5CC8B5);
    onAccent = pick(0xFFFFFF, 0x06201C);
    warning = pick(0x8A5A00, 0xE0B252);
    error = pick(0xB3261E, 0xF2918A);
    border = pick(0x8C877E, 0x6E6C68);
    syntaxKeyword = pick(0x7A3E9D, 0xC8A2E8);
    syntaxString = pick(0x2C6E1F, 0xA5CF8C);
    syntaxNumber = pick(0x9A4A00, 0xE3B07A);
    syntaxComment = pick(0x6B6860, 0x8F8C86);
    syntaxName = pick(0x1F5F99, 0x86B8E8);
    Q_EMIT coloursChanged();
}

QFont TranscriptStyle::bodyFont(qreal size) const
{
    return sized(QFont(bodyFamily), px(size));
}

QFont TranscriptStyle::headingFont(int level) const
{
    QFont font = bodyFont(headingSize(level));
    font.setWeight(QFont::DemiBold);
    return font;
}

QFont TranscriptStyle::codeFont() const
{
    QFont font(codeFamily);
    font.setStyleHint(QFont::Monospace);
    font.setFixedPitch(true);
    return sized(font, px(13));
}

qreal TranscriptStyle::headingSize(int level)
{
    return level <= 1 ? 20 : level == 2 ? 18 : level == 3 ? 16 : 15;
}

qreal TranscriptStyle::headingPitch(int level)
{
    return level <= 1 ? 28 : level == 2 ? 26 : 24;
}

QColor TranscriptStyle::hairline() const
{
    return blend(border, background, 0.35);
}

QColor TranscriptStyle::selection() const
{
    QColor colour = accent;
    colour.setAlphaF(0.28F);
    return colour;
}

} // namespace varnel
