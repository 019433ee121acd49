#include "ui/LineDiff.h"

#include <QCoreApplication>
#include <QList>

#include <algorithm>

namespace varnel {

namespace {

using Lines = QList<QStringView>;
using Kind = DiffLine::Kind;

constexpr qsizetype longestLine = 500;
constexpr std::size_t mostLines = 4000;
// Lines that may differ before two texts count as different altogether: time and memory grow with the square.
constexpr int mostEdits = 800;

Lines linesOf(QStringView text)
{
    if (text.endsWith(u'\n'))
        text.chop(1);
    return text.isEmpty() ? Lines() : text.split(u'\n');
}

/// One step on the way from one list of lines to the other.
struct Step
{
    Kind kind = Kind::Same;
    qsizetype line = 0; // of the first list, or of the second where one is added
};

/// The shortest way from one list to the other, found by going as far as possible with ever more edits
/// (Myers, "An O(ND) Difference Algorithm"). Nothing when it takes too many.
class ShortestWay
{
public:
    ShortestWay(const Lines& before, const Lines& after)
        : m_before(before)
        , m_after(after)
        , m_limit(static_cast<int>(std::min<qsizetype>(mostEdits, before.size() + after.size())))
    {}

    bool find()
    {
        std::vector<qsizetype> reached(static_cast<std::size_t>(2 * m_limit + 3), 0);
        for (int edits = 0; edits <= m_limit; ++edits) {
            m_trace.push_back(reached);
            for (int diagonal = -edits; diagonal <= edits; diagonal += 2) {
                qsizetype x = comesFromAbove(reached, diagonal, edits) ? at(reached, diagonal + 1)
                                                                       : at(reached, diagonal - 1) + 1;
                qsizetype y = x - diagonal;
                while (x < m_before.size() && y < m_after.size() && m_before[x] == m_after[y]) {
                    ++x;
                    ++y;
                }
                at(reached, diagonal) = x;
                if (x >= m_before.size() && y >= m_after.size())
                    return true;
            }
        }
        return false;
    }

    std::vector<Step> steps()
    {
        std::vector<Step> reversed;
        qsizetype x = m_before.size();
        qsizetype y = m_after.size();
        for (int edits = static_cast<int>(m_trace.size()) - 1; edits >= 0; --edits) {
            std::vector<qsizetype>& reached = m_trace[static_cast<std::size_t>(edits)];
            const auto diagonal = static_cast<int>(x - y);
            const bool above = comesFromAbove(reached, diagonal, edits);
            const qsizetype fromX = edits == 0 ? 0 : at(reached, above ? diagonal + 1 : diagonal - 1);
            const qsizetype fromY = edits == 0 ? 0 : fromX - (above ? diagonal + 1 : diagonal - 1);
            while (x > fromX && y > fromY) {
                reversed.push_back({.kind = Kind::Same, .line = --x});
                --y;
            }
            if (edits > 0)
                reversed.push_back(above ? Step{.kind = Kind::Added, .line = y - 1}
                                         : Step{.kind = Kind::Removed, .line = x - 1});
            x = fromX;
            y = fromY;
        }
        std::reverse(reversed.begin(), reversed.end());
        return reversed;
    }

private:
    qsizetype& at(std::vector<qsizetype>& reached, int diagonal) const
    {
        return reached[static_cast<std::size_t>(diagonal) + static_cast<std::size_t>(m_limit) + 1];
    }
    bool comesFromAbove(std::vector<qsizetype>& reached, int diagonal, int edits) const
    {
        return diagonal == -edits ||
               (diagonal != edits && at(reached, diagonal - 1) < at(reached, diagonal + 1));
    }

    const Lines& m_before;
    const Lines& m_after;
    int m_limit;
    std::vector<std::vector<qsizetype>> m_trace;
};

std::vector<Step> stepsBetween(const Lines& before, const Lines& after)
{
    ShortestWay way(before, after);
    if (way.find())
        return way.steps();
    std::vector<Step> steps;
    steps.reserve(static_cast<std::size_t>(before.size() + after.size()));
    for (qsizetype i = 0; i < before.size(); ++i)
        steps.push_back({.kind = Kind::Removed, .line = i});
    for (qsizetype i = 0; i < after.size(); ++i)
        steps.push_back({.kind = Kind::Added, .line = i});
    return steps;
}

DiffLine leftOut(std::size_t count)
{
    return {.kind = Kind::Left,
            .text = (count == 1 ? QCoreApplication::translate("varnel::LineDiff", "1 line")
                                : QCoreApplication::translate("varnel::LineDiff", "%1 lines").arg(count))};
}

/// Leaves out what is the same on both sides and far from any change.
std::vector<DiffLine> withoutDistantLines(std::vector<DiffLine> lines)
{
    constexpr std::size_t around = 3;
    std::vector<bool> shown(lines.size(), false);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (lines[i].kind == Kind::Same)
            continue;
        const std::size_t end = std::min(lines.size(), i + around + 1);
        for (std::size_t near = i < around ? 0 : i - around; near < end; ++near)
            shown[near] = true;
    }
    std::vector<DiffLine> kept;
    std::size_t skipped = 0;
    const auto tellSkipped = [&] {
        if (skipped > 0)
            kept.push_back(leftOut(std::exchange(skipped, 0)));
    };
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (!shown[i]) {
            ++skipped;
            continue;
        }
        if (kept.size() >= mostLines) {
            skipped += lines.size() - i;
            break;
        }
        tellSkipped();
        kept.push_back(std::move(lines[i]));
    }
    tellSkipped();
    return kept;
}

} // namespace

std::vector<DiffLine> lineDiff(QStringView before, QStringView after)
{
    const Lines old = linesOf(before);
    const Lines fresh = linesOf(after);
    std::vector<DiffLine> lines;
    for (const Step& step : stepsBetween(old, fresh)) {
        const QStringView text = (step.kind == Kind::Added ? fresh : old)[step.line];
        lines.push_back({.kind = step.kind, .text = text.left(longestLine).toString()});
    }
    return withoutDistantLines(std::move(lines));
}

} // namespace varnel
