#include "ui/transcript/TranscriptView.h"
#include "ui/transcript/TranscriptAccessible.h"

#include <QPainter>
#include <QQuickWindow>

#include <algorithm>
#include <cmath>

namespace varnel {
namespace {

using namespace std::chrono_literals;

constexpr int refreshInterval = 33; ///< milliseconds; text that arrives faster than this cannot be read
constexpr auto idleSlice = 3ms;
constexpr int idlePause = 12;      ///< milliseconds between two slices
constexpr int idleAfterMove = 150; ///< milliseconds; what the reader does comes first

} // namespace

TranscriptView::TranscriptView(QQuickItem* parent)
    : QQuickPaintedItem(parent)
    , m_noModel(std::make_unique<TranscriptModel>())
    , m_ownStyle(std::make_unique<TranscriptStyle>())
    , m_scrollBar(new TranscriptScrollBar(this))
{
    installTranscriptAccessibility();
    setActiveFocusOnTab(true);
    setAcceptedMouseButtons(Qt::LeftButton);
    setAcceptHoverEvents(true);
    setAcceptTouchEvents(true);
    setOpaquePainting(true);
    const auto setUp = [this](QTimer& timer, int interval, bool once, void (TranscriptView::*action)()) {
        timer.setInterval(interval);
        timer.setSingleShot(once);
        connect(&timer, &QTimer::timeout, this, action);
    };
    setUp(m_refreshTimer, refreshInterval, true, &TranscriptView::polish);
    setUp(m_idleTimer, idlePause, true, &TranscriptView::measureInIdle);
    setUp(m_tickTimer, 1000, false, &TranscriptView::tick);
    setUp(m_selectScrollTimer, 16, false, &TranscriptView::scrollWhileSelecting);
    setUp(m_findTimer, 0, true, &TranscriptView::continueFinding);
    setUp(m_glideTimer, 16, false, &TranscriptView::glide);
    m_copiedTimer.setInterval(1500);
    m_copiedTimer.setSingleShot(true);
    connect(&m_copiedTimer, &QTimer::timeout, this, [this] {
        m_attention.copied.reset();
        repaintAll();
    });
    connect(m_scrollBar, &TranscriptScrollBar::moved, this, [this](qreal share) {
        bringUpToDate();
        m_position->scrollToShare(share);
        afterMove(true);
    });
    setStyle(m_ownStyle.get());
}

TranscriptView::~TranscriptView() = default;

void TranscriptView::setModel(TranscriptModel* model)
{
    if (m_model == model && m_document)
        return;
    if (m_model)
        m_model->disconnect(this);
    m_model = model;
    connectModel();
    rebuild();
    Q_EMIT modelChanged();
}

void TranscriptView::connectModel()
{
    if (!m_model)
        return;
    connect(m_model, &TranscriptModel::wasReset, this, &TranscriptView::rebuild);
    connect(m_model, &TranscriptModel::changed, this, &TranscriptView::messageChanged);
    connect(m_model, &TranscriptModel::finished, this, &TranscriptView::messageFinished);
    connect(m_model, &TranscriptModel::appended, this, [this](int index) {
        m_document->append();
        m_finder->messageAppended();
        messageChanged(index);
    });
    connect(m_model, &TranscriptModel::removed, this, [this](int first) {
        m_document->removeFrom(first);
        m_position->removeFrom(first);
        m_finder->messagesRemoved(first);
        m_findTimer.start();
        m_selection.clampTo(*m_document);
        m_changed.erase(m_changed.lower_bound(first), m_changed.end());
        m_news.erase(m_news.lower_bound(first), m_news.end());
        m_attention = {};
        m_wholeDirty = true;
        polish();
    });
    connect(m_model, &QObject::destroyed, this, [this] {
        m_model = nullptr;
        rebuild();
    });
}

void TranscriptView::setStyle(TranscriptStyle* style)
{
    TranscriptStyle* const next = style ? style : m_ownStyle.get();
    if (m_style == next)
        return;
    if (m_style)
        m_style->disconnect(this);
    m_style = next;
    m_scrollBar->setStyle(next);
    connect(next, &TranscriptStyle::metricsChanged, this, [this] {
        applyGeometry();
        m_document->remeasure();
        m_wholeDirty = true;
        polish();
    });
    connect(next, &TranscriptStyle::coloursChanged, this, [this] {
        m_document->redraw();
        m_scrollBar->update();
        m_wholeDirty = true;
        polish();
    });
    if (next != m_ownStyle.get())
        connect(next, &QObject::destroyed, this, [this] { setStyle(nullptr); });
    rebuild();
    Q_EMIT styleChanged();
}

/// Another conversation: nothing of what was is left.
void TranscriptView::rebuild()
{
    m_position.reset();
    const QString findText = m_finder ? m_finder->text() : QString();
    m_finder.reset();
    m_document = std::make_unique<TranscriptDocument>(m_model ? *m_model : *m_noModel, *m_style);
    m_finder = std::make_unique<TranscriptFinder>(*m_document);
    // The bar stays open over the next conversation, which is shown from its end nevertheless.
    m_finder->start(findText, 0);
    m_seeksFirst = false;
    m_findTimer.start();
    m_position = std::make_unique<ScrollPosition>(*m_document);
    m_selection.clear();
    m_attention = {};
    m_pressed.reset();
    m_selecting = false;
    m_changed.clear();
    m_news.clear();
    m_glideTimer.stop();
    m_tickTimer.start();
    applyGeometry();
    Q_EMIT selectionChanged();
    Q_EMIT hoveredChanged();
}

qreal TranscriptView::ratio() const
{
    return window() ? window()->effectiveDevicePixelRatio() : 1;
}

void TranscriptView::applyGeometry()
{
    m_position->keepPlace();
    m_document->setGeometry(width(), ratio());
    m_position->setHeight(static_cast<int>(std::floor(height() * ratio())));
    m_scrollBar->setPosition({width() - TranscriptScrollBar::thickness, 0});
    m_scrollBar->setSize({TranscriptScrollBar::thickness, height()});
    m_wholeDirty = true;
    polish();
}

void TranscriptView::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry)
{
    QQuickPaintedItem::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.size() != oldGeometry.size() && m_document)
        applyGeometry();
}

