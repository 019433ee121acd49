#pragma once

#include "providers/credentials/ProviderRequest.h"

#include <QString>

namespace varnel {

/// The text with a key blotted out wherever it occurs, also where some of its characters are percent-encoded
/// or escaped for JSON: services repeat it in their errors, which are shown, logged and pasted into reports.
/// A text may have been cut, so at its end the beginning of a key goes too.
QString withoutKey(const QString& text, const QString& key);

/// The same for the key in the request's headers.
QString withoutKey(const QString& text, const ProviderRequest& request);

} // namespace varnel
