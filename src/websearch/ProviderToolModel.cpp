#include "websearch/ProviderToolModel.h"

namespace varnel {

ProviderToolModel::ProviderToolModel(ProviderClient client, ProviderTurn turn)
    : m_client(std::move(client))
    , m_turn(std::move(turn))
{
    m_turn.tools = searchToolDefinitions();
    m_turn.toolGuidance = searchGuidance();
}

Task<ToolReply> ProviderToolModel::ask(std::stop_token stop)
{
    const ProviderAnswer answer = co_await m_client.ask(m_turn, std::move(stop));
    m_lastMessage = answer.message;
    ToolReply reply{.text = textWithSources(answer), .thinking = answer.thinking, .calls = {}};
    for (const ProviderToolCall& call : answer.toolCalls)
        reply.calls.push_back({.id = call.id, .name = call.name, .arguments = call.arguments});
    co_return reply;
}

void ProviderToolModel::add(const std::vector<ToolResult>& results)
{
    ToolRound round{.message = m_lastMessage, .results = {}};
    for (const ToolResult& result : results)
        round.results.append(result.text);
    m_turn.toolRounds.push_back(std::move(round));
}

} // namespace varnel
