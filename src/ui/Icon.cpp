#include "ui/Icon.h"

#include <QPainter>

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>
#include <vector>

namespace varnel {

namespace {

constexpr double grid = 20;
constexpr double lineWidth = 1.5;

struct Drawing
{
    std::string_view name;
    // M, L, Q, C and Z as in any path; O is a circle (centre, radius), A an arc (centre, radius, start, span
    // in degrees), R a rounded rectangle (corner, size, radius); D and B are O and R, filled.
    std::string_view strokes;
};

constexpr std::array drawings{
    Drawing{"plus", "M10 4.5 L10 15.5 M4.5 10 L15.5 10"},
    Drawing{"search", "O9 9 5 M12.8 12.8 L16.5 16.5"},
    Drawing{"sidebar", "R3 4 14 12 2.5 M8 4 L8 16"},
    Drawing{"chevron", "M6.5 8.25 L10 11.75 L13.5 8.25"},
    Drawing{"more", "D4.75 10 1.25 D10 10 1.25 D15.25 10 1.25"},
    Drawing{"send", "M10 15.5 L10 5 M5.5 9.5 L10 5 L14.5 9.5"},
    Drawing{"down", "M10 4.5 L10 15 M5.5 10.5 L10 15 L14.5 10.5"},
    Drawing{"stop", "B6 6 8 8 1.5"},
    Drawing{"check", "M4.5 10.5 L8.25 14.25 L15.5 6.25"},
    Drawing{"close", "M5.5 5.5 L14.5 14.5 M14.5 5.5 L5.5 14.5"},
    Drawing{"pin", "M7 3.5 L13 3.5 M8 3.5 L8 8.25 L5.5 11.5 L14.5 11.5 L12 8.25 L12 3.5 M10 11.5 L10 16.5"},
    Drawing{"warning", "M10 3.75 L17 16 L3 16 Z M10 8.25 L10 11.75 D10 13.75 0.9"},
    Drawing{"chat",
            "M5.5 4 L14.5 4 Q17 4 17 6.5 L17 11 Q17 13.5 14.5 13.5 L9.5 13.5 L6 16.5 L6 13.5 L5.5 13.5 "
            "Q3 13.5 3 11 L3 6.5 Q3 4 5.5 4 Z"},
    Drawing{"coding", "M6.75 6 L3 10 L6.75 14 M13.25 6 L17 10 L13.25 14 M11.5 4.5 L8.5 15.5"},
    Drawing{"reasoning",
            "M7.6 14 C7.6 12 5 11.2 5 8 C5 5.2 7.2 3 10 3 C12.8 3 15 5.2 15 8 C15 11.2 12.4 12 12.4 14 Z "
            "M8.25 16.75 L11.75 16.75"},
    Drawing{"vision",
            "M2.5 10 C4.5 6.4 7 5 10 5 C13 5 15.5 6.4 17.5 10 C15.5 13.6 13 15 10 15 C7 15 4.5 13.6 "
            "2.5 10 Z O10 10 2.25"},
    Drawing{"circle", "O10 10 5"},
    Drawing{
        "attach",
        "M14.5 9.5 L9.6 14.4 C8.2 15.8 6.2 15.8 4.9 14.5 C3.6 13.2 3.6 11.2 5 9.8 L10.6 4.2 C11.6 3.2 13 3.2 "
        "13.9 4.1 C14.8 5 14.8 6.4 13.8 7.4 L8.4 12.8 C7.9 13.3 7.3 13.3 6.9 12.9 C6.5 12.5 6.5 11.9 7 11.4 "
        "L11.4 7"},
    Drawing{"file", "M6 3 L11.5 3 L15 6.5 L15 17 L5 17 L5 3.9 Q5 3 6 3 Z M11.5 3 L11.5 6.5 L15 6.5"},
    Drawing{"pdf",
            "M6 3 L11.5 3 L15 6.5 L15 17 L5 17 L5 3.9 Q5 3 6 3 Z M11.5 3 L11.5 6.5 L15 6.5 M7.5 10 L12.5 10 "
            "M7.5 13 L12.5 13"},
    Drawing{"image", "R3 4 14 12 2 O7.25 8 1.25 M3.5 14.5 L8 10.75 L10.5 13 L13 10.5 L16.5 13.75"},
    Drawing{
        "link",
        "M8.5 11.5 L11.5 8.5 M9 6.5 L11 4.5 C12.4 3.1 14.4 3.1 15.6 4.4 C16.9 5.6 16.9 7.6 15.5 9 L13.5 11 "
        "M11 13.5 L9 15.5 C7.6 16.9 5.6 16.9 4.4 15.6 C3.1 14.4 3.1 12.4 4.5 11 L6.5 9"},
    Drawing{"globe", "O10 10 6.75 M3.25 10 L16.75 10 M10 3.25 C6 7 6 13 10 16.75 C14 13 14 7 10 3.25"},
    Drawing{"folder", "M3 6 Q3 4.5 4.5 4.5 L8 4.5 L9.75 6.5 L15.5 6.5 Q17 6.5 17 8 L17 14 Q17 15.5 15.5 15.5 "
                      "L4.5 15.5 Q3 15.5 3 14 Z"},
    Drawing{"sliders",
            "M3.5 6.5 L10 6.5 M14 6.5 L16.5 6.5 O12 6.5 2 M3.5 13.5 L6 13.5 M10 13.5 L16.5 13.5 O8 13.5 2"},
    Drawing{"cloud",
            "M6 15 C3.8 15 2.5 13.6 2.5 11.9 C2.5 10.2 3.8 9 5.4 8.9 C5.8 6.6 7.7 5 10 5 C12.4 5 14.2 6.6 "
            "14.6 8.9 C16.3 9 17.5 10.2 17.5 11.9 C17.5 13.6 16.2 15 14.2 15 Z"},
    Drawing{"library", "M4 4 L4 16 M7.5 4 L7.5 16 M11 4.5 L14.5 15.75"},
    Drawing{"restore", "A10 10.5 5.75 -150 300 M4 4.5 L5 7.75 L8.25 7"},
    Drawing{"spinner", "A10 10 6 90 270"},
};

struct Paths
{
    QPainterPath lines;
    QPainterPath areas;
};

/// Reads the numbers up to the next letter.
std::vector<double> readNumbers(std::string_view& text)
{
    std::vector<double> numbers;
    while (!text.empty()) {
        if (text.front() == ' ') {
            text.remove_prefix(1);
            continue;
        }
        double number = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (error != std::errc())
            break;
        numbers.push_back(number);
        text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    }
    return numbers;
}

void addStroke(Paths& paths, char kind, const std::vector<double>& n)
{
    switch (kind) {
    case 'M':
        return paths.lines.moveTo(n[0], n[1]);
    case 'L':
        return paths.lines.lineTo(n[0], n[1]);
    case 'Q':
        return paths.lines.quadTo(n[0], n[1], n[2], n[3]);
    case 'C':
        return paths.lines.cubicTo(n[0], n[1], n[2], n[3], n[4], n[5]);
    case 'Z':
        return paths.lines.closeSubpath();
    case 'A': {
        const QRectF circle(n[0] - n[2], n[1] - n[2], 2 * n[2], 2 * n[2]);
        paths.lines.arcMoveTo(circle, n[3]);
        return paths.lines.arcTo(circle, n[3], n[4]);
    }
    case 'O':
    case 'D':
        return (kind == 'O' ? paths.lines : paths.areas).addEllipse(QPointF(n[0], n[1]), n[2], n[2]);
    case 'R':
    case 'B':
        return (kind == 'R' ? paths.lines : paths.areas).addRoundedRect(n[0], n[1], n[2], n[3], n[4], n[4]);
    default:
        return;
    }
}

Paths pathsOf(std::string_view strokes)
{
    Paths paths;
    while (!strokes.empty()) {
        const char kind = strokes.front();
        strokes.remove_prefix(1);
        addStroke(paths, kind, readNumbers(strokes));
    }
    return paths;
}

} // namespace

Icon::Icon(QQuickItem* parent)
    : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
}

void Icon::setName(const QString& name)
{
    if (name == m_name)
        return;
    m_name = name;
    Q_EMIT nameChanged();
    update();
}

void Icon::setColor(const QColor& color)
{
    if (color == m_color)
        return;
    m_color = color;
    Q_EMIT colorChanged();
    update();
}

void Icon::paint(QPainter* painter)
{
    const std::string name = m_name.toStdString();
    const auto* const drawing = std::find_if(drawings.begin(), drawings.end(),
                                             [&name](const Drawing& other) { return other.name == name; });
    if (drawing == drawings.end())
        return;
    const Paths paths = pathsOf(drawing->strokes);
    const double size = std::min(width(), height());
    painter->setRenderHint(QPainter::Antialiasing);
    painter->translate((width() - size) / 2, (height() - size) / 2);
    painter->scale(size / grid, size / grid);
    painter->setPen(QPen(m_color, lineWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter->drawPath(paths.lines);
    painter->setPen(Qt::NoPen);
    painter->fillPath(paths.areas, m_color);
}

} // namespace varnel
