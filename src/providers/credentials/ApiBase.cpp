#include "providers/credentials/ApiBase.h"

#include "store/HttpUrl.h"

namespace varnel {

namespace {

struct ServiceEntry
{
    const char* variable;
    const char* publicUrl;
};

// In the order of ApiBase.
constexpr std::array<ServiceEntry, 8> services = {{
    {"VARNEL_GEMINI_BASE", "https://generativelanguage.googleapis.com"},
    {"VARNEL_OPENAI_BASE", "https://api.openai.com/v1"},
    {"VARNEL_CLAUDE_BASE", "https://api.anthropic.com"},
    {"VARNEL_DEEPSEEK_BASE", "https://api.deepseek.com"},
    {"VARNEL_OPENROUTER_BASE", "https://openrouter.ai/api/v1"},
    {"VARNEL_OLLAMA_WEB_BASE", "https://ollama.com"},
    {"VARNEL_BRAVE_BASE", "https://api.search.brave.com"},
    {"VARNEL_LIBRARY_BASE", "https://ollama.com"},
}};

} // namespace

ApiBases::ApiBases(const Environment& environment)
{
    static_assert(services.size() == count);
    for (std::size_t i = 0; i < count; ++i) {
        m_urls[i] = QUrl(QLatin1String(services[i].publicUrl));
        const QString value =
            QString::fromUtf8(environment(services[i].variable).value_or(QByteArray())).trimmed();
        if (value.isEmpty())
            continue;
        if (const std::optional<QUrl> url = parseHttpUrl(value))
            m_urls[i] = *url;
        else
            m_complaints.append(
                QStringLiteral("%1 is not an http or https URL and is passed over; %2 is used.")
                    .arg(QLatin1String(services[i].variable), m_urls[i].toString()));
    }
}

ApiBase apiBaseOf(RemoteProvider provider)
{
    switch (provider) {
    case RemoteProvider::Gemini:
        return ApiBase::Gemini;
    case RemoteProvider::OpenAi:
        return ApiBase::OpenAi;
    case RemoteProvider::Claude:
        return ApiBase::Claude;
    case RemoteProvider::DeepSeek:
        return ApiBase::DeepSeek;
    case RemoteProvider::OpenRouter:
        return ApiBase::OpenRouter;
    }
    Q_UNREACHABLE();
}

} // namespace varnel
