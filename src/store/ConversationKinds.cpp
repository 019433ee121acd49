#include "store/ConversationKinds.h"

namespace varnel {

QString title(WorkContext context)
{
    switch (context) {
    case WorkContext::Chat:
        return QStringLiteral("Chat");
    case WorkContext::Coding:
        return QStringLiteral("Coding");
    case WorkContext::Reasoning:
        return QStringLiteral("Reasoning");
    case WorkContext::Vision:
        return QStringLiteral("Vision");
    }
    return {};
}

} // namespace varnel
