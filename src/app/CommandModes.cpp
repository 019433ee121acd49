#include "app/CommandModes.h"

namespace varnel {

CommandMode chooseMode(const Environment& environment, const QStringList& arguments)
{
    if (environment("VARNEL_ASKPASS") == QByteArray("1"))
        return CommandMode::Askpass;
    if (!arguments.isEmpty() && arguments.first() == QLatin1String("ctl"))
        return CommandMode::Ctl;
    if (environment("XCTestConfigurationFilePath"))
        return CommandMode::TestHost;
    return CommandMode::Window;
}

} // namespace varnel
