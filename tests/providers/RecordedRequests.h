#pragma once

#include "providers/chat/ProviderTurn.h"

#include <QByteArray>

#include <vector>

namespace varnel::test {

/// A turn and the request that the provider's documentation wants for it.
struct RecordedRequest
{
    const char* name;
    ProviderTurn turn;
    /// Behind the base of the provider.
    QByteArray path;
    QByteArray body;
};

std::vector<RecordedRequest> recordedRequests();

/// What is wrong with a body by the schema of the endpoint, written after the provider's public
/// documentation: keys that it does not know, keys that are missing, values of another kind. Empty if
/// nothing is.
QByteArray schemaViolation(const ProviderTurn& turn, const QByteArray& body);

} // namespace varnel::test
