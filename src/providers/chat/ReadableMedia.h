#pragma once

#include "providers/chat/ImageConverter.h"
#include "providers/chat/ProviderTurn.h"

namespace varnel {

/// Whether the provider takes an image of this type as it is. PDF documents are no images; which models read
/// them was decided before.
/// @param mime in lower case.
bool readsImageType(RemoteProvider provider, const QString& mime);

/// The messages with every image in a form that the provider reads. What it does not read is converted;
/// without a converter, or when it fails, throws VarnelError with what to do. Throws Cancelled.
/// @param converter may be null; must outlive the task.
Task<std::vector<ProviderMessage>> readableMessages(RemoteProvider provider,
                                                    std::vector<ProviderMessage> messages,
                                                    ImageConverter* converter, std::stop_token stop);

} // namespace varnel
