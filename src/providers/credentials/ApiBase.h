#pragma once

#include "base/Environment.h"
#include "providers/RemoteProvider.h"

#include <QStringList>
#include <QUrl>

#include <array>

namespace varnel {

/// The public services that requests go to.
enum class ApiBase {
    Gemini,
    OpenAi,
    Claude,
    DeepSeek,
    OpenRouter,
    OllamaWeb,    ///< Ollama's web search and fetch
    Brave,        ///< Brave Search
    ModelLibrary, ///< the page that lists Ollama's public models
};

/// Where each service is reached: its public address, or the one that an environment variable gives in its
/// place, for a gateway or a test.
class ApiBases
{
public:
    /// Reads the environment once. A blank variable counts as not set; one that holds no http or https URL
    /// is passed over, and complaints() says so.
    explicit ApiBases(const Environment& environment);

    /// Never empty; may end in "/" or not.
    const QUrl& url(ApiBase base) const { return m_urls[static_cast<std::size_t>(base)]; }
    /// A line for the log per variable that was passed over. It names the variable and not its value, which
    /// may hold a password.
    const QStringList& complaints() const noexcept { return m_complaints; }

private:
    static constexpr std::size_t count = 8;

    std::array<QUrl, count> m_urls;
    QStringList m_complaints;
};

/// The service of a provider.
ApiBase apiBaseOf(RemoteProvider provider);

} // namespace varnel
