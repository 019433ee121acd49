#pragma once

#include "providers/chat/ProviderClient.h"
#include "websearch/ToolLoop.h"

namespace varnel {

/// A model of an OpenAI-compatible provider in the tool loop.
class ProviderToolModel final : public ToolModel
{
public:
    /// @param turn as it would be sent without tools, to OpenAI, DeepSeek or OpenRouter.
    /// What the client refers to outlives this.
    ProviderToolModel(ProviderClient client, ProviderTurn turn);

    Task<ToolReply> ask(std::stop_token stop) override;
    void add(const std::vector<ToolResult>& results) override;

private:
    ProviderClient m_client;
    ProviderTurn m_turn;
    QJsonObject m_lastMessage;
};

} // namespace varnel
