#pragma once

#include <QJsonObject>
#include <QString>

#include <vector>

namespace varnel {

/// A page that a provider's own search cited.
struct ProviderSource
{
    QString title; ///< may be empty
    QString url;

    bool operator==(const ProviderSource&) const = default;
};

/// A tool that a model wants to have called.
struct ProviderToolCall
{
    QString id; ///< as the provider gave it, may be empty
    QString name;
    QString arguments; ///< JSON text, or whatever the model wrote in its place

    bool operator==(const ProviderToolCall&) const = default;
};

/// What a provider answered.
struct ProviderAnswer
{
    /// The answer without its sources; may be empty.
    QString text;
    /// The model's reasoning, empty when the provider tells none.
    QString thinking;
    /// In the order of the reply, repetitions included.
    std::vector<ProviderSource> sources;
    std::vector<ProviderToolCall> toolCalls;
    /// The assistant message as it came, for a ToolRound; empty when no tool is asked for. Its calls are
    /// those of toolCalls, in the same order.
    QJsonObject message;

    bool operator==(const ProviderAnswer&) const = default;
};

/// The answer as a conversation keeps it: the text and, as a Markdown list below it, the sources that it does
/// not name already.
QString textWithSources(const ProviderAnswer& answer);

} // namespace varnel
