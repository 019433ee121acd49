#include "practice_host/PracticeHost.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdio>

using namespace varnel;
using namespace varnel::practice;

namespace {

constexpr int badArguments = 2;

struct Arguments
{
    quint16 port = 0;
    PracticePace pace;
    bool quiet = false;
    bool whole = false;
};

void print(std::FILE* file, const QString& text)
{
    std::fprintf(file, "%s\n", qPrintable(text));
    std::fflush(file);
}

/// The whole number that an option holds. Throws Error if it is none or out of range.
int numberOf(const QCommandLineParser& parser, const QCommandLineOption& option, int largest)
{
    const QString text = parser.value(option);
    bool valid = false;
    const int number = text.toInt(&valid);
    if (!valid || number < 0 || number > largest)
        throw Error(QStringLiteral("--%1 takes a whole number from 0 to %2, not \"%3\".")
                        .arg(option.names().first(), QString::number(largest), text));
    return number;
}

/// What the program was asked to do, or nothing if it was asked for help, which is printed. Throws Error for
/// arguments that make no sense.
std::optional<Arguments> readArguments(const QStringList& words)
{
    const QCommandLineOption port(QStringLiteral("port"),
                                  QStringLiteral("Port on 127.0.0.1; 0 for any free one."),
                                  QStringLiteral("N"), QStringLiteral("11500"));
    const QCommandLineOption pace(
        QStringLiteral("pace"),
        QStringLiteral("Milliseconds between two pieces of a reply; 0 sends all at once."),
        QStringLiteral("MS"), QStringLiteral("40"));
    const QCommandLineOption quiet(QStringLiteral("quiet"),
                                   QStringLiteral("Print no line for each request."));
    const QCommandLineOption whole(
        QStringLiteral("whole"),
        QStringLiteral("Send whole replies, however short they were asked for; for measuring."));
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Speaks the API of an Ollama host with scripted replies; there is no model behind it."));
    const QCommandLineOption help = parser.addHelpOption();
    parser.addOptions({port, pace, quiet, whole});
    if (!parser.parse(words))
        throw Error(parser.errorText() + QLatin1Char('.'));
    if (parser.isSet(help)) {
        std::printf("%s", qPrintable(parser.helpText()));
        return std::nullopt;
    }
    if (!parser.positionalArguments().isEmpty())
        throw Error(QStringLiteral("Unexpected argument \"%1\".").arg(parser.positionalArguments().first()));
    Arguments arguments;
    arguments.port = static_cast<quint16>(numberOf(parser, port, 65535));
    arguments.pace.piece = std::chrono::milliseconds(numberOf(parser, pace, 60'000));
    arguments.quiet = parser.isSet(quiet);
    arguments.whole = parser.isSet(whole);
    return arguments;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    std::optional<Arguments> arguments;
    try {
        arguments = readArguments(QCoreApplication::arguments());
    } catch (const Error& error) {
        print(stderr, error.message() + QStringLiteral(" Try --help."));
        return badArguments;
    }
    if (!arguments)
        return EXIT_SUCCESS;

    PracticeHost::Log log;
    if (!arguments->quiet)
        log = [](const QString& line) { print(stdout, line); };
    PracticeHost host(arguments->pace, log);
    host.setLimitsReplies(!arguments->whole);
    try {
        host.listen(arguments->port);
    } catch (const Error& error) {
        print(stderr, error.message());
        return EXIT_FAILURE;
    }
    print(stdout,
          QStringLiteral("Practice host on %1 (scripted replies, no model)").arg(host.url().toString()));
    return QCoreApplication::exec();
}
