#include "websearch/OllamaToolModel.h"

namespace varnel {

OllamaToolModel::OllamaToolModel(OllamaClient client, ChatRequest request)
    : m_client(std::move(client))
    , m_request(std::move(request))
    , m_offer{.tools = searchToolDefinitions(), .guidance = searchGuidance(), .messages = {}}
{}

Task<ToolReply> OllamaToolModel::ask(std::stop_token stop)
{
    const WholeChatReply reply = co_await m_client.chatOnce(m_request, m_offer, std::move(stop));
    m_lastText = reply.content;
    co_return ToolReply{
        .text = reply.content, .thinking = reply.thinking, .calls = decodeToolCalls(reply.toolCalls)};
}

void OllamaToolModel::add(const std::vector<ToolResult>& results)
{
    QJsonArray calls;
    for (const ToolResult& result : results)
        calls.append(toOllamaToolCall(result.call));
    m_offer.messages.append(QJsonObject{{QStringLiteral("role"), QStringLiteral("assistant")},
                                        {QStringLiteral("content"), m_lastText},
                                        {QStringLiteral("tool_calls"), calls}});
    for (const ToolResult& result : results)
        m_offer.messages.append(QJsonObject{{QStringLiteral("role"), QStringLiteral("tool")},
                                            {QStringLiteral("content"), result.text}});
}

} // namespace varnel
