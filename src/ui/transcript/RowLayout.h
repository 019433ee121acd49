#pragma once

#include "ui/transcript/StyledText.h"
#include "ui/transcript/TranscriptModel.h"
#include "ui/transcript/TranscriptRow.h"
#include "ui/transcript/TranscriptStyle.h"

#include <QRectF>

#include <memory>
#include <vector>

namespace varnel {

/// Where rows stand in the view: the reading column and how far wide blocks may reach, in logical pixels.
struct RowColumn
{
    qreal left = 0;
    qreal width = 0;
    qreal wide = 0;        ///< from the same left edge
    qreal ratio = 1;       ///< device pixels per logical pixel
    bool mirrored = false; ///< the window's language runs from right to left

    bool operator==(const RowColumn&) const = default;
    /// A rectangle on the side of the column where the window's language has it.
    QRectF placed(const QRectF& rect) const
    {
        return mirrored ? QRectF(2 * left + width - rect.right(), rect.top(), rect.width(), rect.height())
                        : rect;
    }
    Qt::Alignment leading() const { return (mirrored ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignAbsolute; }
    Qt::Alignment trailing() const { return (mirrored ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignAbsolute; }
    /// The same for a line in the middle of its box, as QPainter::drawText() takes it.
    int leadingLine() const { return static_cast<int>((leading() | Qt::AlignVCenter).toInt()); }
    int trailingLine() const { return static_cast<int>((trailing() | Qt::AlignVCenter).toInt()); }
};

/// What the reader chose for one code block or table.
struct GroupState
{
    bool wraps = false;
    qreal scroll = 0;      ///< to the right, logical pixels
    QList<qreal> widths;   ///< of a table's columns; empty until it is first laid out
    bool isPlaced = false; ///< whether a table that begins at the right was scrolled there
    bool operator==(const GroupState&) const = default;
};

/// What a press in a row does.
enum class TargetKind : quint8 {
    Link,
    CopyCode,
    WrapCode,
    WriteCode,
    Thinking,
    Action,
    TryAgain,
    EditPrompt,
    OpenLogs,
    ResetTemperature,
    SearchOff,
};

/// A part of a row that can be pressed or focused.
struct RowTarget
{
    TargetKind kind = TargetKind::Link;
    QList<QRectF> rects; ///< x in the view, y from the top of the row
    QString name;        ///< for hovering and for reading aloud
    QString value;       ///< a link's destination
    TranscriptAction action = TranscriptAction::Copy;
};

/// What a row needs to know to draw itself besides its contents.
struct RowPaint
{
    const TranscriptStyle& style;
    const TranscriptMessage& message;
    TranscriptMessage::TimePoint now;
    QRectF clip; ///< what is to be drawn, y from the top of the row
    int selectionStart = 0;
    int selectionEnd = 0;   ///< no selection where it is not after the start
    int hovered = -1;       ///< index into targets()
    bool isActive = false;  ///< the message is hovered or has the focus: its actions show
    bool isOpen = false;    ///< what the model thought is shown
    bool wasCopied = false; ///< its code was copied a moment ago
    bool isSticky = false;  ///< what follows it scrolls below it
};

/// A row that has been measured: draws itself, finds characters and targets. Positions: x in the view, y from
/// the top of the row, in logical pixels. It keeps no reference to its row.
class RowLayout
{
public:
    RowLayout() = default;
    RowLayout(const RowLayout&) = delete;
    RowLayout& operator=(const RowLayout&) = delete;
    RowLayout(RowLayout&&) = delete;
    RowLayout& operator=(RowLayout&&) = delete;
    virtual ~RowLayout() = default;

    /// With the space above it.
    virtual qreal height() const = 0;
    virtual void paint(QPainter& painter, const RowPaint& state) const = 0;
    /// Its targets, in reading order.
    virtual std::vector<RowTarget> targets() const { return {}; }
    /// The position in the row's plain text that is nearest to a point.
    virtual int positionAt(QPointF /*point*/) const { return 0; }
    /// Whether a point is on text, so that a drag from there selects.
    virtual bool isText(QPointF /*point*/) const { return false; }
    /// Where characters of the plain text stand.
    virtual QList<QRectF> rectsOf(int /*start*/, int /*length*/) const { return {}; }
    /// How far the row can scroll to the right, 0 for a row that fits.
    virtual qreal scrollRange() const { return 0; }
    /// Where the pointer rests to be told more of the message's footer; empty if nowhere.
    virtual QRectF hintArea() const { return {}; }
    /// What of the row scrolls, for clipping; empty if nothing does.
    virtual QRectF scrollArea() const { return {}; }
};

/// What is known where a row is laid out.
struct RowContext
{
    const TranscriptStyle& style;
    const TranscriptMessage& message;
    RowColumn column;
    GroupState* group = nullptr; ///< of the row's group; outlives the layout
};

/// Lays a row out.
std::unique_ptr<RowLayout> layOut(const TranscriptRow& row, const RowContext& context);
/// A guess at its height in logical pixels, without touching a font.
qreal estimatedHeight(const TranscriptRow& row, const RowContext& context);
/// Whether that guess is exact, so that the row need not be laid out to be measured.
bool isHeightKnown(const TranscriptRow& row, const RowContext& context);

// One for each family of rows.
std::unique_ptr<RowLayout> layOutText(const TranscriptRow& row, const RowContext& context);
/// Null for a formula that is to be shown as its source.
std::unique_ptr<RowLayout> layOutMathsRow(const TranscriptRow& row, const RowContext& context);
std::unique_ptr<RowLayout> layOutCode(const TranscriptRow& row, const RowContext& context);
std::unique_ptr<RowLayout> layOutTable(const TranscriptRow& row, const RowContext& context);
std::unique_ptr<RowLayout> layOutMessageRow(const TranscriptRow& row, const RowContext& context);
std::unique_ptr<RowLayout> layOutCard(const TranscriptRow& row, const RowContext& context);

/// The bars beside a row that stands in quotes; those of quotes that begin with it leave out the space above.
struct QuoteBars
{
    qreal spaceAbove = 0;
    qreal height = 0;
    bool mirrored = false;
};
void paintQuoteBars(QPainter& painter, const RowFrame& frame, const RowColumn& column,
                    const TranscriptStyle& style, QuoteBars bars);
/// The font, colours and decorations of a text's styles.
StyledText::Formats formatsOf(const MarkdownText& text, const QFont& base, const TranscriptStyle& style);
/// What is drawn for a text: harmless characters, every break a line separator or a space.
QString shownText(const MarkdownText& text);
/// The links of a text, whose characters begin at `start` of the row's plain text.
std::vector<RowTarget> linkTargets(const MarkdownText& text, const RowLayout& layout, int start);
/// A label that says a link's real target.
QString linkLabel(const MarkdownLink& link);

} // namespace varnel
