#pragma once

#include "providers/VarnelError.h"
#include "providers/chat/ProviderAnswer.h"
#include "providers/credentials/ProviderRequest.h"

#include <QByteArray>

namespace varnel {

/// How much of an error's body is read, in bytes.
constexpr qint64 providerErrorLimit = 1024 * 1024;

/// The error that an answer with a status outside 200 to 299 stands for. The request's key does not appear
/// in it.
/// @param body at most providerErrorLimit bytes; one of that length counts as cut.
VarnelError providerStatusError(const ProviderRequest& request, int status, const QByteArray& body);

/// Reads the body of an answer with a status from 200 to 299. Throws VarnelError when it holds no answer;
/// its detail() is then what the service said, without the request's key.
ProviderAnswer readProviderReply(const ProviderRequest& request, const QByteArray& body);

} // namespace varnel
