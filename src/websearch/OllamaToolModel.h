#pragma once

#include "ollama/OllamaClient.h"
#include "websearch/ToolLoop.h"

namespace varnel {

/// A model of an Ollama server in the tool loop.
class OllamaToolModel final : public ToolModel
{
public:
    /// @param request the turn as it would be streamed. The client's HttpClient outlives this.
    OllamaToolModel(OllamaClient client, ChatRequest request);

    Task<ToolReply> ask(std::stop_token stop) override;
    void add(const std::vector<ToolResult>& results) override;

private:
    OllamaClient m_client;
    ChatRequest m_request;
    ToolOffer m_offer;
    QString m_lastText;
};

} // namespace varnel