void TranscriptView::itemChange(ItemChange change, const ItemChangeData& value)
{
    QQuickPaintedItem::itemChange(change, value);
    if ((change == ItemDevicePixelRatioHasChanged || change == ItemSceneChange) && m_document)
        applyGeometry();
}

void TranscriptView::messageChanged(int index)
{
    m_changed.insert(index);
    m_finder->messageChanged(index);
    if (m_finder->isActive())
        m_findTimer.start();
    m_news.insert(index);
    if (!m_tickTimer.isActive())
        m_tickTimer.start();
    scheduleRefresh();
}

/// Text may come hundreds of times a second; it is laid out as often as it can be seen.
void TranscriptView::scheduleRefresh()
{
    if (m_refreshTimer.isActive())
        return;
    const qint64 since = m_sinceRefresh.isValid() ? m_sinceRefresh.elapsed() : refreshInterval;
    if (since >= refreshInterval)
        polish();
    else
        m_refreshTimer.start(static_cast<int>(refreshInterval - since));
}

void TranscriptView::updatePolish()
{
    const bool onlyNews = !std::exchange(m_wholeDirty, false);
    const qint64 top = m_position->top();
    std::optional<RowRef> first;
    m_sinceRefresh.start();
    for (const int message : std::exchange(m_changed, {})) {
        const RowRef changed = m_document->update(message, isFollowing());
        first = first ? std::min(*first, changed) : changed;
    }
    m_position->settle();
    m_selection.clampTo(*m_document);
    if (onlyNews && top == m_position->top() && first) {
        repaintFrom(*first);
        afterMove(false);
    } else {
        afterMove(true);
    }
}

/// Lays out at once what has arrived, before something else moves the view.
void TranscriptView::bringUpToDate()
{
    if (!m_changed.empty() || m_wholeDirty)
        updatePolish();
}

/// Repaints the view from a row on: above it nothing changed.
void TranscriptView::repaintFrom(RowRef row)
{
    row.row = std::min(row.row, m_document->rowCount(row.message) - 1);
    const qint64 y = m_document->topOf(row) - m_position->top();
    const int from = std::max(0, static_cast<int>(std::floor(static_cast<qreal>(y) / ratio())) - 8);
    if (from < height())
        update(QRect(0, from, static_cast<int>(std::ceil(width())),
                     static_cast<int>(std::ceil(height())) - from));
}

/// Repaints the view. An update() without a rectangle is forgotten when a part is asked for after it.
void TranscriptView::repaintAll()
{
    update(boundingRect().toAlignedRect());
}

