#include "websearch/SearchKey.h"

#include <QStringList>

#include <algorithm>

namespace varnel {

namespace {

QString sharedAccount()
{
    return QStringLiteral("tavrin.search.brave");
}

QStringList accounts(SearchBackend backend)
{
    if (backend == SearchBackend::Ollama)
        return {QStringLiteral("OLLAMA_API_KEY")};
    return {QStringLiteral("BRAVE_SEARCH_API_KEY"), QStringLiteral("BRAVE_API_KEY"), sharedAccount()};
}

/// The key without white space around it; empty for one that would break out of its header.
QString usable(const QString& key)
{
    QString trimmed = key.trimmed();
    const bool breaksOut = std::any_of(trimmed.cbegin(), trimmed.cend(), [](QChar character) {
        return character == u'\r' || character == u'\n' || character.isNull();
    });
    return breaksOut ? QString() : trimmed;
}

} // namespace

bool SearchKey::isShared() const
{
    return origin == Origin::Saved && name == sharedAccount();
}

std::optional<SearchKey> findSearchKey(SearchBackend backend, SecretStore& secrets,
                                       const Environment& environment)
{
    const QStringList names = accounts(backend);
    for (const QString& name : names) {
        const QString key = usable(secrets.read(name, Unlocking::Never).value_or(QString()));
        if (!key.isEmpty())
            return SearchKey{key, SearchKey::Origin::Saved, name};
    }
    for (const QString& name : names) {
        if (name == sharedAccount())
            continue;
        const QString key =
            usable(QString::fromUtf8(environment(name.toUtf8().constData()).value_or(QByteArray())));
        if (!key.isEmpty())
            return SearchKey{key, SearchKey::Origin::Environment, name};
    }
    return std::nullopt;
}

} // namespace varnel
