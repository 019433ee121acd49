#pragma once

#include "providers/RemoteProvider.h"

#include <QByteArray>
#include <QMap>
#include <QUrl>

namespace varnel {

/// One prepared call of a provider's API, always a POST.
struct ProviderRequest
{
    RemoteProvider provider = RemoteProvider::Gemini;
    QString model;
    QUrl url;
    /// They carry the key; never logged.
    QMap<QByteArray, QByteArray> headers;
    /// JSON.
    QByteArray body;

    bool operator==(const ProviderRequest&) const = default;
};

} // namespace varnel
