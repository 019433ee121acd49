#pragma once

#include "providers/RemoteProvider.h"

#include <QByteArray>

#include <vector>

namespace varnel::test {

/// The body of a reply, and what is read from it.
struct RecordedReply
{
    const char* name;
    RemoteProvider provider;
    QByteArray body;
    /// The answer with its sources; ignored where there is none.
    QByteArray text;
    QByteArray thinking;
    /// "id name arguments", one behind the other with "; " in between.
    QByteArray calls;
};

/// Replies with an answer.
std::vector<RecordedReply> recordedAnswers();

/// Replies without one; `text` is what the service said of it.
std::vector<RecordedReply> recordedRefusals();

} // namespace varnel::test
