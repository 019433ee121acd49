#pragma once

#include "providers/chat/ProviderTurn.h"

#include <QByteArray>

namespace varnel {

/// Whether the turn goes to OpenAI's other endpoint, the only one there that searches.
bool usesResponsesEndpoint(const ProviderTurn& turn);

/// The JSON body in the shape of the turn's provider. Each medium is encoded once, straight into the body.
/// Throws Error if the temperature is not finite.
QByteArray providerBody(const ProviderTurn& turn);

} // namespace varnel
