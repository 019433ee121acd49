#pragma once

#include "providers/credentials/ProviderRequest.h"

#include <QString>

namespace varnel {

/// How a text ends that a service sent: where it was to end, or where no more of it was read.
enum class TextEnd { Whole, Cut };

/// The text with a key blotted out wherever it occurs, also where some of its characters are percent-encoded
/// or escaped for JSON: services repeat it in their errors, which are shown, logged and pasted into reports.
/// At the end of a text that was cut, the beginning of a key goes too.
QString withoutKey(const QString& text, const QString& key, TextEnd end = TextEnd::Whole);

/// The same for the key in the request's headers.
QString withoutKey(const QString& text, const ProviderRequest& request, TextEnd end = TextEnd::Whole);

} // namespace varnel
