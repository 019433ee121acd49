#pragma once

#include "providers/chat/ProviderTurn.h"
#include "providers/credentials/ApiBase.h"
#include "providers/credentials/ProviderRequest.h"

namespace varnel {

/// The call that asks the turn's provider for one whole reply. Throws VarnelError if the turn has no key, or
/// one that cannot be a header; Error if the temperature is not finite.
ProviderRequest buildProviderRequest(const ProviderTurn& turn, const ApiBases& bases);

} // namespace varnel
