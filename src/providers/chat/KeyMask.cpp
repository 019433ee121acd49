#include "providers/chat/KeyMask.h"

#include <QStringList>

namespace varnel {

namespace {

// Fewer characters of a key than these tell nothing of it.
constexpr qsizetype tellingLength = 4;

QString keyOf(const ProviderRequest& request)
{
    for (const char* const name : {"x-api-key", "x-goog-api-key"}) {
        if (const QByteArray key = request.headers.value(name); !key.isEmpty())
            return QString::fromUtf8(key);
    }
    const QByteArray scheme = "Bearer ";
    const QByteArray authorization = request.headers.value("Authorization");
    return authorization.startsWith(scheme) ? QString::fromUtf8(authorization.sliced(scheme.size()))
                                            : QString();
}

QString escaped(QString key)
{
    key.replace(u'\\', QStringLiteral("\\\\"));
    key.replace(u'"', QStringLiteral("\\\""));
    return key;
}

/// The ways in which services write a key.
QStringList spellings(const QString& key)
{
    if (key.isEmpty())
        return {};
    QString solidus = escaped(key);
    solidus.replace(u'/', QStringLiteral("\\/"));
    QStringList all{key, QString::fromLatin1(QUrl::toPercentEncoding(key)), escaped(key), solidus};
    all.removeDuplicates();
    return all;
}

} // namespace

QString withoutKey(QString text, const QString& key)
{
    const QStringList all = spellings(key);
    for (const QString& spelling : all)
        text.replace(spelling, QStringLiteral(u"•••"));
    for (const QString& spelling : all) {
        for (qsizetype length = spelling.size() - 1; length >= tellingLength; --length) {
            if (text.endsWith(QStringView(spelling).first(length))) {
                text.chop(length);
                break;
            }
        }
    }
    return text;
}

QString withoutKey(QString text, const ProviderRequest& request)
{
    return withoutKey(std::move(text), keyOf(request));
}

} // namespace varnel
