#include "practice_host/PullLines.h"

#include "practice_host/PracticeModels.h"

#include <QCryptographicHash>
#include <QJsonDocument>
#include <QJsonObject>

#include <vector>

namespace varnel::practice {

namespace {

QByteArray line(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

QByteArray statusLine(const QString& status)
{
    return line({{QStringLiteral("status"), status}});
}

void appendLayer(std::vector<QByteArray>& lines, const QString& name, qint64 total, int steps)
{
    const QString digest =
        QString::fromLatin1(QCryptographicHash::hash(name.toUtf8(), QCryptographicHash::Sha256).toHex());
    QJsonObject progress{{QStringLiteral("status"), QStringLiteral("pulling ") + digest.first(12)},
                         {QStringLiteral("digest"), QStringLiteral("sha256:") + digest},
                         {QStringLiteral("total"), total}};
    // The first line of a layer says nothing about how much is there.
    lines.push_back(line(progress));
    for (int step = 1; step <= steps; ++step) {
        progress.insert(QStringLiteral("completed"), total * step / steps);
        lines.push_back(line(progress));
    }
}

} // namespace

std::function<std::optional<QByteArray>()> pullLines(const QString& model, std::function<void()> install)
{
    constexpr qint64 modelLayer = 1'000'000'000;
    constexpr qint64 templateLayer = 1'482;
    std::vector<QByteArray> lines = {statusLine(QStringLiteral("pulling manifest"))};
    if (!ModelShelf::canPull(model)) {
        lines.push_back(
            line({{QStringLiteral("error"), QStringLiteral("pull model manifest: file does not exist")}}));
        install = nullptr;
    } else {
        appendLayer(lines, model, modelLayer, 40);
        appendLayer(lines, model + QStringLiteral("/template"), templateLayer, 1);
        lines.push_back(statusLine(QStringLiteral("verifying sha256 digest")));
        lines.push_back(statusLine(QStringLiteral("writing manifest")));
        lines.push_back(statusLine(QStringLiteral("success")));
    }
    return [lines = std::move(lines), install = std::move(install),
            next = std::size_t(0)]() mutable -> std::optional<QByteArray> {
        if (next == lines.size())
            return std::nullopt;
        if (next + 1 == lines.size() && install)
            install();
        return lines[next++];
    };
}

} // namespace varnel::practice
