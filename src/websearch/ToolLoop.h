#pragma once

#include "base/Task.h"
#include "websearch/SearchTools.h"
#include "websearch/WebTools.h"

#include <QString>

#include <stop_token>
#include <vector>

namespace varnel {

/// What a model answered when it was asked with tools on offer.
struct ToolReply
{
    QString text;
    /// The model's reasoning; may be empty.
    QString thinking;
    /// Empty when the text is the answer.
    std::vector<SearchToolCall> calls;

    bool operator==(const ToolReply&) const = default;
};

/// A call that was run, and what the model is told.
struct ToolResult
{
    SearchToolCall call;
    QString text;

    bool operator==(const ToolResult&) const = default;
};

/// A model that is asked several times in one turn. It keeps the messages that the turn adds, which go no
/// further than its requests.
class ToolModel
{
public:
    ToolModel() = default;
    ToolModel(const ToolModel&) = delete;
    ToolModel& operator=(const ToolModel&) = delete;
    ToolModel(ToolModel&&) = delete;
    ToolModel& operator=(ToolModel&&) = delete;
    virtual ~ToolModel() = default;

    /// Sends the conversation, the guidance, the tools and what was added so far. Throws what the request
    /// throws; this outlives the task.
    virtual Task<ToolReply> ask(std::stop_token stop) = 0;
    /// Adds the last reply, with these calls only, and their results.
    virtual void add(const std::vector<ToolResult>& results) = 0;
};

/// What a model answered in the end.
struct ToolAnswer
{
    QString text;
    /// The reasoning of every reply on the way to it, with an empty line in between.
    QString thinking;

    bool operator==(const ToolAnswer&) const = default;
};

/// Asks a model and runs the calls that it asks for, one after the other, until it answers: at most four
/// requests and four calls of each reply. Yields the answer.
///
/// What a call fails with goes to the model; what a request fails with is thrown. A stop ends it at any point
/// with Cancelled. `model` and `tools` outlive the task.
Task<ToolAnswer> runToolLoop(ToolModel* model, WebTools* tools, std::stop_token stop);

} // namespace varnel
