// A program that does nothing but save conversations, to be killed while it does: varnel-test-saver FOLDER.
// Each save holds the next number; it is printed as soon as the save is done.

#include "base/Error.h"
#include "store/SessionStore.h"

#include <QCoreApplication>

#include <cstdio>

using namespace varnel;

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    SessionStore store(QCoreApplication::arguments().value(1));
    try {
        SessionList sessions = store.load();
        if (sessions.empty()) {
            ChatSession session;
            session.id = QUuid::createUuid();
            session.messages.resize(50);
            for (ChatMessage& message : session.messages)
                message.content = QString(10'000, u'x');
            session.contextLength = 0;
            sessions.append(session);
        }
        for (;;) {
            ChatSession& session = sessions.edit(0);
            ++session.contextLength;
            // Both ends of the file hold the number, so that half of one and half of another would show.
            session.messages.back().content = QString::number(session.contextLength);
            if (store.save(sessions))
                return 2;
            std::printf("%lld\n", static_cast<long long>(session.contextLength));
            std::fflush(stdout);
        }
    } catch (const Error& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