void TranscriptView::afterMove(bool isWhole)
{
    m_scrollBar->setRange(m_position->top(), m_position->height(), m_document->total());
    if (isWhole)
        repaintAll();
    if (m_wasFollowing != isFollowing()) {
        m_wasFollowing = isFollowing();
        Q_EMIT followingChanged();
    }
    updateUnseen();
    m_idleTimer.start(idleAfterMove);
    Q_EMIT contentMoved();
}

void TranscriptView::updateUnseen()
{
    if (isFollowing())
        m_news.clear();
    // What has come into view since is not new any more.
    const qint64 bottom = m_position->top() + m_position->height();
    while (!m_news.empty()) {
        const int message = *m_news.begin();
        const qint64 end = message + 1 < m_document->messageCount() ? m_document->topOfMessage(message + 1)
                                                                    : m_document->total();
        if (end > bottom)
            break;
        m_news.erase(m_news.begin());
    }
    const auto count = static_cast<int>(m_news.size());
    if (count == m_unseenBelow)
        return;
    m_unseenBelow = count;
    Q_EMIT unseenBelowChanged();
}

void TranscriptView::measureInIdle()
{
    if (m_document->messageCount() == 0 || m_position->height() <= 0)
        return;
    const int message = std::max(0, m_document->messageAt(m_position->top()));
    const bool goesOn = m_document->measureOutwards(message, std::chrono::steady_clock::now() + idleSlice);
    const std::vector<PlacedRow> rows = visibleRows(*m_document, *m_position);
    m_position->settle();
    m_scrollBar->setRange(m_position->top(), m_position->height(), m_document->total());
    if (!rows.empty())
        m_document->release(rows.front().ref, rows.back().ref);
    if (goesOn)
        m_idleTimer.start(idlePause);
}

/// The seconds of a reply that waits or thinks.
void TranscriptView::tick()
{
    bool isRunning = false;
    for (const PlacedRow& placed : rowsInView()) {
        const RowKind kind = m_document->row(placed.ref).kind;
        if ((kind == RowKind::Thinking || kind == RowKind::Waiting) &&
            m_document->model().message(placed.ref.message).streaming)
            update(QRect(0, static_cast<int>(placed.y), static_cast<int>(width()),
                         static_cast<int>(m_document->layout(placed.ref).height()) + 1));
    }
    for (int message = m_document->messageCount() - 1; message >= 0 && !isRunning; --message) {
        isRunning = m_document->model().message(message).streaming;
        if (message < m_document->messageCount() - 3)
            break;
    }
    if (!isRunning)
        m_tickTimer.stop();
}

void TranscriptView::messageFinished(int index)
{
    bringUpToDate();
    QString text;
    for (int row = 0; row < m_document->rowCount(index); ++row) {
        const QString part = m_document->row({index, row}).plainText();
        if (!part.isEmpty())
            text += (text.isEmpty() ? QString() : QStringLiteral("\n")) + part;
    }
    Q_EMIT replyFinished(m_document->model().message(index).id, text);
}

std::vector<PlacedRow> TranscriptView::rowsInView()
{
    bringUpToDate();
    return visibleRows(*m_document, *m_position);
}

void TranscriptView::paint(QPainter* painter)
{
    QRectF clip = painter->hasClipping() ? painter->clipBoundingRect() : QRectF(0, 0, width(), height());
    clip = clip.intersected(QRectF(0, 0, width(), height()));
    painter->fillRect(clip, m_style->background);
    if (m_position->height() <= 0)
        return;
    painter->setRenderHint(QPainter::Antialiasing, false);
    paintTranscript(*painter, *m_document, visibleRows(*m_document, *m_position),
                    {m_selection, *m_finder, m_attention}, clip);
    if (m_showsFocus && !m_attention.focused) {
        painter->setPen(QPen(m_style->accent, 2));
        painter->setBrush(Qt::NoBrush);
        painter->drawRect(QRectF(1, 1, width() - 2, height() - 2));
    }
}

void TranscriptView::jumpToLatest()
{
    bringUpToDate();
    m_glideTimer.stop();
    m_position->jumpToEnd();
    afterMove(true);
}

void TranscriptView::showMessage(const QString& id)
{
    const int message = m_document->model().indexOf(id);
    if (message < 0)
        return;
    bringUpToDate();
    m_position->reveal({message, 0}, 0, m_position->height());
    afterMove(true);
}

} // namespace varnel
