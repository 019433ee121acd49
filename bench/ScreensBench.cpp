// Measures the screens over large profiles: opening conversations, a long paste, typing in the search field,
// and whether memory stays flat.
//
// varnel-bench-screens BIN_FOLDER

#include "LargeProfile.h"

#include "ui/WindowScreens.h"

#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QKeyEvent>

using namespace varnel;
using namespace varnel::bench;

namespace {

/// MiB of this process that are in memory.
double residentMemory()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return file.readAll().split(' ').value(1).toDouble() * static_cast<double>(sysconf(_SC_PAGESIZE)) /
           1048576;
}

/// The window on a profile of its own.
class Stage
{
public:
    Stage(double mebibytes, const std::string& server, int count)
        : m_profile(mebibytes, server, count)
    {
        if (!m_window) {
            std::fprintf(stderr, "the window did not load\n");
            std::exit(1);
        }
        QObject::connect(m_window, &QQuickWindow::frameSwapped, m_window, [this] { ++m_frames; });
        m_screens.show(*m_window);
        turnUntil([this] { return m_frames > 0 && m_window->isActive(); });
        turnFor(1000);
    }

    AppModel& app() { return m_app; }
    QUuid id(std::size_t place) const { return m_app.sessions()[place].id; }

    /// Milliseconds until the conversation is on the screen.
    double open(const QUuid& conversation)
    {
        const double started = now();
        const int before = m_frames;
        // From the event loop, as a click does it: what is dropped then is gone after its handler.
        QTimer::singleShot(0, &m_app, [this, conversation] { m_app.select(conversation); });
        turnUntil([this, before] { return m_frames > before; });
        return now() - started;
    }
    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier, const QString& text = {})
    {
        for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
            QKeyEvent event(type, key, modifiers, text);
            QCoreApplication::sendEvent(m_window, &event);
        }
    }

private:
    Profile m_profile;
    AppModel m_app{m_profile.services()};
    WindowScreens m_screens{m_app, m_profile.clock, m_profile.folder.filePath(QStringLiteral("window.ini"))};
    QQuickWindow* m_window = m_screens.load();
    int m_frames = 0;
};

void measureOpening(const std::string& server)
{
    Stage stage(6.2, server, 2); // a thousand prompts with their replies in each of the two
    report("window: open 2,000 messages", stage.open(stage.id(1)), "ms", "< 300");
}

void measureManyConversations(const std::string& server)
{
    constexpr std::size_t count = 1000;
    Stage stage(20, server, int(count));
    std::vector<double> times;
    double earlier = 0;
    for (std::size_t i = 0; i < count; ++i) {
        times.push_back(stage.open(stage.id((i * 7 + 1) % count)));
        if (i == count / 5)
            earlier = residentMemory();
    }
    turnFor(500);
    report("window: open one of 1,000 conversations", median(times), "ms", "< 50");
    report("window: the slowest of 1,000", *std::max_element(times.begin(), times.end()), "ms", "");
    report("window: memory after 1,000 over after 200", residentMemory() - earlier, "MiB", "<= 10");
}

void measurePaste(const std::string& server)
{
    Stage stage(20, server, 100);
    QString lines;
    for (int line = 0; line < 20000; ++line)
        lines += QStringLiteral("    total += values[%1]; // what came before\n").arg(line);
    QGuiApplication::clipboard()->setText(lines);
    stage.app().newConversation();
    turnFor(500);
    const double started = now();
    stage.press(Qt::Key_V, Qt::ControlModifier);
    turnUntil([&stage] { return stage.app().attachmentIDs().size() == 1; });
    report("window: 20,000 lines pasted", now() - started, "ms", "< 100");
}

void measureSearching(const std::string& server)
{
    Stage stage(200, server, 5000);
    stage.press(Qt::Key_K, Qt::ControlModifier);
    turnFor(500);
    Heartbeat heartbeat;
    double slowestKey = 0;
    for (const QChar character : QStringLiteral("configuration of every value")) {
        const double started = now();
        stage.press(character.toUpper().unicode(), Qt::NoModifier, QString(character));
        slowestKey = std::max(slowestKey, now() - started);
        turnFor(120);
    }
    turnFor(2000);
    if (stage.app().sessionQuery().isEmpty()) {
        std::fprintf(stderr, "nothing was typed into the search field\n");
        std::exit(1);
    }
    report("window: 200 MB, a key in the search field", slowestKey, "ms", "<= 50");
    report("window: 200 MB, searching, busy at a stretch", heartbeat.longest(), "ms", "<= 50");
}

} // namespace

int main(int argc, char* argv[])
{
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    const QGuiApplication application(argc, argv);
    const PracticeHost host(argc > 1 ? argv[1] : "");
    measureOpening(host.url());
    measureManyConversations(host.url());
    measurePaste(host.url());
    measureSearching(host.url());
}
