#pragma once

#include "store/RawValues.h"

#include <QString>

#include <array>

namespace varnel {

/// Who speaks in a message.
enum class ChatRole { System, User, Assistant };

/// The kind of back end that is to answer a conversation.
enum class AnswerBackend { Ollama, Remote };

/// The kind of work the user is doing; it steers which model is chosen.
enum class WorkContext { Chat, Coding, Reasoning, Vision };

/// The title of a kind of work as it is shown, for example "Coding".
QString title(WorkContext context);

/// How the Ollama server is reached.
enum class ConnectionMode {
    ThisMac,   ///< on this computer
    SshTunnel, ///< through the ssh tunnel that the program keeps
    Direct,    ///< at a URL the user gave
};

/// What a conversation may search the web with.
enum class SearchSource { Off, Ollama, Brave, Provider };

/// What a reply is handed to another model as.
enum class HandoffKind { Text, Image, Pdf };

template <>
struct RawValues<ChatRole>
{
    static constexpr std::array texts{QLatin1String("system"), QLatin1String("user"),
                                      QLatin1String("assistant")};
};

template <>
struct RawValues<AnswerBackend>
{
    static constexpr std::array texts{QLatin1String("ollama"), QLatin1String("remote")};
};

template <>
struct RawValues<WorkContext>
{
    static constexpr std::array texts{QLatin1String("chat"), QLatin1String("coding"),
                                      QLatin1String("reasoning"), QLatin1String("vision")};
};

template <>
struct RawValues<ConnectionMode>
{
    static constexpr std::array texts{QLatin1String("thisMac"), QLatin1String("sshTunnel"),
                                      QLatin1String("direct")};
};

template <>
struct RawValues<SearchSource>
{
    static constexpr std::array texts{QLatin1String("off"), QLatin1String("ollama"), QLatin1String("brave"),
                                      QLatin1String("provider")};
};

} // namespace varnel
