#include "websearch/ToolLoop.h"

#include "base/Error.h"

#include <QStringList>

#include <algorithm>

namespace varnel {

namespace {

constexpr std::size_t callsOfReply = 4;
constexpr int lastPass = 3;

Task<std::vector<ToolResult>> runCalls(WebTools* tools, std::vector<SearchToolCall> calls,
                                       std::stop_token stop)
{
    std::vector<ToolResult> results;
    for (const SearchToolCall& call : calls) {
        if (stop.stop_requested())
            throw Cancelled();
        results.push_back({.call = call, .text = co_await tools->run(call, stop)});
    }
    co_return results;
}

} // namespace

Task<ToolAnswer> runToolLoop(ToolModel* model, WebTools* tools, std::stop_token stop)
{
    QStringList thoughts;
    for (int pass = 0;; ++pass) {
        ToolReply reply = co_await model->ask(stop);
        if (const QString thought = reply.thinking.trimmed(); !thought.isEmpty())
            thoughts.append(thought);
        ToolAnswer answer{.text = reply.text, .thinking = thoughts.join(QStringLiteral("\n\n"))};
        if (reply.calls.empty())
            co_return answer;
        reply.calls.resize(std::min(reply.calls.size(), callsOfReply));
        const std::vector<ToolResult> results = co_await runCalls(tools, std::move(reply.calls), stop);
        if (pass == lastPass) {
            if (answer.text.trimmed().isEmpty())
                answer.text = QStringLiteral("Search stopped after several lookups.");
            co_return answer;
        }
        model->add(results);
        if (stop.stop_requested())
            throw Cancelled();
    }
}

} // namespace varnel
