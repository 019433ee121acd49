#include "engine/TurnFailure.h"

#include "engine/ConnectionTexts.h"
#include "ollama/OllamaError.h"
#include "providers/VarnelError.h"

namespace varnel {

namespace {

TurnFailure failureWith(QString text, QString detail = {})
{
    TurnFailure failure;
    failure.text = std::move(text);
    failure.detail = std::move(detail);
    return failure;
}

TurnFailure textsOf(std::exception_ptr exception, const ProviderTurn* turn,
                    const ConnectionSettings& connection, bool tunnelIsUp)
{
    try {
        std::rethrow_exception(std::move(exception));
    } catch (const TransportError& error) {
        if (turn)
            return failureWith(displayName(turn->provider) + QStringLiteral(" request failed: ") +
                               error.message());
        return failureWith(unansweredMessage(connection, tunnelIsUp), error.message());
    } catch (const OllamaError& error) {
        if (error.kind() == OllamaError::Kind::Unreachable)
            return failureWith(unansweredMessage(connection, tunnelIsUp), error.message());
        return failureWith(error.message());
    } catch (const VarnelError& error) {
        TurnFailure failure = failureWith(error.message(), error.detail());
        failure.isDetailPrivate = error.isDetailPrivate();
        return failure;
    } catch (const Error& error) {
        return failureWith(error.message());
    }
}

bool names(const TurnFailure& failure, const QString& word)
{
    return failure.text.contains(word, Qt::CaseInsensitive) ||
           failure.detail.contains(word, Qt::CaseInsensitive);
}

} // namespace

TurnFailure failureOf(std::exception_ptr exception, const TurnRequest& request,
                      const ConnectionSettings& connection, bool tunnelIsUp)
{
    const auto* const turn = std::get_if<ProviderTurn>(&request.question);
    TurnFailure failure = textsOf(std::move(exception), turn, connection, tunnelIsUp);
    // There is no other sign of it than the service's own words.
    failure.offersTemperatureReset = turn && turn->provider == RemoteProvider::Claude &&
                                     turn->temperature != 1 && names(failure, QStringLiteral("temperature"));
    failure.offersSearchOff = request.search && names(failure, QStringLiteral("does not support tools"));
    return failure;
}

} // namespace varnel
