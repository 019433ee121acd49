// Shows a sample conversation, to look at. With a file name it saves pictures of it instead.
//
// transcript-viewer [--dark] [--zoom N] [--width N] [--height N] [--scroll share] [--open-thinking]
// [FILE.png]

#include "ui/transcript/SampleConversation.h"
#include "ui/transcript/TranscriptView.h"

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QImage>
#include <QQuickWindow>
#include <QTimer>

using namespace varnel;

namespace {

QCommandLineParser& options()
{
    static QCommandLineParser parser;
    return parser;
}

double number(const char* name)
{
    return options().value(QLatin1String(name)).toDouble();
}

void readOptions(const QCoreApplication& application)
{
    const auto add = [](const char* name, const char* standard) {
        QCommandLineOption option{QString(QLatin1String(name))};
        if (standard) {
            option.setValueName(QStringLiteral("value"));
            option.setDefaultValue(QString(QLatin1String(standard)));
        }
        options().addOption(option);
    };
    add("dark", nullptr);
    add("waiting", nullptr);
    add("press", "");
    add("focus", nullptr);
    add("zoom", "1");
    add("width", "1140");
    add("height", "860");
    add("scroll", "1");
    options().process(application);
}

/// Presses the first target in view whose name begins with the word.
void press(TranscriptView& view, const QString& word)
{
    for (const TargetRef target : view.targetsInView()) {
        if (!word.isEmpty() && view.targetAt(target)->name.startsWith(word))
            return view.activate(target);
    }
}

TranscriptMessage waitingReply(TranscriptMessage::TimePoint now)
{
    TranscriptMessage message = test::reply(QStringLiteral("waiting"), {});
    message.streaming = true;
    message.waitingSince = now - std::chrono::seconds(3);
    message.waitingLabel = QStringLiteral("Loading model");
    return message;
}

} // namespace

int main(int argc, char** argv)
{
    QGuiApplication application(argc, argv);
    readOptions(application);

    TranscriptStyle style;
    style.useTheme(options().isSet(QStringLiteral("dark")));
    style.zoom = number("zoom");
    TranscriptModel model;
    QQuickWindow window;
    window.setColor(style.background);
    TranscriptView view(window.contentItem());
    view.setStyle(&style);
    view.setModel(&model);
    window.resize(static_cast<int>(number("width")), static_cast<int>(number("height")));
    view.setSize(window.size());
    QObject::connect(&window, &QWindow::widthChanged, &view, [&] { view.setSize(window.size()); });
    QObject::connect(&window, &QWindow::heightChanged, &view, [&] { view.setSize(window.size()); });
    model.setMessages(test::sampleConversation());
    if (options().isSet(QStringLiteral("waiting")))
        model.appendMessage(waitingReply(model.now()));
    window.show();

    const QStringList files = options().positionalArguments();
    if (files.isEmpty())
        return application.exec();
    QTimer::singleShot(600, &application, [&] {
        Q_EMIT view.scrollBar().moved(number("scroll"));
        press(view, options().value(QStringLiteral("press")));
        if (options().isSet(QStringLiteral("focus")))
            view.forceActiveFocus(Qt::TabFocusReason);
    });
    QTimer::singleShot(1000, &application, [&] {
        const bool saved = window.grabWindow().save(files.front());
        QCoreApplication::exit(saved ? 0 : 1);
    });
    return application.exec();
}
