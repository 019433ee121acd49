#pragma once

#include "providers/credentials/KeyLookup.h"
#include "websearch/SearchPlan.h"

namespace varnel {

/// Where the key of a search service is looked for, with resolveKey().
KeyNames searchKeyNames(SearchBackend backend);

/// Whether a key is the one that a sibling program of the same maker saved for its own searches.
bool isSharedSearchKey(const ResolvedKey& key);

} // namespace varnel
